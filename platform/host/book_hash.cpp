// FastBookHash: 128 bits over all bytes of a file.

#include "file_access.h"
#include "guarded.h"
#include "hash.h"
#include "lectern.h"
#include "little_endian.h"

int FastBookHash(const char* path, char* buffer, int size) {
    if (path == nullptr || buffer == nullptr || size <= 0)
        return -1;
    return guarded(-1, [=] {
        constexpr std::uint64_t other_multiplier = 0xd6e8feb86659fd93;
        std::uint64_t first = fnv_offset_basis;
        std::uint64_t second = ~fnv_offset_basis;
        const posix::FileDescriptor file = openRegularFile(path);
        const bool read = file && readBlocks(file, [&](std::string_view block) {
                              first = absorb(first, fnv_prime, block);
                              second = absorb(second, other_multiplier, block);
                          });
        if (!read)
            return -1;
        const std::string hash = toLittleEndian(spread(first)) + toLittleEndian(spread(second));
        return static_cast<int>(hash.copy(buffer, static_cast<std::size_t>(size)));
    });
}
