// Record files against the standard streams and zlib, on the same warm files. The counter "ratio"
// is the peer's time over ours, both taken in turns within one run.

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <zlib.h>

#include "common/files/fichero_itv.h"
#include "common/files/file_crc32.h"

namespace {

using zelto::TFicheroITV;

constexpr int kIntegers = 40'000;
constexpr int64_t kChunk = 4096;

// A folder that goes with the program, and the names in it.
class Folder {
  public:
    Folder() {
        char name[] = "/tmp/zelto-bench-XXXXXX";
        path_ = mkdtemp(name);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string Host(const char* name) const { return path_ + "/" + name; }
    zelto::DString Device(const char* name) const {
        std::string path = Host(name);
        std::replace(path.begin(), path.end(), '/', '\\');
        return path.c_str();
    }

  private:
    std::string path_;
};

const Folder& Files() {
    static const Folder folder;
    return folder;
}

template <class Action>
double Seconds(Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Times both in turns. The ratio is that of the fastest runs: what disturbs a run on a busy machine
// only ever makes it longer.
template <class Ours, class Peer>
void Compare(benchmark::State& state, double units, Ours ours, Peer peer) {
    double best = 1e9;
    double peer_best = 1e9;
    for ([[maybe_unused]] auto _ : state) {
        const double seconds = Seconds(ours);
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
        peer_best = std::min(peer_best, Seconds(peer));
    }
    state.counters["ns"] = best / units * 1e9;
    state.counters["peer_ns"] = peer_best / units * 1e9;
    state.counters["ratio"] = peer_best / best;
}

// Integers of four digits in lines of `tokens`, five bytes each.
void WriteLines(const char* name, int tokens, int count) {
    std::ofstream out(Files().Host(name), std::ios::binary);
    std::mt19937 random(1);
    for (int i = 1; i <= count; ++i)
        out << 1000 + random() % 9000 << (i % tokens == 0 ? '\n' : ' ');
}

int64_t SumOfFile(const char* name, uint32_t mode, int count) {
    TFicheroITV file(Files().Device(name), zelto::FICH_READ | zelto::FICH_TEXT | mode);
    int64_t sum = 0;
    int value = 0;
    for (int i = 0; i < count; ++i) {
        file >> value;
        sum += value;
    }
    return sum;
}

int64_t SumOfStream(const char* name) {
    std::ifstream file(Files().Host(name), std::ios::binary);
    int64_t sum = 0;
    int value = 0;
    while (file >> value)
        sum += value;
    return sum;
}

void ReadIntegersAgainstIfstream(benchmark::State& state, uint32_t mode) {
    WriteLines("integers", 8, kIntegers);
    if (SumOfFile("integers", mode, kIntegers) != SumOfStream("integers"))
        state.SkipWithError("the sums differ");
    Compare(
        state, kIntegers,
        [mode] { benchmark::DoNotOptimize(SumOfFile("integers", mode, kIntegers)); },
        [] { benchmark::DoNotOptimize(SumOfStream("integers")); });
}
BENCHMARK_CAPTURE(ReadIntegersAgainstIfstream, stdio, 0)->UseManualTime();
BENCHMARK_CAPTURE(ReadIntegersAgainstIfstream, memory, zelto::FICH_HANDLE)->UseManualTime();

void LongLinesAgainstShortOnes(benchmark::State& state, uint32_t mode) {
    WriteLines("long", 4000, kIntegers);
    WriteLines("short", 8, kIntegers);
    Compare(
        state, kIntegers * 5.0,
        [mode] { benchmark::DoNotOptimize(SumOfFile("long", mode, kIntegers)); },
        [mode] { benchmark::DoNotOptimize(SumOfFile("short", mode, kIntegers)); });
}
BENCHMARK_CAPTURE(LongLinesAgainstShortOnes, stdio, 0)->UseManualTime();
BENCHMARK_CAPTURE(LongLinesAgainstShortOnes, memory, zelto::FICH_HANDLE)->UseManualTime();

void WriteIntegersAgainstOfstream(benchmark::State& state) {
    Compare(
        state, kIntegers,
        [] {
            TFicheroITV file(Files().Device("out"), zelto::FICH_WRITE | zelto::FICH_TEXT);
            for (int i = 0; i < kIntegers; ++i)
                file << 10'000 + i;
        },
        [] {
            std::ofstream file(Files().Host("peer"), std::ios::binary);
            for (int i = 0; i < kIntegers; ++i)
                file << 10'000 + i << ' ';
        });
}
BENCHMARK(WriteIntegersAgainstOfstream)->UseManualTime();

uint32_t CrcByZlib(const zelto::DString& path) {
    TFicheroITV file(path, zelto::FICH_READ | zelto::FICH_BINARY | zelto::FICH_PACKAGE);
    std::array<unsigned char, kChunk> buffer;
    uLong crc = crc32(0, nullptr, 0);
    for (int64_t left = file.GetLength(); left > 0; left -= kChunk) {
        const auto size = static_cast<int32_t>(std::min(left, kChunk));
        file.Read(buffer.data(), size);
        crc = crc32(crc, buffer.data(), static_cast<uInt>(size));
    }
    return static_cast<uint32_t>(crc);
}

void FileCrc32AgainstZlib(benchmark::State& state) {
    constexpr int kBytes = 1 << 20;
    {
        std::ofstream out(Files().Host("bytes"), std::ios::binary);
        std::mt19937 random(1);
        for (int i = 0; i < kBytes; ++i)
            out.put(static_cast<char>(random()));
    }
    const zelto::DString path = Files().Device("bytes");
    uint32_t crc = 0;
    if (!zelto::FileCrc32(path, crc, zelto::kCrcGenerate) || crc != CrcByZlib(path))
        state.SkipWithError("the CRCs differ");
    Compare(
        state, kBytes, [&] { zelto::FileCrc32(path, crc, zelto::kCrcGenerate); },
        [&] { benchmark::DoNotOptimize(CrcByZlib(path)); });
}
BENCHMARK(FileCrc32AgainstZlib)->UseManualTime();

}  // namespace
