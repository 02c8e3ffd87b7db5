// Parsing and formatting of dates against the C library on the same texts and fields. The counter
// "ratio" is the C library's time over ours, both taken in turns within one run.

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "common/time/date_format.h"
#include "common/time/date_parse.h"

namespace {

constexpr int kBatch = 1000;

template <class Action>
double BatchSeconds(Action action) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kBatch; ++i)
        action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <class Ours, class Peer>
void Compare(benchmark::State& state, Ours ours, Peer peer) {
    double our_seconds = 0;
    double peer_seconds = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double batch = BatchSeconds(ours);
        state.SetIterationTime(batch);
        our_seconds += batch;
        peer_seconds += BatchSeconds(peer);
    }
    const double calls = static_cast<double>(state.iterations()) * kBatch;
    state.counters["ns"] = our_seconds / calls * 1e9;
    state.counters["peer_ns"] = peer_seconds / calls * 1e9;
    state.counters["ratio"] = peer_seconds / our_seconds;
}

void ParseDateAgainstStrptime(benchmark::State& state, const char* text, const char* format) {
    zelto::DDateTime ours;
    tm peer = {};
    Compare(
        state,
        [&] {
            benchmark::DoNotOptimize(text);
            benchmark::DoNotOptimize(zelto::ParseDate(ours, text));
            benchmark::DoNotOptimize(ours);
        },
        [&] {
            benchmark::DoNotOptimize(text);
            benchmark::DoNotOptimize(strptime(text, format, &peer));
            benchmark::DoNotOptimize(peer);
        });
}
BENCHMARK_CAPTURE(ParseDateAgainstStrptime, date_and_time, "2009-12-25 10:20:30",
                  "%Y-%m-%d %H:%M:%S")
    ->UseManualTime();
BENCHMARK_CAPTURE(ParseDateAgainstStrptime, year_first, "2009/12/25", "%Y/%m/%d")->UseManualTime();
BENCHMARK_CAPTURE(ParseDateAgainstStrptime, day_first, "25.12.2009", "%d.%m.%Y")->UseManualTime();

void FormatIsoAgainstSnprintf(benchmark::State& state) {
    zelto::DDateTime value(25, 12, 2009, 10, 20, 30.5F);
    zelto::DString out;
    char peer[64];
    Compare(
        state,
        [&] {
            benchmark::DoNotOptimize(value);
            zelto::FormatDateTimeIso(value, out);
            benchmark::DoNotOptimize(out.c_str());
        },
        [&] {
            benchmark::DoNotOptimize(value);
            std::snprintf(peer, sizeof peer, "%d-%02d-%02d %02d:%02d:%02d", value.year, value.month,
                          value.day, value.hour, value.minute, static_cast<int>(value.seconds));
            benchmark::DoNotOptimize(peer);
        });
}
BENCHMARK(FormatIsoAgainstSnprintf)->UseManualTime();

}  // namespace
