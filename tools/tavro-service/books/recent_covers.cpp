#include "books/recent_covers.h"

#include <algorithm>
#include <utility>

#include "books/book_format.h"
#include "books/book_reader.h"

namespace tavro::service {

namespace {

constexpr std::size_t most_kept = 256;

}  // namespace

const Cover& RecentCovers::of(const std::filesystem::path& path, const std::string& version) {
    const auto known = std::find_if(kept_.begin(), kept_.end(), [&](const Kept& kept) {
        return kept.version == version && kept.path == path.native();
    });
    if (known != kept_.end()) {
        kept_.splice(kept_.begin(), kept_, known);
    } else {
        BookDetails details = readBook(path);
        keep({path.native(), version, {std::move(details.cover), std::move(details.coverType)}});
    }
    return kept_.front().cover;
}

/// Puts `kept` in front, and lets those go that take too much memory beside it.
void RecentCovers::keep(Kept kept) {
    bytes_ += kept.cover.bytes.size();
    kept_.push_front(std::move(kept));
    while (kept_.size() > 1 && (bytes_ > largest_cover || kept_.size() > most_kept)) {
        bytes_ -= kept_.back().cover.bytes.size();
        kept_.pop_back();
    }
}

}  // namespace tavro::service
