// The library's conversions against a plain copy, iconv and ICU on the same texts. The peers keep
// their converters from call to call.

#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <memory>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <vector>

#include "bench/contest.h"
#include "common/text/codepage.h"

namespace zelto::bench {
namespace {

constexpr int32_t kUtf8 = 65001;

class Iconv {
  public:
    Iconv(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {}
    ~Iconv() { iconv_close(descriptor_); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

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

// UTF-8 has functions of its own there, which are the faster ones.
class Icu {
  public:
    explicit Icu(const char* page) {
        if (std::strcmp(page, "UTF-8") != 0)
            converter_ = ucnv_open(page, &error_);
    }
    ~Icu() { ucnv_close(converter_); }
    Icu(const Icu&) = delete;
    Icu& operator=(const Icu&) = delete;

    void operator()(const std::u16string& text, std::vector<char>& out) {
        const auto room = static_cast<int32_t>(out.size());
        const auto size = static_cast<int32_t>(text.size());
        int32_t count = 0;
        if (converter_ != nullptr)
            count = ucnv_fromUChars(converter_, out.data(), room, text.data(), size, &error_);
        else
            u_strToUTF8(out.data(), room, &count, text.data(), size, &error_);
        Check(count);
    }

    void operator()(const std::string& text, std::vector<char16_t>& out) {
        const auto room = static_cast<int32_t>(out.size());
        const auto size = static_cast<int32_t>(text.size());
        int32_t count = 0;
        if (converter_ != nullptr)
            count = ucnv_toUChars(converter_, out.data(), room, text.data(), size, &error_);
        else
            u_strFromUTF8(out.data(), room, &count, text.data(), size, &error_);
        Check(count);
    }

  private:
    void Check(int32_t count) const {
        if (U_FAILURE(error_) || count == 0)
            std::abort();
    }

    UErrorCode error_ = U_ZERO_ERROR;
    UConverter* converter_ = nullptr;
};

// `sample` again and again, without half a pair at the end.
std::u16string Repeat(const char16_t* sample, size_t length) {
    std::u16string text;
    while (text.size() < length)
        text += sample;
    text.resize(length);
    if ((text.back() & 0xFC00) == 0xD800)
        text.back() = u'.';
    return text;
}

std::string Narrow(const char* page, const std::u16string& text) {
    std::vector<char> bytes(text.size() * 4 + 1);
    auto* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
    size_t in_left = text.size() * sizeof(char16_t);
    char* to = bytes.data();
    size_t out_left = bytes.size();
    const iconv_t descriptor = iconv_open(page, "UTF-16LE");
    iconv(descriptor, &in, &in_left, &to, &out_left);
    iconv_close(descriptor);
    return {bytes.data(), to};
}

template <class Work>
std::function<void()> Often(int64_t times, Work work) {
    return [=] {
        for (int64_t i = 0; i < times; ++i) {
            work();
            benchmark::ClobberMemory();
        }
    };
}

int64_t Times(size_t units) {
    return 1 + static_cast<int64_t>(1'500'000 / units);
}

struct Page {
    CodepageRegistry* registry;
    int32_t codepage;
    const char* name;
};

void Encode(benchmark::State& state, const Page& page, const std::u16string& text,
            const char* goal) {
    std::vector<char> out(text.size() * 4 + 1);
    Iconv by_iconv(page.name, "UTF-16LE");
    Icu by_icu(page.name);
    const int64_t times = Times(text.size());
    const auto size = static_cast<int>(text.size());
    const auto room = static_cast<int>(out.size()) - 1;
    Contest(
        state, static_cast<double>(times) * size, goal,
        {{"ours", Often(times,
                        [&] {
                            benchmark::DoNotOptimize(WideToNarrow(
                                page.registry, page.codepage, text.data(), size, out.data(), room));
                        })},
         {"copy", Often(times, [&] { std::memcpy(out.data(), text.data(), text.size()); })},
         {"iconv", Often(times, [&] { by_iconv(text, out); })},
         {"ICU", Often(times, [&] { by_icu(text, out); })}});
}

void Decode(benchmark::State& state, const Page& page, const std::string& text, const char* goal) {
    std::vector<char16_t> out(text.size() + 1);
    Iconv by_iconv("UTF-16LE", page.name);
    Icu by_icu(page.name);
    const int64_t times = Times(text.size());
    const auto size = static_cast<int>(text.size());
    Contest(
        state, static_cast<double>(times) * size, goal,
        {{"ours", Often(times,
                        [&] {
                            benchmark::DoNotOptimize(NarrowToWide(
                                page.registry, page.codepage, text.data(), size, out.data(), size));
                        })},
         {"copy", Often(times, [&] { std::memcpy(out.data(), text.data(), text.size()); })},
         {"iconv", Often(times, [&] { by_iconv(text, out); })},
         {"ICU", Often(times, [&] { by_icu(text, out); })}});
}

// The page as the system knows it.
CodepageRegistry* RegistryOf(uint32_t codepage) {
    auto record = std::make_unique<CodepageTable>();
    record->identifier = codepage;
    record->page_count = 1;
    for (int i = 0; i < kTablePageSize; ++i) {
        const char byte = static_cast<char>(kTablePageSize + i);
        WCHAR unit = 0;
        MultiByteToWideChar(codepage, 0, &byte, 1, &unit, 1);
        record->mapping[i] = unit;
    }
    auto* registry = new CodepageRegistry;  // for as long as the program
    registry->RegisterTable(record.get(), -1);
    return registry;
}

struct Sample {
    const char* name;
    int32_t codepage;
    const char* page;
    const char16_t* text;
};

constexpr Sample kSamples[] = {
    {"UTF-8 ASCII", kUtf8, "UTF-8",
     u"Turn left in 300 metres into Harbour Street, then keep right. "},
    {"UTF-8 Latin", kUtf8, "UTF-8",
     u"Gire a la izquierda, señal de atención en el cruce próximo. Año 2010. "},
    {"UTF-8 Arabic", kUtf8, "UTF-8", u"انعطف يسارا بعد ثلاثمائة متر ثم الزم اليمين حتى التقاطع "},
    {"UTF-8 CJK", kUtf8, "UTF-8", u"前方三百米处左转进入海港街然后靠右行驶直到下一个路口"},
    {"UTF-8 emoji", kUtf8, "UTF-8", u"\U0001F600\U0001F697\U0001F6A6\U0001F5FA"},
    {"1252 Latin", 1252, "CP1252",
     u"Gire a la izquierda, señal de atención en el cruce próximo. Año 2010. "},
    {"1251 Cyrillic", 1251, "CP1251",
     u"Через триста метров поверните налево, затем держитесь правее. "},
    {"1256 Arabic", 1256, "CP1256", u"انعطف يسارا بعد ثلاثمائة متر ثم الزم اليمين حتى التقاطع "},
};

const char* Goal(const Sample& sample, size_t length, bool decode) {
    if (sample.codepage != kUtf8)
        return length < 256 ? "0.83 iconv" : "0.5 iconv";
    const bool ascii = std::strcmp(sample.name, "UTF-8 ASCII") == 0;
    if (decode && ascii && length >= 32)
        return "0.17 iconv";
    return "1 ICU";
}

const bool kAdded = [] {
    static CodepageRegistry empty;
    for (const Sample& sample : kSamples) {
        CodepageRegistry* registry =
            sample.codepage == kUtf8 ? &empty : RegistryOf(sample.codepage);
        const Page page{registry, sample.codepage, sample.page};
        for (const size_t length : {8, 32, 256, 4096, 1 << 20}) {
            const std::u16string text = Repeat(sample.text, length);
            const std::string tail =
                std::string("/") + sample.name + "/" + std::to_string(length) + " units";
            AddRow("to UTF-16" + tail, [=](benchmark::State& state) {
                Decode(state, page, Narrow(page.name, text), Goal(sample, length, true));
            });
            AddRow("from UTF-16" + tail, [=](benchmark::State& state) {
                Encode(state, page, text, Goal(sample, length, false));
            });
        }
    }
    return true;
}();

}  // namespace
}  // namespace zelto::bench
