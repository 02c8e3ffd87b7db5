#include <bit>
#include <gtest/gtest.h>
#include <iconv.h>
#include <string>
#include <thread>
#include <vector>

#include "platform/coredll/coredll.h"

namespace {

constexpr DWORD kPreset = 77;

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
    out.resize(good ? out.size() - room : 0);
    return out;
}

const char* const kUtf16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

std::u16string Widen(UINT page, const std::string& text, DWORD flags = 0) {
    std::u16string out(text.size() * 2 + 1, u'#');
    const int count = MultiByteToWideChar(page, flags, text.data(), static_cast<int>(text.size()),
                                          out.data(), static_cast<int>(out.size()));
    out.resize(static_cast<size_t>(count));
    return out;
}

std::string Narrow(UINT page, const std::u16string& text, const char* missing = nullptr,
                   BOOL* used = nullptr) {
    std::string out(text.size() * 3 + 1, '#');
    const int count = WideCharToMultiByte(page, 0, text.data(), static_cast<int>(text.size()),
                                          out.data(), static_cast<int>(out.size()), missing, used);
    out.resize(static_cast<size_t>(count));
    return out;
}

// Both directions of one code agree with the host; false when the host has no meaning for it.
bool AgreesWithHost(UINT page, const char* name, const std::string& code) {
    const std::string wide = HostConvert(kUtf16, name, code);
    if (wide.size() != sizeof(WCHAR))
        return false;
    std::u16string expected(1, u'\0');
    std::copy_n(wide.data(), sizeof(WCHAR), reinterpret_cast<char*>(expected.data()));
    EXPECT_EQ(Widen(page, code), expected) << page;
    EXPECT_EQ(Narrow(page, expected), HostConvert(name, kUtf16, wide)) << page;
    return true;
}

TEST(CodePages, EveryByteOfOneBytePagesIsTheHosts) {
    const struct {
        UINT page;
        const char* name;
        int known;  // of the upper half
    } pages[] = {{437, "CP437", 128},        {850, "CP850", 128},        {852, "CP852", 128},
                 {866, "CP866", 128},        {1250, "CP1250", 123},      {1251, "CP1251", 127},
                 {1252, "CP1252", 123},      {1255, "CP1255", 105},      {1258, "CP1258", 119},
                 {20866, "KOI8-R", 128},     {28591, "ISO-8859-1", 128}, {28597, "ISO-8859-7", 125},
                 {28605, "ISO-8859-15", 128}};
    for (const auto& test : pages) {
        int known = 0;
        for (int byte = 0x80; byte < 0x100; ++byte)
            known += AgreesWithHost(test.page, test.name, std::string(1, static_cast<char>(byte)));
        EXPECT_EQ(known, test.known) << test.page;
        for (char16_t ascii = 0; ascii < 0x80; ++ascii)
            EXPECT_EQ(Widen(test.page, std::string(1, static_cast<char>(ascii))),
                      std::u16string(1, ascii));
    }
}

