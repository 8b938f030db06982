#pragma once

#include <string>

namespace tavro::tools {

/// While it lives, the library removes no file: when a download fails it takes a file of the
/// announced name away, which may be the book as it was, or another book. One at a time.
class PresentFilesStay {
public:
    PresentFilesStay();
    ~PresentFilesStay();
    PresentFilesStay(const PresentFilesStay&) = delete;
    PresentFilesStay& operator=(const PresentFilesStay&) = delete;

    /// Path of the file that was to go last: that of the announced name, if the download failed.
    static std::string spared();
};

}  // namespace tavro::tools
