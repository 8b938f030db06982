#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace posix {

/// Closes a stdio stream that a `Stream` owns.
struct StreamCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// Owns an open stdio stream, or none.
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

/// Returns the content of the regular file `path`; empty when it is anything else or cannot be
/// read.
std::string readFile(const std::string& path);

/// Makes the `size` bytes at `data` the content of the file `path`, in place, opened with the stdio
/// mode `mode`. Nothing is reported; a file that cannot be opened is left alone.
void overwriteUnchecked(const std::string& path, const char* mode, const char* data,
                        std::size_t size);

/// Writes `size` bytes at `data` with one `write` whose outcome nobody looks at: the stores accept
/// a record that a full disk cuts, and their readers leave it out.
void writeUnchecked(int descriptor, const void* data, std::size_t size);

}  // namespace posix
