#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "account/account.h"
#include "posix/file_descriptor.h"

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
    pid_t process = 0;                  ///< that ran it
};

/// Reads what the last round of `account` has recorded. Waits for nobody.
LastRound lastRound(const Account& account);

/// The record of a round: a file that says that it runs, and at last how it ended. The file is
/// locked (`flock`) until then, so that a round whose process was killed does not seem to run.
class RoundRecord {
public:
    /// Records that a round of this process runs. To be made under the account's lock. Throws
    /// Failure.
    explicit RoundRecord(const Account& account);

    /// Records that the round has ended, and failed if there are `problems`, of which the first few
    /// are kept, with the `advice` that they call for. One that cannot be recorded counts as
    /// interrupted.
    void end(std::vector<std::string> problems, const std::string& advice) const;

private:
    std::string path_;
    posix::FileDescriptor running_{-1};
};

}  // namespace tavro::tools
