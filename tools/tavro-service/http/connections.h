#pragma once

namespace tavro::service {

/// Shuts down this process's connections on its own port `localPort`: all, or only the one to the
/// peer's port `remotePort`. Whoever reads or writes there sees the end of the connection.
void shutDownConnections(int localPort, int remotePort = 0);

}  // namespace tavro::service
