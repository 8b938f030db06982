// Measures the hot paths against their limits; scripts/bench builds and runs it.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <exception>
#include <iostream>

#include "support/diagnostics.h"
#include "support/subject.h"

namespace {

using bench::Family;

std::vector<Family> allFamilies() {
    std::vector<Family> all;
    for (const auto& part :
         {bench::parserFamilies(), bench::transferFamilies(), bench::storeFamilies(),
          bench::browserFamilies(), bench::startFamilies(), bench::toolFamilies()})
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Takes the word `option` out of `words`. @return whether it was there.
bool take(std::vector<std::string>& words, const std::string& option) {
    const auto found = std::find(words.begin(), words.end(), option);
    if (found == words.end())
        return false;
    words.erase(found);
    return true;
}

/// Names of `families` with their sizes, on lines.
std::vector<std::string> namesOf(const std::vector<Family>& families) {
    std::vector<std::string> names;
    for (const Family& family : families)
        for (const std::int64_t size : family.sizes)
            names.push_back(family.name + "/" + std::to_string(size));
    return names;
}

/// Whether each of `wanted` is one of `names`, with its size or without.
bool areKnown(const std::vector<std::string>& wanted, const std::vector<std::string>& names) {
    return std::all_of(wanted.begin(), wanted.end(), [&](const std::string& word) {
        return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return name == word || name.substr(0, name.find('/')) == word;
        });
    });
}

int run(std::vector<std::string> words) {
    const std::vector<Family> families = allFamilies();
    const std::vector<std::string> names = namesOf(families);
    if (take(words, "--list")) {
        for (const std::string& name : names)
            std::cout << name << "\n";
        return 0;
    }
    const bool once = take(words, "--once");
    if (!areKnown(words, names)) {
        std::cerr << "tavro_bench: there is no such benchmark; --list names them all\n";
        return 2;
    }
    bench::turnTraceAway();
    for (const Family& family : families)
        bench::add(family, words, once);
    benchmark::RunSpecifiedBenchmarks();
    return bench::hasFailed() ? 1 : 0;
}

}  // namespace

int main(int count, char** values) {
    benchmark::Initialize(&count, values);
    try {
        return run({values + 1, values + count});
    } catch (const std::exception& error) {
        bench::tell(error.what());
        return 1;
    }
}
