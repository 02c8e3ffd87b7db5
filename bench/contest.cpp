#include "bench/contest.h"

#include <algorithm>
#include <ctime>

namespace zelto::bench {
namespace {

constexpr int kRounds = 7;

double Now(Clock clock) {
    timespec time{};
    clock_gettime(clock == Clock::kThread ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

double Nanoseconds(const std::function<void()>& work, Clock clock) {
    const double start = Now(clock);
    work();
    return Now(clock) - start;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void Store(benchmark::State& state, const std::string& name, const std::vector<double>& ours,
           const std::vector<double>& times) {
    std::vector<double> ratios;
    for (size_t round = 0; round < times.size(); ++round)
        ratios.push_back(ours[round] / times[round]);
    const auto [lowest, highest] = std::minmax_element(times.begin(), times.end());
    state.counters[name] = Median(times);
    state.counters[name + " low"] = *lowest;
    state.counters[name + " high"] = *highest;
    state.counters[name + " ratio"] = Median(ratios);
}

}  // namespace

void Contest(benchmark::State& state, double units, const char* goal,
             const std::vector<Contestant>& contestants, Clock clock) {
    std::vector<std::vector<double>> times(contestants.size());
    for (const Contestant& contestant : contestants)
        contestant.work();
    size_t round = 0;
    for ([[maybe_unused]] auto _ : state) {
        // Another one begins each round: who runs after whom must not decide.
        for (size_t turn = 0; turn < contestants.size(); ++turn) {
            const size_t who = (round + turn) % contestants.size();
            times[who].push_back(Nanoseconds(contestants[who].work, clock) / units);
        }
        state.SetIterationTime(times[0].back() * units / 1e9);
        ++round;
    }
    for (size_t i = 0; i < contestants.size(); ++i)
        Store(state, contestants[i].name, times[0], times[i]);
    state.SetLabel(goal);
}

void AddRow(const std::string& name, const std::function<void(benchmark::State&)>& row) {
    benchmark::RegisterBenchmark(name.c_str(), row)->UseManualTime()->Iterations(kRounds);
}

}  // namespace zelto::bench
