// FastBookHash: 128 bits over all bytes of a file.

#include <xxhash.h>

#include <algorithm>
#include <memory>

#include "file_access.h"
#include "guarded.h"
#include "lectern.h"

int FastBookHash(const char* path, char* buffer, int size) {
    if (path == nullptr || buffer == nullptr || size <= 0)
        return -1;
    return guarded(-1, [=] {
        const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(),
                                                                             XXH3_freeState);
        if (!state || XXH3_128bits_reset(state.get()) != XXH_OK)
            return -1;
        const posix::FileDescriptor file = openRegularFile(path);
        const auto absorb = [&state](std::string_view block) {
            XXH3_128bits_update(state.get(), block.data(), block.size());
        };
        if (!file || !readBlocks(file, absorb))
            return -1;
        XXH128_canonical_t hash;
        XXH128_canonicalFromHash(&hash, XXH3_128bits_digest(state.get()));
        const int count = std::min(size, static_cast<int>(sizeof hash.digest));
        std::copy_n(hash.digest, count, buffer);
        return count;
    });
}
