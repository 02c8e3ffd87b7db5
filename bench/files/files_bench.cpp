// Record files against the standard streams, zlib and libdeflate, on the same warm files. The
// counter "ratio" is the peer's time over ours, both taken in turns within one run.

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <libdeflate.h>
#include <random>
#include <string>
#include <unistd.h>
#include <zlib.h>

#include "common/files/fichero_itv.h"
#include "common/files/file_crc32.h"

namespace {

using zelto::TFicheroITV;

constexpr int kIntegers = 40'000;

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

template <class Value, class Sum>
Sum SumOfFields(const char* name, uint32_t mode) {
    TFicheroITV file(Files().Device(name), zelto::FICH_READ | mode);
    Sum sum = 0;
    Value value = 0;
    for (int i = 0; i < kIntegers; ++i) {
        file >> value;
        sum += value;
    }
    return sum;
}

int64_t SumOfFile(const char* name, uint32_t mode) {
    return SumOfFields<int, int64_t>(name, zelto::FICH_TEXT | mode);
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
    if (SumOfFile("integers", mode) != SumOfStream("integers"))
        state.SkipWithError("the sums differ");
    Compare(
        state, kIntegers, [mode] { benchmark::DoNotOptimize(SumOfFile("integers", mode)); },
        [] { benchmark::DoNotOptimize(SumOfStream("integers")); });
}
BENCHMARK_CAPTURE(ReadIntegersAgainstIfstream, stdio, 0)->UseManualTime();
BENCHMARK_CAPTURE(ReadIntegersAgainstIfstream, memory, zelto::FICH_HANDLE)->UseManualTime();

void LongLinesAgainstShortOnes(benchmark::State& state, uint32_t mode) {
    WriteLines("long", 4000, kIntegers);
    WriteLines("short", 8, kIntegers);
    Compare(
        state, kIntegers * 5.0, [mode] { benchmark::DoNotOptimize(SumOfFile("long", mode)); },
        [mode] { benchmark::DoNotOptimize(SumOfFile("short", mode)); });
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

// Texts that are read whole by the container and by what a program would take instead.
void WriteDoubles(const char* name) {
    std::ofstream out(Files().Host(name), std::ios::binary);
    std::mt19937 random(2);
    for (int i = 1; i <= kIntegers; ++i)
        out << random() % 100'000 << '.' << 10 + random() % 90 << (i % 8 == 0 ? '\n' : ' ');
}

double SumOfDoubles(uint32_t mode) {
    return SumOfFields<double, double>("doubles", zelto::FICH_TEXT | mode);
}

double SumByFromChars() {
    std::ifstream file(Files().Host("doubles"), std::ios::binary);
    std::string line;
    double sum = 0;
    while (std::getline(file, line)) {
        const char* at = line.data();
        const char* end = at + line.size();
        for (double value = 0; at < end; ++at) {
            at = std::from_chars(at, end, value).ptr;
            sum += value;
        }
    }
    return sum;
}

void ReadDoublesAgainstFromChars(benchmark::State& state, uint32_t mode) {
    WriteDoubles("doubles");
    if (SumOfDoubles(mode) != SumByFromChars())
        state.SkipWithError("the sums differ");
    Compare(
        state, kIntegers, [mode] { benchmark::DoNotOptimize(SumOfDoubles(mode)); },
        [] { benchmark::DoNotOptimize(SumByFromChars()); });
}
BENCHMARK_CAPTURE(ReadDoublesAgainstFromChars, stdio, 0)->UseManualTime();
BENCHMARK_CAPTURE(ReadDoublesAgainstFromChars, memory, zelto::FICH_HANDLE)->UseManualTime();

void ReadWordsAgainstIfstream(benchmark::State& state, uint32_t mode) {
    WriteLines("words", 8, kIntegers);
    Compare(
        state, kIntegers,
        [mode] {
            TFicheroITV file(Files().Device("words"), zelto::FICH_READ | zelto::FICH_TEXT | mode);
            zelto::DString word;
            for (int i = 0; i < kIntegers; ++i)
                file.get_dato_texto(word);
        },
        [] {
            std::ifstream file(Files().Host("words"), std::ios::binary);
            std::string word;
            while (file >> word)
                benchmark::DoNotOptimize(word);
        });
}
BENCHMARK_CAPTURE(ReadWordsAgainstIfstream, stdio, 0)->UseManualTime();
BENCHMARK_CAPTURE(ReadWordsAgainstIfstream, memory, zelto::FICH_HANDLE)->UseManualTime();

void ReadLinesAgainstGetline(benchmark::State& state, uint32_t mode) {
    const int length = static_cast<int>(state.range(0));
    const int lines = 2'000'000 / length;
    {
        std::ofstream out(Files().Host("lines"), std::ios::binary);
        for (int i = 0; i < lines; ++i)
            out << std::string(static_cast<size_t>(length), static_cast<char>('a' + i % 26))
                << '\n';
    }
    Compare(
        state, lines,
        [mode, lines] {
            TFicheroITV file(Files().Device("lines"), zelto::FICH_READ | zelto::FICH_TEXT | mode);
            zelto::DString line;
            for (int i = 0; i < lines; ++i)
                file.ReadLine(line);
        },
        [] {
            std::ifstream file(Files().Host("lines"), std::ios::binary);
            std::string line;
            while (std::getline(file, line))
                benchmark::DoNotOptimize(line);
        });
}
BENCHMARK_CAPTURE(ReadLinesAgainstGetline, stdio, 0)->Arg(40)->Arg(19'000)->UseManualTime();
BENCHMARK_CAPTURE(ReadLinesAgainstGetline, memory, zelto::FICH_HANDLE)
    ->Arg(40)
    ->Arg(19'000)
    ->UseManualTime();

int64_t SumOfBinary(uint32_t mode) {
    return SumOfFields<int, int64_t>("binary", zelto::FICH_BINARY | mode);
}

// The handle stream against the other one.
void ReadBinaryThroughAHandleAgainstStdio(benchmark::State& state) {
    {
        TFicheroITV file(Files().Device("binary"), zelto::FICH_WRITE | zelto::FICH_BINARY);
        for (int i = 0; i < kIntegers; ++i)
            file << i * 7919;
    }
    if (SumOfBinary(zelto::FICH_PACKAGE) != SumOfBinary(0))
        state.SkipWithError("the sums differ");
    Compare(
        state, kIntegers, [] { benchmark::DoNotOptimize(SumOfBinary(zelto::FICH_PACKAGE)); },
        [] { benchmark::DoNotOptimize(SumOfBinary(0)); });
}
BENCHMARK(ReadBinaryThroughAHandleAgainstStdio)->UseManualTime();

// The peers read 64 KiB at a time from a descriptor.
template <class Add>
uint32_t CrcOfDescriptor(const std::string& path, Add add) {
    static std::array<unsigned char, 64 * 1024> buffer;
    const int descriptor = open(path.c_str(), O_RDONLY);
    uint32_t crc = 0;
    for (ssize_t size = 0; (size = read(descriptor, buffer.data(), buffer.size())) > 0;)
        crc = add(crc, buffer.data(), static_cast<size_t>(size));
    close(descriptor);
    return crc;
}

uint32_t AddByZlib(uint32_t crc, const unsigned char* bytes, size_t size) {
    return static_cast<uint32_t>(crc32(crc, bytes, static_cast<uInt>(size)));
}

uint32_t AddByLibdeflate(uint32_t crc, const unsigned char* bytes, size_t size) {
    return libdeflate_crc32(crc, bytes, size);
}

void FileCrc32Against(benchmark::State& state,
                      uint32_t (*peer)(uint32_t, const unsigned char*, size_t)) {
    {
        std::ofstream out(Files().Host("bytes"), std::ios::binary);
        std::mt19937 random(1);
        for (int64_t i = 0; i < state.range(0); ++i)
            out.put(static_cast<char>(random()));
    }
    const zelto::DString path = Files().Device("bytes");
    const std::string host = Files().Host("bytes");
    uint32_t crc = 0;
    if (!zelto::FileCrc32(path, crc, zelto::kCrcGenerate) || crc != CrcOfDescriptor(host, peer))
        state.SkipWithError("the CRCs differ");
    Compare(
        state, static_cast<double>(state.range(0)),
        [&] { zelto::FileCrc32(path, crc, zelto::kCrcGenerate); },
        [&] { benchmark::DoNotOptimize(CrcOfDescriptor(host, peer)); });
}
BENCHMARK_CAPTURE(FileCrc32Against, zlib, AddByZlib)
    ->RangeMultiplier(64)
    ->Range(1 << 10, 1 << 26)
    ->UseManualTime();
BENCHMARK_CAPTURE(FileCrc32Against, libdeflate, AddByLibdeflate)
    ->RangeMultiplier(64)
    ->Range(1 << 10, 1 << 26)
    ->UseManualTime();

}  // namespace
