#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "account/account.h"
#include "posix/file_descriptor.h"
#include "program/failure.h"

namespace tavro::tools {

/// How a synchronisation round stands, as scripts read it.
namespace round_outcome {

inline constexpr const char* running = "running";
inline constexpr const char* done = "done";
inline constexpr const char* failed = "failed";
inline constexpr const char* interrupted = "interrupted";  ///< its process went before its end
inline constexpr const char* unknown = "unknown";          ///< the record cannot be read

}  // namespace round_outcome

/// What is known of the last synchronisation round of an account.
struct LastRound {
    std::string outcome;                ///< see round_outcome; empty: there was none
    std::string time;                   ///< when it ended, or began if it has no end
    std::vector<std::string> problems;  ///< why it failed
    std::string advice;                 ///< what to try then; may be empty
    std::string code;                   ///< the service's result code, if that is why; see Failure
    std::string message;                ///< its explanation
    pid_t process = 0;                  ///< that ran it
};

/// Reads what the last round of `account` has recorded. Waits for nobody.
LastRound lastRound(const Account& account);

/// The record of a round: a file that says that it runs, and at last how it ended. The file is
/// locked (`flock`) until then, so that a round whose process was killed does not seem to run.
class RoundRecord {
public:
    /// Records that a round of this process runs. To be made under the account's lock. Where that
    /// cannot be, it removes the former round's record, which would pass for this one's.
    explicit RoundRecord(const Account& account);

    /// Why nothing is recorded; empty when all is well.
    const std::string& problem() const { return problem_; }

    /// Records that the round has ended, and failed if there are `problems`, of which the first few
    /// are kept, with what `cause`, the one that ended it, says of them. One that cannot be
    /// recorded counts as interrupted.
    void end(std::vector<std::string> problems, const Failure& cause = Failure("")) const;

private:
    std::string path_;
    std::string problem_;
    posix::FileDescriptor running_{-1};
};

}  // namespace tavro::tools
