// The library's conversions against iconv on the same texts. iconv keeps its descriptor from call
// to call. The counter "ratio" is iconv's time over ours, both taken in turns within one run; the
// argument is the length of the text in units or bytes.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <iconv.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/text/codepage.h"

namespace {

using zelto::CodepageTable;

constexpr int32_t kUtf8 = 65001;

// Processor time: other load on the machine does not count.
template <class Action>
double BatchSeconds(int calls, Action action) {
    const std::clock_t start = std::clock();
    for (int i = 0; i < calls; ++i)
        action();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

template <class Ours, class Peer>
void Compare(benchmark::State& state, Ours ours, Peer peer) {
    const auto length = static_cast<int>(state.range(0));
    const int batch = 1 + 100000 / length;
    double our_seconds = 0;
    double peer_seconds = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double seconds = BatchSeconds(batch, ours);
        state.SetIterationTime(seconds);
        our_seconds += seconds;
        peer_seconds += BatchSeconds(batch, peer);
    }
    const double units = static_cast<double>(state.iterations()) * batch * length;
    state.counters["ns/unit"] = our_seconds / units * 1e9;
    state.counters["peer"] = peer_seconds / units * 1e9;
    state.counters["ratio"] = peer_seconds / our_seconds;
}

class Peer {
  public:
    Peer(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {}
    ~Peer() { iconv_close(descriptor_); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    template <class Source, class Target>
    void operator()(const std::basic_string<Source>& text, std::vector<Target>& out) {
        auto* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
        size_t in_left = text.size() * sizeof(Source);
        auto* to = reinterpret_cast<char*>(out.data());
        size_t out_left = out.size() * sizeof(Target);
        benchmark::DoNotOptimize(iconv(descriptor_, &in, &in_left, &to, &out_left));
        if (in_left != 0)
            std::abort();
    }

  private:
    iconv_t descriptor_;
};

// `sample` again and again, without half a pair at the end.
std::u16string Repeat(const char16_t* sample, int64_t length) {
    std::u16string text;
    while (text.size() < static_cast<size_t>(length))
        text += sample;
    text.resize(static_cast<size_t>(length));
    if ((text.back() & 0xFC00) == 0xD800)
        text.back() = u'.';
    return text;
}

std::string Narrow(zelto::CodepageRegistry* registry, int32_t codepage,
                   const std::u16string& text) {
    std::string bytes(text.size() * 4 + 1, 0);
    const int count =
        zelto::WideToNarrow(registry, codepage, text.data(), static_cast<int>(text.size()),
                            bytes.data(), static_cast<int>(bytes.size()) - 1);
    bytes.resize(static_cast<size_t>(count));
    return bytes;
}

void EncodeAgainst(benchmark::State& state, zelto::CodepageRegistry* registry, int32_t codepage,
                   const char* peer, const char16_t* sample) {
    const std::u16string text = Repeat(sample, state.range(0));
    std::vector<char> out(text.size() * 4 + 1);
    Peer convert(peer, "UTF-16LE");
    Compare(
        state,
        [&] {
            benchmark::DoNotOptimize(zelto::WideToNarrow(registry, codepage, text.data(),
                                                         static_cast<int>(text.size()), out.data(),
                                                         static_cast<int>(out.size()) - 1));
            benchmark::ClobberMemory();
        },
        [&] { convert(text, out); });
}

void DecodeAgainst(benchmark::State& state, zelto::CodepageRegistry* registry, int32_t codepage,
                   const char* peer, const char16_t* sample) {
    std::string text = Narrow(registry, codepage, Repeat(sample, state.range(0)));
    std::vector<WCHAR> out(text.size() + 1);
    Peer convert("UTF-16LE", peer);
    Compare(
        state,
        [&] {
            benchmark::DoNotOptimize(zelto::NarrowToWide(registry, codepage, text.data(),
                                                         static_cast<int>(text.size()), out.data(),
                                                         static_cast<int>(out.size()) - 1));
            benchmark::ClobberMemory();
        },
        [&] { convert(text, out); });
}

// The page as the system knows it. In a table of five pages, every form of a byte is a unit of its
// own.
zelto::CodepageRegistry* RegistryOf(uint32_t codepage, uint32_t pages) {
    auto record = std::make_unique<CodepageTable>();
    record->identifier = codepage;
    record->page_count = pages;
    for (int i = 0; i < zelto::kTablePageSize; ++i) {
        const char byte = static_cast<char>(zelto::kTablePageSize + i);
        WCHAR unit = 0;
        MultiByteToWideChar(codepage, 0, &byte, 1, &unit, 1);
        record->mapping[i] = unit;
        for (uint32_t page = 1; page < pages; ++page)
            record->mapping[page * zelto::kTablePageSize + static_cast<uint32_t>(i)] =
                static_cast<uint16_t>(0xFB50 + page * zelto::kTablePageSize +
                                      static_cast<uint32_t>(i));
    }
    auto* registry = new zelto::CodepageRegistry;
    registry->RegisterTable(record.get(), -1);
    return registry;
}

struct Sample {
    const char* name;
    const char16_t* text;
};

constexpr Sample kUtf8Samples[] = {
    {"ascii", u"Turn left in 300 metres into Harbour Street, then keep right. "},
    {"latin", u"Gire a la izquierda, señal de atención en el cruce próximo. Año 2010. "},
    {"greek", u"Στρίψτε αριστερά στην επόμενη διασταύρωση και συνεχίστε ευθεία. "},
    {"cjk", u"前方三百米处左转进入海港街然后靠右行驶直到下一个路口"},
    {"mixed", u"Km 12 – Αθήνα, señal 東京 \U0001F600 ok, 42 % … "},
    {"pairs", u"\U0001F600\U00010000\U0001D11E\U00020000"},
    {"in_turns", u"aéa€"},
};

struct TableSample {
    const char* name;
    const char* peer;
    uint32_t codepage;
    uint32_t pages;
    const char16_t* text;
};

constexpr TableSample kTableSamples[] = {
    {"ascii_1252", "CP1252", 1252, 1, kUtf8Samples[0].text},
    {"latin_1252", "CP1252", 1252, 1, kUtf8Samples[1].text},
    {"greek_28597", "ISO-8859-7", 28597, 1, kUtf8Samples[2].text},
    {"cyrillic_1251", "CP1251", 1251, 1,
     u"Через триста метров поверните налево, затем держитесь правее. "},
    {"arabic_1256", "CP1256", 1256, 5, u"انعطف يسارا بعد ثلاثمائة متر ثم الزم اليمين حتى التقاطع "},
};

template <class Function>
void Add(const std::string& name, Function function) {
    benchmark::RegisterBenchmark(name.c_str(), function)
        ->UseManualTime()
        ->Arg(8)
        ->Arg(32)
        ->Arg(256)
        ->Arg(65536);
}

const bool kAdded = [] {
    static zelto::CodepageRegistry empty;
    for (const Sample& sample : kUtf8Samples) {
        Add(std::string("EncodeUtf8/") + sample.name, [sample](benchmark::State& state) {
            EncodeAgainst(state, &empty, kUtf8, "UTF-8", sample.text);
        });
        // iconv does not know the library's pairs.
        const std::u16string_view text = sample.text;
        if (text.find_first_of(u"\U0001F600") == text.npos) {
            Add(std::string("DecodeUtf8/") + sample.name, [sample](benchmark::State& state) {
                DecodeAgainst(state, &empty, kUtf8, "UTF-8", sample.text);
            });
        }
    }
    for (const TableSample& sample : kTableSamples) {
        auto* registry = RegistryOf(sample.codepage, sample.pages);
        const auto codepage = static_cast<int32_t>(sample.codepage);
        Add(std::string("EncodeTable/") + sample.name, [=](benchmark::State& state) {
            EncodeAgainst(state, registry, codepage, sample.peer, sample.text);
        });
        Add(std::string("DecodeTable/") + sample.name, [=](benchmark::State& state) {
            DecodeAgainst(state, registry, codepage, sample.peer, sample.text);
        });
    }
    return true;
}();

}  // namespace
