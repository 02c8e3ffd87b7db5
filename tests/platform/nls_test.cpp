#include <bit>
#include <gtest/gtest.h>
#include <iconv.h>
#include <thread>
#include <vector>

#include "platform/coredll/coredll.h"

namespace {

constexpr DWORD kPreset = 77;
constexpr bool kLittle = std::endian::native == std::endian::little;
const char* const kUtf16 = kLittle ? "UTF-16LE" : "UTF-16BE";

// What the host makes of one character, in the naive way; empty for none.
std::string HostConvert(const char* to, const char* from, std::string in) {
    const iconv_t handle = iconv_open(to, from);
    std::string out(16, '\0');
    char* source = in.data();
    char* target = out.data();
    size_t left = in.size();
    size_t room = out.size();
    const bool good = iconv(handle, &source, &left, &target, &room) == 0 &&
                      iconv(handle, nullptr, nullptr, &target, &room) == 0;
    iconv_close(handle);
    return out.substr(0, good ? out.size() - room : 0);
}

std::u16string Widen(UINT page, const std::string& text, DWORD flags = 0) {
    std::u16string out(text.size() * 2 + 1, u'#');
    const int count = MultiByteToWideChar(page, flags, text.data(), static_cast<int>(text.size()),
                                          out.data(), static_cast<int>(out.size()));
    return out.substr(0, static_cast<size_t>(count));
}

std::string Narrow(UINT page, const std::u16string& text, const char* missing = nullptr,
                   BOOL* used = nullptr) {
    const int length = static_cast<int>(text.size());
    std::string out(text.size() * 3 + 1, '#');
    const int count = WideCharToMultiByte(page, 0, text.data(), length, out.data(),
                                          static_cast<int>(out.size()), missing, used);
    EXPECT_EQ(WideCharToMultiByte(page, 0, text.data(), length, nullptr, 0, missing, used), count);
    return out.substr(0, static_cast<size_t>(count));
}

TEST(CodePages, EveryByteAndPairIsTheHosts) {
    const struct {
        UINT page;
        const char* name;
        int least;  // of single bytes from 80 up and every fifth first byte's pairs
    } pages[] = {{437, "CP437", 128},        {850, "CP850", 128},        {866, "CP866", 128},
                 {1250, "CP1250", 123},      {1251, "CP1251", 127},      {1252, "CP1252", 123},
                 {1255, "CP1255", 105},      {1258, "CP1258", 119},      {20866, "KOI8-R", 128},
                 {28591, "ISO-8859-1", 128}, {28597, "ISO-8859-7", 125}, {932, "CP932", 1400},
                 {936, "CP936", 4000},       {949, "CP949", 3000},       {950, "CP950", 2500}};
    for (const auto& test : pages) {
        int known = 0;
        const int end = test.page >= 932 && test.page <= 950 ? 0x10000 : 0x100;
        for (int code = 0x80; code < end; ++code) {
            if (code >= 0x100 && (code < 0x8000 || code / 0x100 % 5 != 0))
                continue;
            std::string bytes(1, static_cast<char>(code));
            if (code >= 0x100)
                bytes.insert(bytes.begin(), static_cast<char>(code >> 8));
            const std::string wide = HostConvert(kUtf16, test.name, bytes);
            if (wide.size() != sizeof(WCHAR))
                continue;
            std::u16string expected(1, u'\0');
            std::copy_n(wide.data(), sizeof(WCHAR), reinterpret_cast<char*>(expected.data()));
            EXPECT_EQ(Widen(test.page, bytes), expected) << test.page;
            EXPECT_EQ(Narrow(test.page, expected), HostConvert(test.name, kUtf16, wide));
            ++known;
        }
        EXPECT_GE(known, test.least) << test.page;
    }
}

TEST(CodePages, BytesThatThePageLacks) {
    EXPECT_EQ(Widen(CP_ACP, "\x81\x8D\x8F\x90\x9D"), u"\u0081\u008D\u008F\u0090\u009D");
    EXPECT_EQ(Narrow(1252, u"\u0081\u009D\u20AC"), "\x81\x9D\x80");
    EXPECT_EQ(Widen(CP_OEMCP, "\x81"), u"\u00FC");
    EXPECT_EQ(Widen(1253, "\xAA"), u"\uFFFD");
    // A bad pair takes its second byte with it, but never an ASCII one; so does a lone first byte.
    EXPECT_EQ(Widen(932,
                    "\x81\xFFz\x81"
                    "1\x88"),
              u"\uFFFDz\uFFFD1\uFFFD");
    EXPECT_EQ(Widen(932, "A\x88", MB_ERR_INVALID_CHARS), u"");
    EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
}

TEST(CodePages, MissingCharactersBecomeTheirBestFitOrTheDefault) {
    const struct {
        UINT page;
        std::u16string text;
        const char* missing;
        std::string expected;
        BOOL used;
    } cases[] = {{1251, u"\u00E4", nullptr, "a", FALSE},
                 {1252, u"x\u0440", nullptr, "x?", TRUE},
                 {1252, u"\u4E2D\u6587", nullptr, "??", TRUE},
                 {1252, u"\U0001F600\xD83D", "*", "**", TRUE},
                 {1252, u"\u0141\u017E\u20AC", nullptr, "L\x9E\x80", FALSE},
                 {437, u"\u2019\uFF21\u00C0\u3000.", nullptr, "'AA .", FALSE},
                 {932, u"\u00E9\u0E01", "\x81\xA1", "e\x81\xA1", TRUE}};
    for (const auto& test : cases) {
        BOOL used = 99;
        EXPECT_EQ(Narrow(test.page, test.text, test.missing, &used), test.expected);
        EXPECT_EQ(used, test.used) << test.expected;
    }
}

TEST(CodePages, FirstUseByManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] { EXPECT_EQ(Narrow(1361, u"\uAC00"), "\x88\x61"); });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Utf8, CharactersAndFaults) {
    for (char32_t value = 1; value < 0x110000; value += value < 0x900 ? 1 : 0x3F1) {
        const std::string bytes =
            HostConvert("UTF-8", kLittle ? "UTF-32LE" : "UTF-32BE",
                        std::string(reinterpret_cast<const char*>(&value), sizeof(value)));
        const std::u16string units = Widen(CP_UTF8, bytes + ".", MB_ERR_INVALID_CHARS);
        EXPECT_EQ(Narrow(CP_UTF8, units), bytes + ".");
        EXPECT_EQ(units.size(), bytes.empty() ? 1u : value < 0x10000 ? 2u : 3u);
    }
    const struct {
        std::string bytes;
        size_t faults;
    } bad[] = {{"\xC0\xAF", 2},         {"\xE0\x80\x80", 3}, {"\xED\xA0\x80", 3}, {"\xE2\x82", 1},
               {"\xF4\x90\x80\x80", 4}, {"\xF0\x9F\x98", 1}, {"\x80\xFF", 2}};
    for (const auto& test : bad) {
        EXPECT_EQ(Widen(CP_UTF8, test.bytes + "A"), std::u16string(test.faults, u'\uFFFD') + u'A');
        SetLastError(kPreset);
        EXPECT_EQ(Widen(CP_UTF8, test.bytes, MB_ERR_INVALID_CHARS), u"");
        EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    }
    EXPECT_EQ(Narrow(CP_UTF8,
                     u"\xDC00"
                     u"A\xD800"),
              "\xEF\xBF\xBD"
              "A\xEF\xBF\xBD");
}

