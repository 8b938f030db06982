#pragma once

#include <array>
#include <cstring>
#include <string_view>

namespace store {

/// Walks over the records of a store file in memory: zero-terminated texts and four-byte words at
/// any alignment. Never reads past the end, whatever the bytes are.
class RecordReader {
public:
    /// Reads `content`, which must stay in place while the reader is used.
    explicit RecordReader(std::string_view content) : rest_(content) {}

    /// Takes a text and its zero byte; `text` lies in the content. @return false, with `text`
    /// unchanged, when none is left.
    bool readText(std::string_view& text) {
        const std::size_t length = rest_.find('\0');
        if (length == std::string_view::npos)
            return false;
        text = rest_.substr(0, length);
        rest_.remove_prefix(length + 1);
        return true;
    }

    /// Takes the four bytes of a word. @return false, with `word` unchanged, when fewer are left.
    bool readWord(std::array<unsigned char, 4>& word) {
        if (rest_.size() < word.size())
            return false;
        std::memcpy(word.data(), rest_.data(), word.size());
        rest_.remove_prefix(word.size());
        return true;
    }

private:
    std::string_view rest_;
};

}  // namespace store
