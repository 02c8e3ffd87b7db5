// Record files against the standard streams, zlib and libdeflate, on the same warm files of about
// ten megabytes.

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <libdeflate.h>
#include <random>
#include <string>
#include <unistd.h>
#include <zlib.h>

#include "bench/contest.h"
#include "bench/temp_folder.h"
#include "common/files/fichero_itv.h"
#include "common/files/file_crc32.h"

namespace zelto::bench {
namespace {

constexpr int kFields = 1'000'000;
constexpr size_t kChunk = 64 * 1024;  // bytes that a peer reads at a time

const TempFolder& Files() {
    static const TempFolder folder;
    return folder;
}

// The peers' streams get the room that who cares for speed gives them.
class Input {
  public:
    explicit Input(const char* name) : room_(kChunk, 0) {
        stream_.rdbuf()->pubsetbuf(room_.data(), static_cast<std::streamsize>(room_.size()));
        stream_.open(Files().Host(name), std::ios::binary);
    }
    std::ifstream& Stream() { return stream_; }

  private:
    std::string room_;
    std::ifstream stream_;
};

// `count` numbers in lines of eight, "%d" or with two decimals.
void WriteNumbers(const char* name, bool decimals) {
    std::ofstream out(Files().Host(name), std::ios::binary);
    std::mt19937 random(1);
    for (int i = 1; i <= kFields; ++i) {
        out << (decimals ? random() % 100'000 : 1000 + random() % 9'000'000);
        if (decimals)
            out << '.' << 10 + random() % 90;
        out << (i % 8 == 0 ? '\n' : ' ');
    }
}

template <class Value>
double SumOfFields(const char* name, uint32_t mode) {
    TFicheroITV file(Files().Device(name), FICH_READ | mode);
    double sum = 0;
    Value value = 0;
    for (int i = 0; i < kFields; ++i) {
        file >> value;
        sum += static_cast<double>(value);
    }
    return sum;
}

template <class Value>
double SumByStream(const char* name) {
    Input input(name);
    double sum = 0;
    for (Value value = 0; input.Stream() >> value;)
        sum += static_cast<double>(value);
    return sum;
}

double SumByScanf(const char* name, bool decimals) {
    std::FILE* file = std::fopen(Files().Host(name).c_str(), "rb");
    double sum = 0;
    double real = 0;
    int whole = 0;
    while ((decimals ? std::fscanf(file, "%lf", &real) : std::fscanf(file, "%d", &whole)) == 1)
        sum += decimals ? real : whole;
    std::fclose(file);
    return sum;
}

template <class Value>
double SumByFromChars(const char* name) {
    Input input(name);
    std::string line;
    double sum = 0;
    while (std::getline(input.Stream(), line)) {
        const char* at = line.data();
        const char* end = at + line.size();
        for (Value value = 0; at < end; ++at) {
            at = std::from_chars(at, end, value).ptr;
            sum += static_cast<double>(value);
        }
    }
    return sum;
}

template <class Value>
void ReadNumbers(benchmark::State& state, uint32_t mode, const char* goal) {
    constexpr bool kDecimals = !std::is_integral_v<Value>;
    const char* name = kDecimals ? "doubles" : "integers";
    WriteNumbers(name, kDecimals);
    if (SumOfFields<Value>(name, FICH_TEXT | mode) != SumByFromChars<Value>(name))
        return state.SkipWithError("the sums differ");
    Contest(
        state, kFields, goal,
        {{"ours", [=] { benchmark::DoNotOptimize(SumOfFields<Value>(name, FICH_TEXT | mode)); }},
         {"fstream", [=] { benchmark::DoNotOptimize(SumByStream<Value>(name)); }},
         {"fscanf", [=] { benchmark::DoNotOptimize(SumByScanf(name, kDecimals)); }},
         {"getline+from_chars", [=] { benchmark::DoNotOptimize(SumByFromChars<Value>(name)); }}});
}

void ReadWords(benchmark::State& state, uint32_t mode) {
    WriteNumbers("words", true);
    Contest(state, kFields, "0.5 fstream",
            {{"ours",
              [mode] {
                  TFicheroITV file(Files().Device("words"), FICH_READ | FICH_TEXT | mode);
                  DString word;
                  for (int i = 0; i < kFields; ++i)
                      file.get_dato_texto(word);
                  benchmark::DoNotOptimize(word.c_str());
              }},
             {"fstream", [] {
                  Input input("words");
                  for (std::string word; input.Stream() >> word;)
                      benchmark::DoNotOptimize(word.data());
              }}});
}

void ReadLines(benchmark::State& state, uint32_t mode, int length) {
    const int lines = 10'000'000 / length;
    {
        std::ofstream out(Files().Host("lines"), std::ios::binary);
        for (int i = 0; i < lines; ++i)
            out << std::string(static_cast<size_t>(length), static_cast<char>('a' + i % 26))
                << '\n';
    }
    Contest(state, lines, "1.25 getline",
            {{"ours",
              [=] {
                  TFicheroITV file(Files().Device("lines"), FICH_READ | FICH_TEXT | mode);
                  DString line;
                  for (int i = 0; i < lines; ++i)
                      file.ReadLine(line);
                  benchmark::DoNotOptimize(line.c_str());
              }},
             {"getline", [] {
                  Input input("lines");
                  for (std::string line; std::getline(input.Stream(), line);)
                      benchmark::DoNotOptimize(line.data());
              }}});
}

void WriteBinary() {
    TFicheroITV file(Files().Device("binary"), FICH_WRITE | FICH_BINARY);
    for (int i = 0; i < kFields; ++i)
        file << static_cast<int>(static_cast<uint32_t>(i) * 7919);
}

void ReadBinary(benchmark::State& state) {
    WriteBinary();
    const auto sum = [](uint32_t mode) { return SumOfFields<int>("binary", FICH_BINARY | mode); };
    if (sum(FICH_PACKAGE) != sum(0))
        return state.SkipWithError("the sums differ");
    Contest(state, kFields, "3 our stdio stream",
            {{"ours", [=] { benchmark::DoNotOptimize(sum(FICH_PACKAGE)); }},
             {"our stdio stream", [=] { benchmark::DoNotOptimize(sum(0)); }},
             {"fstream", [] {
                  Input input("binary");
                  double all = 0;
                  for (int value = 0;
                       input.Stream().read(reinterpret_cast<char*>(&value), sizeof value);)
                      all += value;
                  benchmark::DoNotOptimize(all);
              }}});
}

// A field through the handle stream is two writes: what was told is written.
void WriteThroughAHandle(benchmark::State& state) {
    constexpr int kCount = 20'000;
    const auto ours = [](uint32_t mode) {
        TFicheroITV file(Files().Device("out"), FICH_WRITE | FICH_TEXT | mode);
        for (int i = 0; i < kCount; ++i)
            file << 10'000 + i;
    };
    Contest(state, kCount, "1.1 two bare writes",
            {{"ours", [=] { ours(FICH_PACKAGE); }},
             {"two bare writes",
              [] {
                  const int file =
                      open(Files().Host("bare").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
                  for (int i = 0; i < kCount; ++i) {
                      char digits[12];
                      const char* end = std::to_chars(digits, digits + 12, 10'000 + i).ptr;
                      if (write(file, digits, static_cast<size_t>(end - digits)) < 0 ||
                          write(file, " ", 1) < 0)
                          break;
                  }
                  close(file);
              }},
             {"our stdio stream", [=] { ours(0); }},
             {"fstream", [] {
                  std::ofstream file(Files().Host("peer"), std::ios::binary);
                  for (int i = 0; i < kCount; ++i)
                      file << 10'000 + i << ' ';
              }}});
}

// The peers read a chunk at a time from a descriptor.
template <class Add>
uint32_t CrcOfDescriptor(const std::string& path, Add add) {
    static std::array<unsigned char, kChunk> buffer;
    const int descriptor = open(path.c_str(), O_RDONLY);
    uint32_t crc = 0;
    for (ssize_t size = 0; (size = read(descriptor, buffer.data(), buffer.size())) > 0;)
        crc = add(crc, buffer.data(), static_cast<size_t>(size));
    close(descriptor);
    return crc;
}

uint32_t AddNothing(uint32_t crc, const unsigned char* bytes, size_t size) {
    benchmark::DoNotOptimize(bytes[size - 1]);
    return crc;
}

uint32_t AddByZlib(uint32_t crc, const unsigned char* bytes, size_t size) {
    return static_cast<uint32_t>(crc32(crc, bytes, static_cast<uInt>(size)));
}

uint32_t AddByLibdeflate(uint32_t crc, const unsigned char* bytes, size_t size) {
    return libdeflate_crc32(crc, bytes, size);
}

void StampFile(benchmark::State& state, int64_t size, const char* goal) {
    {
        std::ofstream out(Files().Host("bytes"), std::ios::binary);
        std::mt19937 random(1);
        for (int64_t i = 0; i < size; ++i)
            out.put(static_cast<char>(random()));
    }
    const DString path = Files().Device("bytes");
    const std::string host = Files().Host("bytes");
    uint32_t crc = 0;
    if (!FileCrc32(path, crc, kCrcGenerate) || crc != CrcOfDescriptor(host, AddByZlib))
        return state.SkipWithError("the CRCs differ");
    const int64_t times = std::max<int64_t>(1, (int64_t{1} << 22) / (size + 4096));
    const auto repeat = [times](auto work) {
        return [=] {
            for (int64_t i = 0; i < times; ++i)
                work();
        };
    };
    const auto peer = [&](auto add) {
        return repeat([=] { benchmark::DoNotOptimize(CrcOfDescriptor(host, add)); });
    };
    Contest(state, static_cast<double>(times), goal,
            {{"ours", repeat([&] { FileCrc32(path, crc, kCrcGenerate); })},
             {"read only", peer(AddNothing)},
             {"zlib", peer(AddByZlib)},
             {"libdeflate", peer(AddByLibdeflate)}});
}

const bool kAdded = [] {
    constexpr struct {
        const char* name;
        uint32_t mode;
    } kStreams[] = {{"stdio", 0}, {"handle", FICH_HANDLE}};
    AddRow("binary fields read/FICH_PACKAGE", ReadBinary);
    AddRow("text fields written/FICH_PACKAGE", WriteThroughAHandle);
    for (const auto& [name, mode] : kStreams) {
        const std::string stream = std::string("/") + name;
        AddRow("integers read" + stream, [mode = mode](benchmark::State& state) {
            ReadNumbers<int>(state, mode, "1 getline+from_chars");
        });
        AddRow("doubles read" + stream, [mode = mode](benchmark::State& state) {
            ReadNumbers<double>(state, mode, "1.25 getline+from_chars");
        });
        AddRow("words read" + stream,
               [mode = mode](benchmark::State& state) { ReadWords(state, mode); });
        for (const int length : {40, 19'000}) {
            AddRow("lines of " + std::to_string(length) + " read" + stream,
                   [=, mode = mode](benchmark::State& state) { ReadLines(state, mode, length); });
        }
    }
    for (const int shift : {10, 16, 20, 26}) {
        AddRow("FileCrc32/" + std::to_string((int64_t{1} << shift) / 1024) + " KiB",
               [shift](benchmark::State& state) {
                   StampFile(state, int64_t{1} << shift,
                             shift == 10 ? "1.5 zlib" : "1.43 libdeflate");
               });
    }
    return true;
}();

}  // namespace
}  // namespace zelto::bench
