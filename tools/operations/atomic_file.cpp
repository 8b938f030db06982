#include "atomic_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "failure.h"
#include "posix/file_descriptor.h"
#include "write_all.h"

namespace fs = std::filesystem;

namespace reader {

void throwCannotWrite(const std::string& path) {
    const std::string reason = errno == 0 ? "" : std::string(": ") + std::strerror(errno);
    throw Failure("cannot write " + path + reason, "free space or check the permissions");
}

void writeAtomically(const std::string& path, const std::string& content) {
    std::string temporary = path + ".XXXXXX";
    posix::FileDescriptor file(::mkstemp(temporary.data()));
    if (!file)
        throwCannotWrite(path);
    if (!writeAll(file.get(), content) || ::fsync(file.get()) != 0 || file.close() != 0 ||
        std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        errno = error;
        throwCannotWrite(path);
    }
}

void copyAtomically(const fs::path& source, const fs::path& target) {
    const fs::path partial = target.parent_path() / ("." + target.filename().string() + ".copying");
    try {
        fs::copy_file(source, partial, fs::copy_options::overwrite_existing);
        fs::rename(partial, target);
    } catch (...) {
        std::error_code ignored;
        fs::remove(partial, ignored);
        throw;
    }
}

}  // namespace reader