// What each size of the target gives: the whole, or what fits of it and no half character. `ends`
// tells where characters end.
template <class Unit, class Convert>
void CheckEverySize(const std::basic_string<Unit>& whole, const std::vector<size_t>& ends,
                    Convert convert) {
    for (size_t size = 0; size <= whole.size() + 2; ++size) {
        std::basic_string<Unit> out(whole.size() + 8, Unit{'#'});
        SetLastError(kPreset);
        const bool fits = size == 0 || size >= whole.size();
        EXPECT_EQ(convert(out.data(), static_cast<int>(size)), fits ? int(whole.size()) : 0);
        EXPECT_EQ(GetLastError(), fits ? kPreset : ERROR_INSUFFICIENT_BUFFER);
        size_t written = 0;
        for (const size_t end : ends)
            written = end <= size ? end : written;
        EXPECT_EQ(out,
                  whole.substr(0, written) + std::basic_string<Unit>(out.size() - written, '#'));
    }
}

TEST(Conversion, EverySizeOfTheTarget) {
    const std::string bytes = "0123456789abcdefA\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u16string wide = u"0123456789abcdefA\u00E9\u20AC\U0001F600";
    std::vector<size_t> ends(17);
    for (size_t i = 0; i < ends.size(); ++i)
        ends[i] = i + 1;
    std::vector<size_t> wide_ends = ends;
    ends.insert(ends.end(), {19, 22, 26});
    wide_ends.insert(wide_ends.end(), {18, 19, 21});
    CheckEverySize<char16_t>(wide, wide_ends, [&](WCHAR* out, int size) {
        return MultiByteToWideChar(CP_UTF8, 0, bytes.data(), 26, out, size);
    });
    CheckEverySize<char>(bytes, ends, [&](char* out, int size) {
        return WideCharToMultiByte(CP_UTF8, 0, wide.data(), 21, out, size, nullptr, nullptr);
    });
    CheckEverySize<char>(
        "a\x83\x41\x88\x9F"
        "b",
        {1, 3, 5, 6}, [](char* out, int size) {
            return WideCharToMultiByte(932, 0,
                                       u"a\u30A2\u4E9C"
                                       u"b",
                                       4, out, size, nullptr, nullptr);
        });
}

