#pragma once

#include <functional>

#include "support/child.h"

namespace bench {

/// A server in a process of its own, so that what it costs is not counted.
class ServerProcess {
public:
    /// Tells the port that the server listens on.
    using Report = std::function<void(int port)>;

    /// Calls `serve` there, which reports its port once it listens and then serves for ever.
    explicit ServerProcess(const std::function<void(const Report&)>& serve)
        : child_([&](int result) { serve([result](int number) { send(result, number); }); }),
          port(child_.result<int>()) {}

    pid_t id() const { return child_.id(); }

private:
    const Child child_;

public:
    const int port;
};

/// Starts a server of transfers on 127.0.0.1. It answers a POST to "/bytes/SIZE" with SIZE bytes,
/// as the file "book", and one to "/taken" with how many bytes of files came with it.
ServerProcess transferServer();

}  // namespace bench
