#pragma once

#include <zip.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tavro::service {

/// A zip file, read entry by entry into memory; entry names never reach the disk.
class ZipArchive {
public:
    /// Opens the archive `path`. Throws `BookError` if it is none.
    explicit ZipArchive(const std::filesystem::path& path);

    /// Names of all entries.
    std::vector<std::string> names() const;

    /// The content of the entry `name`. Throws `BookError` if there is no such entry, if it
    /// is damaged or if it is larger than `limit` bytes, whatever size the archive claims.
    std::string read(const std::string& name, std::size_t limit) const;

private:
    struct Discard {
        void operator()(zip_t* archive) const { zip_discard(archive); }
    };
    std::unique_ptr<zip_t, Discard> archive_;
};

}  // namespace tavro::service
