// FastBookHash: 128 bits over all bytes of a file.

#include <xxhash.h>

#include <algorithm>
#include <memory>
#include <new>
#include <optional>

#include "file_access.h"
#include "guarded.h"
#include "lectern.h"

namespace {

struct FreeState {
    void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
};

/// The hash of all that is left of `file`; nothing when a read fails.
std::optional<XXH128_canonical_t> hashOf(const posix::FileDescriptor& file) {
    const std::unique_ptr<XXH3_state_t, FreeState> state(XXH3_createState());
    if (!state || XXH3_128bits_reset(state.get()) != XXH_OK)
        throw std::bad_alloc();
    const auto absorb = [&state](std::string_view block) {
        XXH3_128bits_update(state.get(), block.data(), block.size());
    };
    if (!readBlocks(file, absorb))
        return std::nullopt;
    XXH128_canonical_t hash;
    XXH128_canonicalFromHash(&hash, XXH3_128bits_digest(state.get()));
    return hash;
}

}  // namespace

int FastBookHash(const char* path, char* buffer, int size) {
    if (path == nullptr || buffer == nullptr || size <= 0)
        return -1;
    return guarded(-1, [=] {
        const posix::FileDescriptor file = openRegularFile(path);
        const auto hash = file ? hashOf(file) : std::nullopt;
        if (!hash)
            return -1;
        const int count = std::min(size, static_cast<int>(sizeof hash->digest));
        std::copy_n(hash->digest, count, buffer);
        return count;
    });
}
