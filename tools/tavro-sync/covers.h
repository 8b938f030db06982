#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>

namespace tavro::tools {

/// The cover images of the account's books, which the library browser has loaded by item id:
/// ITEM.jpeg, ITEM.png or ITEM.bmp in one folder.
class Covers {
public:
    /// Covers in `folder`, which is made when the first one is stored, though not the folder above.
    explicit Covers(std::string folder) : folder_(std::move(folder)) {}

    /// Whether there is a cover of `item`. The folder is read once: no other program adds covers.
    bool has(int item);

    /// Whether the host of the address `url` failed to answer this object before.
    bool isSilent(const std::string& url) const { return silentHosts_.count(hostOf(url)) > 0; }

    /// Fetches the image at the HTTP address `url` (a minute at most, 16 MiB at most) and stores
    /// it as the cover of `item`. Throws Failure.
    void fetch(int item, const std::string& url);

    /// Removes every cover of `item` that can be removed.
    void remove(int item);

private:
    std::set<std::string>& present();
    static std::string hostOf(const std::string& url);

    std::string folder_;
    std::optional<std::set<std::string>> present_;  // names of the images, once they are read
    std::set<std::string> silentHosts_;
};

}  // namespace tavro::tools
