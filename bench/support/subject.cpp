#include "support/subject.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <exception>

#include "support/child.h"
#include "support/diagnostics.h"

namespace bench {

namespace {

struct Peaks {
    double ours;
    double limit;
};

bool failed = false;

/// Runs both sides, now the one first and now the other, so that whatever else the machine does
/// meets both.
void measure(benchmark::State& state, const Subject& subject, const Peaks& peaks) {
    Cost ours;
    Cost limit;
    for (static bool oursFirst = true; state.KeepRunning(); oursFirst = !oursFirst) {
        const Cost first = (oursFirst ? subject.ours : subject.limit).run();
        const Cost second = (oursFirst ? subject.limit : subject.ours).run();
        state.SetIterationTime(first.elapsed + second.elapsed);
        ours = ours + (oursFirst ? first : second);
        limit = limit + (oursFirst ? second : first);
    }
    const auto each = benchmark::Counter::kAvgIterations;
    state.counters = {{"ours", {ours.processor, each}},
                      {"limit", {limit.processor, each}},
                      {"ours_elapsed", {ours.elapsed, each}},
                      {"limit_elapsed", {limit.elapsed, each}},
                      {"ours_peak", peaks.ours},
                      {"limit_peak", peaks.limit}};
}

/// The memory that both sides take, found in a process of its own for this one to stay small.
Peaks peaksOf(const Family& family, std::int64_t size) {
    return inChild([&] {
        const Subject subject = family.make(size);
        return Peaks{subject.ours.peak(), subject.limit.peak()};
    });
}

void add(const Family& family, std::int64_t size, bool once) {
    const std::string name = family.name + "/" + std::to_string(size);
    const Peaks peaks = peaksOf(family, size);
    const auto run = [=](benchmark::State& state) {
        try {
            // Anew each time, for one connection can be luckier than another all its life.
            const Subject subject = family.make(size);
            subject.ours.run();  // the first time is another matter
            subject.limit.run();
            measure(state, subject, peaks);
            state.SetLabel(family.unit);
        } catch (const std::exception& error) {
            failed = true;
            tell(name + ": " + error.what());
            state.SkipWithError(error.what());
        }
    };
    auto* const registered = benchmark::RegisterBenchmark(name.c_str(), run)->UseManualTime();
    if (once || family.iterations > 0)
        registered->Iterations(once ? 1 : family.iterations);
}

}  // namespace

void add(const Family& family, const std::vector<std::string>& names, bool once) {
    const auto isNamed = [&](const std::string& name) {
        return std::count(names.begin(), names.end(), name) > 0;
    };
    const bool wanted = names.empty() || isNamed(family.name);
    for (const std::int64_t size : family.sizes) {
        const bool asked = isNamed(family.name + "/" + std::to_string(size));
        const bool usual = once ? size == family.sizes.front() : size <= family.unasked;
        if (asked || (wanted && usual))
            add(family, size, once);
    }
}

bool hasFailed() {
    return failed;
}

}  // namespace bench