TEST(CodePages, PairsOfTwoBytePagesAreTheHosts) {
    const struct {
        UINT page;
        const char* name;
    } pages[] = {{932, "CP932"}, {936, "CP936"}, {949, "CP949"}, {950, "CP950"}};
    for (const auto& test : pages) {
        int known = 0;
        for (int lead = 0x81; lead < 0xFF; lead += 5) {
            for (int trail = 0x40; trail < 0xFF; ++trail)
                known += AgreesWithHost(test.page, test.name,
                                        {static_cast<char>(lead), static_cast<char>(trail)});
        }
        EXPECT_GT(known, 1000) << test.page;
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
    for (const char* bad : {"A\x81\xFF", "A\x88"}) {
        SetLastError(kPreset);
        EXPECT_EQ(Widen(932, bad, MB_ERR_INVALID_CHARS), u"");
        EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    }
}

TEST(CodePages, MissingCharactersBecomeTheirBestFitOrTheDefault) {
    const struct {
        UINT page;
        std::u16string text;
        const char* missing;
        std::string expected;
        BOOL used;
    } cases[] = {
        {1251, u"\u00E4", nullptr, "a", FALSE},
        {1252, u"x\u0440", nullptr, "x?", TRUE},
        {1252, u"\u4E2D\u6587", nullptr, "??", TRUE},
        {1252, u"\U0001F600!", "*", "*!", TRUE},
        {1252, u"\xD83D", nullptr, "?", TRUE},
        {1252, u"\u0141\u017E\u20AC", nullptr, "L\x9E\x80", FALSE},
        {437, u"\u2019\uFF21\u00C0\u3000.", nullptr, "'AA .", FALSE},
        {932, u"\u00E9\u0E01", "\x81\xA1", "e\x81\xA1", TRUE},
    };
    for (const auto& test : cases) {
        BOOL used = 99;
        EXPECT_EQ(Narrow(test.page, test.text, test.missing, &used), test.expected);
        EXPECT_EQ(used, test.used) << test.expected;
        used = 99;
        const int needed =
            WideCharToMultiByte(test.page, 0, test.text.data(), static_cast<int>(test.text.size()),
                                nullptr, 0, test.missing, &used);
        EXPECT_EQ(needed, static_cast<int>(test.expected.size()));
        EXPECT_EQ(used, test.used);
    }
}

TEST(Utf8, IllFormedBytesAndLoneSurrogates) {
    const struct {
        std::string bytes;
        std::u16string units;
    } cases[] = {{"\xF0\x9F\x98\x80", u"\U0001F600"},
                 {"\xC0\xAF", u"\uFFFD\uFFFD"},
                 {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
                 {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
                 {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                 {"\xE2\x82"
                  "A",
                  u"\uFFFD"
                  u"A"},
                 {"\xF0\x9F\x98", u"\uFFFD"},
                 {"\x80\xFF", u"\uFFFD\uFFFD"}};
    for (const auto& test : cases) {
        EXPECT_EQ(Widen(CP_UTF8, test.bytes), test.units);
        SetLastError(kPreset);
        const bool good = test.units == u"\U0001F600";
        EXPECT_EQ(Widen(CP_UTF8, test.bytes, MB_ERR_INVALID_CHARS).empty(), !good);
        EXPECT_EQ(GetLastError(), good ? kPreset : ERROR_NO_UNICODE_TRANSLATION);
    }
    EXPECT_EQ(Narrow(CP_UTF8,
                     u"\xDC00"
                     u"A\xD800"),
              "\xEF\xBF\xBD"
              "A\xEF\xBF\xBD");
    for (char32_t value = 1; value < 0x110000; value += value < 0x900 ? 1 : 0x3F1) {
        if (value >= 0xD800 && value < 0xE000)
            continue;
        const std::string bytes = HostConvert(
            "UTF-8", std::endian::native == std::endian::little ? "UTF-32LE" : "UTF-32BE",
            std::string(reinterpret_cast<const char*>(&value), sizeof(value)));
        EXPECT_EQ(Narrow(CP_UTF8, Widen(CP_UTF8, bytes)), bytes);
        EXPECT_EQ(Widen(CP_UTF8, bytes).size(), value < 0x10000 ? 1u : 2u);
    }
}

// What each size of the target gives: the whole, or what fits of it and no half character.
template <typename Unit, typename Convert>
void CheckEverySize(const std::basic_string<Unit>& whole, const std::vector<size_t>& ends,
                    Convert convert) {
    for (size_t size = 0; size <= whole.size() + 2; ++size) {
        std::basic_string<Unit> out(whole.size() + 8, Unit{'#'});
        SetLastError(kPreset);
        const int count = convert(out.data(), static_cast<int>(size));
        const bool fits = size == 0 || size >= whole.size();
        EXPECT_EQ(count, fits ? static_cast<int>(whole.size()) : 0);
        EXPECT_EQ(GetLastError(), fits ? kPreset : ERROR_INSUFFICIENT_BUFFER);
        size_t written = 0;
        for (const size_t end : ends)
            written = end <= size ? end : written;
        EXPECT_EQ(out.substr(0, written), whole.substr(0, written));
        EXPECT_EQ(out.find_first_not_of(Unit{'#'}, written), std::basic_string<Unit>::npos);
    }
}

TEST(Conversion, EverySizeOfTheTarget) {
    const std::string bytes = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u16string wide = u"A\u00E9\u20AC\U0001F600";
    CheckEverySize<char16_t>(wide, {1, 2, 3, 5}, [&](WCHAR* out, int size) {
        return MultiByteToWideChar(CP_UTF8, 0, bytes.data(), 10, out, size);
    });
    CheckEverySize<char>(bytes, {1, 3, 6, 10}, [&](char* out, int size) {
        return WideCharToMultiByte(CP_UTF8, 0, wide.data(), 5, out, size, nullptr, nullptr);
    });
    const std::u16string kana =
        u"a\u30A2\u4E9C"
        u"b";
    CheckEverySize<char>(
        "a\x83\x41\x88\x9F"
        "b",
        {1, 3, 5, 6}, [&](char* out, int size) {
            return WideCharToMultiByte(932, 0, kana.data(), 4, out, size, nullptr, nullptr);
        });
    const std::u16string longer(37, u'x');  // past the runs that are copied in blocks
    std::vector<size_t> ends(37);
    for (size_t i = 0; i < ends.size(); ++i)
        ends[i] = i + 1;
    CheckEverySize<char>(std::string(37, 'x'), ends, [&](char* out, int size) {
        return WideCharToMultiByte(1252, 0, longer.data(), 37, out, size, nullptr, nullptr);
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
    char bytes[8] = "abc";
    WCHAR units[8] = u"abc";
    BOOL used = 99;
    auto* same = reinterpret_cast<char*>(units);
    const auto narrow = [&](UINT page, DWORD flags, const WCHAR* source, int count, char* target,
                            int size, const char* missing, BOOL* flag, DWORD error) {
        SetLastError(kPreset);
        EXPECT_EQ(WideCharToMultiByte(page, flags, source, count, target, size, missing, flag), 0);
        EXPECT_EQ(GetLastError(), error);
    };
    const auto widen = [&](UINT page, DWORD flags, const char* source, int count, WCHAR* target,
                           int size, DWORD error) {
        SetLastError(kPreset);
        EXPECT_EQ(MultiByteToWideChar(page, flags, source, count, target, size), 0);
        EXPECT_EQ(GetLastError(), error);
    };
    for (const UINT page : {UINT{CP_UTF8}, 1252u}) {
        narrow(page, 0, nullptr, 1, bytes, 8, nullptr, nullptr, ERROR_INVALID_PARAMETER);
        narrow(page, 0, units, 0, bytes, 8, nullptr, nullptr, ERROR_INVALID_PARAMETER);
        narrow(page, 0, units, 1, nullptr, 8, nullptr, nullptr, ERROR_INVALID_PARAMETER);
        narrow(page, 0, units, 1, bytes, -1, nullptr, nullptr, ERROR_INVALID_PARAMETER);
        narrow(page, 0, units, 1, same, 8, nullptr, nullptr, ERROR_INVALID_PARAMETER);
        narrow(page, 0x40, units, 1, bytes, 8, nullptr, nullptr, ERROR_INVALID_FLAGS);
        widen(page, 0, bytes, 0, units, 8, ERROR_INVALID_PARAMETER);
        widen(page, 0, bytes, 1, nullptr, 1, ERROR_INVALID_PARAMETER);
        widen(page, 0, same, 1, units, 8, ERROR_INVALID_PARAMETER);
        widen(page, 4, bytes, 1, units, 8, ERROR_INVALID_FLAGS);
    }
    narrow(CP_UTF8, 0, units, 1, bytes, 8, "?", nullptr, ERROR_INVALID_PARAMETER);
    narrow(CP_UTF8, 0, units, 1, bytes, 8, nullptr, &used, ERROR_INVALID_PARAMETER);
    widen(CP_UTF8, MB_PRECOMPOSED, bytes, 1, units, 8, ERROR_INVALID_FLAGS);
    for (const UINT page : {2u, 42u, 1000u, UINT{CP_UTF7}}) {
        narrow(page, 0, units, 1, bytes, 8, nullptr, nullptr, ERROR_INVALID_PARAMETER);
        widen(page, 0, bytes, 1, units, 8, ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(used, 99);
}

TEST(CodePages, FirstUseByManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] { EXPECT_EQ(Narrow(1361, u"\uAC00"), "\x88\x61"); });
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
