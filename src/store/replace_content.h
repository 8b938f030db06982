#pragma once

#include <map>
#include <vector>

namespace store {

/// Makes `entries`, which are sorted by their `key`, the whole content of `map`; of entries with
/// the same key the last one counts. What is there already stays in place, so that loading a file
/// that has hardly changed allocates hardly anything.
template <typename Key, typename Value, typename Entry, typename KeyView, typename ValueView>
void replaceContent(std::map<Key, Value>& map, const std::vector<Entry>& entries,
                    KeyView Entry::*key, ValueView Entry::*value) {
    auto position = map.begin();
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (entry + 1 != entries.end() && (*entry).*key == entry[1].*key)
            continue;
        while (position != map.end() && position->first < (*entry).*key)
            position = map.erase(position);
        if (position == map.end() || position->first != (*entry).*key)
            position = map.emplace_hint(position, (*entry).*key, (*entry).*value);
        else if (position->second != (*entry).*value)
            position->second = (*entry).*value;
        ++position;
    }
    map.erase(position, map.end());
}

}  // namespace store
