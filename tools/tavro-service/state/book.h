#pragma once

#include <filesystem>
#include <string>

namespace tavro::service {

/// One item of the catalogue.
struct Book {
    int id = 0;
    std::string path;  ///< of the book's own file, relative to the folder of the books
    std::string title;
    std::string artist;
    std::string isbn;
    std::string isbn13;
    std::string fileType;
    bool hasCover = false;
    std::string version;             ///< changes with the book's own file
    bool deleted = false;            ///< the file is gone from the folder
    std::filesystem::path original;  ///< the book's own file, which no upload touches
    std::filesystem::path
        content;           ///< what a download gets: the last upload or the book's own file
    std::string fileName;  ///< under which a download announces it
};

}  // namespace tavro::service
