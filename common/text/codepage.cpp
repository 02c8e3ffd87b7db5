// The ways of converting, one after another, and the small questions about codepages.

#include "common/text/codepage.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>

#include "common/text/utf8.h"

namespace zelto {
namespace {

constexpr int32_t kUtf8 = CP_UTF8;
constexpr int kMostUnits = std::numeric_limits<int>::max() - 1;  // a NUL can still be counted

const CodepageTable* FindTable(CodepageRegistry* registry, int32_t codepage) {
    const int32_t index = registry != nullptr ? registry->FindTable(codepage) : -1;
    return index >= 0 ? &registry->Table(index) : nullptr;
}

// One conversion: `count` as it was asked for, `length` what it comes to. Measures when `out` is
// null.
template <class Source, class Target>
struct Job {
    int32_t codepage;
    const Source* text;
    int count;
    int length;
    Target* out;
    int out_size;

    // For the ways that write unit by byte or byte by unit. A result of 0 is a text too long.
    template <class Convert>
    int OneToOne(int result, Convert convert) const {
        if (out == nullptr)
            return length + 1;
        if (length > out_size)
            return 0;
        convert();
        out[length] = 0;
        return result;
    }
    int Terminated(int written) const {
        if (out != nullptr)
            out[std::max(written, 0)] = 0;
        return written;
    }
};

using NarrowJob = Job<WCHAR, char>;
using WideJob = Job<char, WCHAR>;

int ByTable(const CodepageTable& table, const NarrowJob& job) {
    return job.OneToOne(job.length, [&] { EncodeByTable(table, job.text, job.length, job.out); });
}

int ByTable(const CodepageTable& table, const WideJob& job) {
    return job.OneToOne(job.length + 1, [&] {
        if (DecodeByTable(table, job.text, job.length, job.out) == 0)
            job.out[0] = 0;
    });
}

int ByUtf8(const NarrowJob& job) {
    return EncodeUtf8(job.text, job.length, job.out, job.out_size);
}

int ByUtf8(const WideJob& job) {
    return DecodeUtf8(job.text, job.length, job.out, job.out_size);
}

int BySystem(const NarrowJob& job) {
    return job.Terminated(WideCharToMultiByte(static_cast<UINT>(job.codepage), 0, job.text,
                                              job.count, job.out, job.out_size, nullptr, nullptr));
}

int BySystem(const WideJob& job) {
    return job.Terminated(MultiByteToWideChar(static_cast<UINT>(job.codepage), 0, job.text,
                                              job.count, job.out, job.out_size));
}

char LowByte(WCHAR unit) {
    const auto low = static_cast<unsigned char>(unit);
    return low == 0 && unit != 0 ? '?' : static_cast<char>(low);
}

WCHAR SignedByte(char byte) {
    return static_cast<WCHAR>(static_cast<signed char>(byte));
}

int ByLowBytes(const NarrowJob& job) {
    return job.OneToOne(job.length + 1,
                        [&] { std::transform(job.text, job.text + job.length, job.out, LowByte); });
}

int ByLowBytes(const WideJob& job) {
    return job.OneToOne(job.length + 1, [&] {
        std::transform(job.text, job.text + job.length, job.out, SignedByte);
    });
}

template <class AnyJob>
int Convert(const CodepageTable* table, const AnyJob& job) {
    int result = table != nullptr ? ByTable(*table, job) : 0;
    if (result == 0 && job.codepage == kUtf8)
        result = ByUtf8(job);
    if (result == 0)
        result = BySystem(job);
    if (result == 0)
        result = ByLowBytes(job);
    return result;
}

template <class Target>
int PutEmpty(Target* out) {
    if (out != nullptr)
        *out = 0;
    return 1;
}

int ByteCount(const char* text, int count) {
    if (count < 0)
        return static_cast<int>(std::min<size_t>(std::strlen(text), kMostUnits));
    return std::min(count, kMostUnits);
}

}  // namespace

void SetCurrentCodepage(int32_t codepage) {
    detail::current_codepage.store(codepage, std::memory_order_relaxed);
}

CodepageRegistry*& GlobalCodepageRegistry() {
    static CodepageRegistry* registry = nullptr;
    return registry;
}

int UnitCount(const WCHAR* text, int count) {
    if (text == nullptr)
        return 0;
    if (count < 0)
        return static_cast<int>(std::min<size_t>(wcslen(text), kMostUnits));
    return std::min(count, kMostUnits);
}

int WideToNarrow(CodepageRegistry* registry, int32_t codepage, const WCHAR* text, int count,
                 char* out, int out_size) {
    if (out_size <= 0)
        out = nullptr;
    if (text == nullptr || count == 0)
        return PutEmpty(out);
    const int length = UnitCount(text, count);
    const NarrowJob job{codepage, text, count, length, out, out != nullptr ? out_size : 0};
    return Convert(FindTable(registry, codepage), job);
}

int NarrowToWide(CodepageRegistry* registry, int32_t codepage, const char* text, int count,
                 WCHAR* out, int out_size) {
    if (out_size <= 0)
        out = nullptr;
    if (text == nullptr || count == 0 || (out != nullptr && count < 0))
        return PutEmpty(out);
    const int length = ByteCount(text, count);
    const WideJob job{codepage, text, count, length, out, out != nullptr ? out_size : 0};
    return Convert(FindTable(registry, codepage), job);
}

std::basic_string<WCHAR> ToWide(const char* text, int count, int32_t codepage) {
    CodepageRegistry* registry = GlobalCodepageRegistry();
    const int units = std::max(0, NarrowToWide(registry, codepage, text, count, nullptr, 0));
    std::basic_string<WCHAR> wide(static_cast<size_t>(units) + 1, 0);
    NarrowToWide(registry, codepage, text, count, wide.data(), units + 1);
    wide.resize(wcslen(wide.c_str()));
    return wide;
}

uint32_t MapCharacter(uint32_t value, int32_t codepage) {
    constexpr uint32_t kUnknown = '?';
    const CodepageTable* table =
        FindTable(GlobalCodepageRegistry(), codepage < 1 ? CurrentCodepage() : codepage);
    if (table == nullptr || value < kTablePageSize)
        return value;
    const uint8_t byte = value <= 0xFFFF ? FindTableByte(*table, static_cast<uint16_t>(value)) : 0;
    return byte != 0 ? byte : kUnknown;
}

int32_t CodepageFromName(const DString& name) {
    constexpr int32_t kLatin1 = 28591;
    if (name.compare("UTF-8") == 0)
        return kUtf8;
    return name.compare("ISO-8859-1") == 0 ? kLatin1 : -1;
}

DString CodepageName(int32_t codepage) {
    return codepage == kUtf8 ? DString("UTF-8") : DString();
}

}  // namespace zelto
