#pragma once

#include <cstddef>
#include <filesystem>
#include <list>
#include <string>

namespace tavro::service {

/// An image out of a book.
struct Cover {
    std::string bytes;  ///< none if the book has no cover
    std::string type;   ///< its media type
};

/// The covers that were asked for last. Without them every device would have the books read anew,
/// and of a FictionBook all of it has to be. Not for several threads at once.
class RecentCovers {
public:
    /// The cover of the book `path`, whose content is that of `version`. The reference holds until
    /// the next call. Throws `BookError` if the book has to be read, and cannot be.
    const Cover& of(const std::filesystem::path& path, const std::string& version);

private:
    struct Kept {
        std::string path;
        std::string version;
        Cover cover;
    };

    void keep(Kept kept);

    std::list<Kept> kept_;  // the one asked for last in front
    std::size_t bytes_ = 0;
};

}  // namespace tavro::service
