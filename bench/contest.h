// One row of the report: several ways to do the same work, timed in turns.

#ifndef ZELTO_BENCH_CONTEST_H
#define ZELTO_BENCH_CONTEST_H

#include <benchmark/benchmark.h>
#include <functional>
#include <string>
#include <vector>

namespace zelto::bench {

// What a row measures: the time of the calling thread alone, so that other load on the machine does
// not count, or, where several processes take part, the time on the wall.
enum class Clock { kThread, kWall };

struct Contestant {
    const char* name;
    std::function<void()> work;
};

// Runs each contestant once a round, as many rounds as the benchmark has iterations, after one that
// does not count, and stores for each: the median of its nanoseconds per unit, the lowest and the
// highest, and the median over the rounds of the first one's time over its time. The first is ours.
// `goal` is the ratio to stay below and against whom, as "1.5 zlib"; empty without one.
void Contest(benchmark::State& state, double units, const char* goal,
             const std::vector<Contestant>& contestants, Clock clock = Clock::kThread);

// Registers a row of seven rounds.
void AddRow(const std::string& name, const std::function<void(benchmark::State&)>& row);

}  // namespace zelto::bench

#endif
