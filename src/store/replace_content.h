#pragma once

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace store {

/// Makes `entries` the whole content of `map`; of entries with the same key the last one counts.
/// What is there already stays in place, so that loading a file that has hardly changed allocates
/// hardly anything.
template <typename Key, typename Value, typename KeyView, typename ValueView>
void replaceContent(std::map<Key, Value>& map, std::vector<std::pair<KeyView, ValueView>> entries) {
    const auto byKey = [](const auto& left, const auto& right) { return left.first < right.first; };
    if (!std::is_sorted(entries.begin(), entries.end(), byKey))
        std::stable_sort(entries.begin(), entries.end(), byKey);
    auto position = map.begin();
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (entry + 1 != entries.end() && entry->first == entry[1].first)
            continue;
        while (position != map.end() && position->first < entry->first)
            position = map.erase(position);
        if (position == map.end() || position->first != entry->first)
            position = map.emplace_hint(position, entry->first, entry->second);
        else if (position->second != entry->second)
            position->second = entry->second;
        ++position;
    }
    map.erase(position, map.end());
}

}  // namespace store
