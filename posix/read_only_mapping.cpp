#include "posix/read_only_mapping.h"

#include <sys/mman.h>

#include <cstdint>

#include "posix/file_status.h"

namespace posix {

ReadOnlyMapping::ReadOnlyMapping(int descriptor) {
    const std::optional<FileStatus> status = statusOf(descriptor);
    if (!status)
        return;
    // A 64-bit file size that the address space cannot hold must not be mapped in part.
    if (static_cast<std::uintmax_t>(status->size) > SIZE_MAX)
        return;
    const auto size = static_cast<std::size_t>(status->size);
    void* address = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (address == MAP_FAILED)
        return;
    data_ = static_cast<const char*>(address);
    size_ = size;
}

ReadOnlyMapping::~ReadOnlyMapping() {
    if (data_ != nullptr)
        ::munmap(const_cast<char*>(data_), size_);
}

}  // namespace posix
