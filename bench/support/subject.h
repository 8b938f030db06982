#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/cost.h"

namespace bench {

/// A hot path, and what it cannot beat: the same work without it.
struct Subject {
    Action ours;
    Action limit;
};

/// A subject at several sizes.
struct Family {
    std::string name;
    std::string unit;  ///< what the sizes count
    std::vector<std::int64_t> sizes;
    std::function<Subject(std::int64_t size)> make;  ///< puts in place what the subject needs
    int iterations = 0;              ///< in each repetition; 0: as many as take a while
    std::int64_t unasked = 1 << 30;  ///< the largest size that runs without being named
};

/// Adds the sizes of `family` that `names` (NAME or NAME/SIZE; empty: all) want to the benchmarks;
/// with `once` only the smallest, for a single iteration.
void add(const Family& family, const std::vector<std::string>& names, bool once);

/// Whether a benchmark has failed.
bool hasFailed();

/// What the parts of the project add.
std::vector<Family> parserFamilies();
std::vector<Family> transferFamilies();
std::vector<Family> storeFamilies();
std::vector<Family> browserFamilies();
std::vector<Family> startFamilies();
std::vector<Family> toolFamilies();

}  // namespace bench
