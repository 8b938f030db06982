// SendEventTo: a desktop has no application that takes events, so they are noted for the developer.

#include <unistd.h>

#include <cstdlib>
#include <string>

#include "device_root/device_root.h"
#include "file_access.h"
#include "guarded.h"
#include "lectern.h"
#include "local_time.h"
#include "posix/write_all.h"

int SendEventTo(int target, int type, int parameter1, int parameter2) {
    return guarded(-1, [=] {
        const char* const path = std::getenv("TAVRO_EVENT_LOG");
        const std::string devices = device_root::root() + "/mnt/ext1/system/events.log";
        const posix::FileDescriptor log =
            openForAppending(path == nullptr ? devices.c_str() : path);
        const std::string line =
            localTime() + " target=" + std::to_string(target) + " type=" + std::to_string(type) +
            " parameters=" + std::to_string(parameter1) + "," + std::to_string(parameter2) +
            " process=" + std::to_string(::getpid()) + "\n";
        return log && posix::writeAll(log.get(), line) ? 0 : -1;
    });
}
