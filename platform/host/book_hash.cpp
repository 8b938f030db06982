// FastBookHash: 128 bits over all bytes of a file.

#include <endian.h>

#include <cstring>

#include "file_access.h"
#include "guarded.h"
#include "hash.h"
#include "lectern.h"
#include "little_endian.h"

namespace {

constexpr std::size_t word_size = sizeof(std::uint64_t);

/// Both halves take in every word of 8 bytes. Each step is reversible, so that contents which
/// differ in one word never end in the same state, and the shift carries high bits on to low ones.
class BookHash {
public:
    void absorb(std::string_view block) {
        size_ += block.size();
        for (; block.size() >= word_size; block.remove_prefix(word_size))
            absorbWord(block.data(), word_size);
        if (!block.empty())
            absorbWord(block.data(), block.size());
    }

    std::string result() const {
        return toLittleEndian(spread(first_ ^ size_)) + toLittleEndian(spread(second_ ^ size_));
    }

private:
    void absorbWord(const char* bytes, std::size_t count) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, count);
        word = le64toh(word);
        first_ = step(first_ ^ word, 0x9fb21c651e98df25);
        second_ = step(second_ ^ word, 0xd6e8feb86659fd93);
    }

    static std::uint64_t step(std::uint64_t state, std::uint64_t multiplier) {
        state *= multiplier;
        return state ^ (state >> 32);
    }

    std::uint64_t first_ = fnv_offset_basis;
    std::uint64_t second_ = ~fnv_offset_basis;
    std::uint64_t size_ = 0;
};

}  // namespace

int FastBookHash(const char* path, char* buffer, int size) {
    if (path == nullptr || buffer == nullptr || size <= 0)
        return -1;
    return guarded(-1, [=] {
        BookHash hash;
        const posix::FileDescriptor file = openRegularFile(path);
        if (!file || !readBlocks(file, [&hash](std::string_view block) { hash.absorb(block); }))
            return -1;
        return static_cast<int>(hash.result().copy(buffer, static_cast<std::size_t>(size)));
    });
}