TEST(Conversion, CountsTakeTheNulOrExactlySoMany) {
    for (const UINT page : {UINT{CP_UTF8}, UINT{CP_ACP}}) {
        char out[8] = "#######";
        EXPECT_EQ(WideCharToMultiByte(page, 0, u"ab\0c", -1, out, 8, nullptr, nullptr), 3);
        EXPECT_EQ(std::string(out, 4), std::string("ab\0#", 4));
        EXPECT_EQ(WideCharToMultiByte(page, 0, u"ab\0c", 4, out, 4, nullptr, nullptr), 4);
        EXPECT_EQ(std::string(out, 5), std::string("ab\0c#", 5));
        WCHAR wide[8] = u"#######";
        EXPECT_EQ(MultiByteToWideChar(page, 0, "ab\0c", -7, wide, 3), 3);
        EXPECT_EQ(std::u16string(wide, 4), std::u16string(u"ab\0#", 4));
    }
}

TEST(Conversion, ArgumentsThatAreRefused) {
    WCHAR units[8] = u"abc";
    char bytes[8] = "abc";
    auto* same = reinterpret_cast<char*>(units);
    BOOL used = 99;
    const struct {
        UINT page;
        DWORD flags;
        char* bytes;
        WCHAR* units;
        int count;
        int size;
        DWORD error;
    } cases[] = {{1252, 0, bytes, nullptr, 1, 8, 87}, {1252, 0, nullptr, units, 1, 8, 87},
                 {1252, 0, bytes, units, 0, 8, 87},   {CP_UTF8, 0, bytes, units, 1, -1, 87},
                 {CP_UTF8, 0, same, units, 1, 8, 87}, {1000, 0, bytes, units, 1, 8, 87},
                 {2, 0, bytes, units, 1, 8, 87},      {65000, 0, bytes, units, 1, 8, 87},
                 {1252, 4, bytes, units, 1, 8, 1004}, {CP_UTF8, 1, bytes, units, 1, 8, 1004}};
    for (const auto& test : cases) {
        SetLastError(kPreset);
        EXPECT_EQ(WideCharToMultiByte(test.page, test.flags, test.units, test.count, test.bytes,
                                      test.size, nullptr, nullptr),
                  0);
        EXPECT_EQ(GetLastError(), test.error);
        SetLastError(kPreset);
        EXPECT_EQ(MultiByteToWideChar(test.page, test.flags, test.bytes, test.count, test.units,
                                      test.size),
                  0);
        EXPECT_EQ(GetLastError(), test.error);
    }
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, units, 1, bytes, 8, "?", nullptr), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, units, 1, bytes, 8, nullptr, &used), 0);
    EXPECT_EQ(used, 99);
}

}  // namespace
