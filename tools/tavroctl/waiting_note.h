#pragma once

#include <chrono>
#include <string>

#include "console/output.h"
#include "tavroctl/watcher.h"

namespace tavro::tools {

/// How long a person waits without being told for whom.
inline constexpr std::chrono::seconds patience(2);

/// Says whom the program waits for, once it has lived for two seconds and until it goes, when
/// standard error is a terminal. A thread of its own does so, since the library blocks the calling
/// thread; `output` must outlive the object.
class WaitingNote {
public:
    WaitingNote(const Output& output, std::string whom);
    ~WaitingNote();
    WaitingNote(const WaitingNote&) = delete;
    WaitingNote& operator=(const WaitingNote&) = delete;

private:
    void watch();

    const Output& output_;
    const std::string whom_;
    bool isShown_ = false;  // the watcher's, until it has ended
    Watcher watcher_;
};

/// Does `request`, which `whom` answers, with a WaitingNote. @return what it returns.
template <typename Request>
auto waitingFor(const std::string& whom, const Output& output, Request request) {
    const WaitingNote note(output, whom);
    return request();
}

}  // namespace tavro::tools
