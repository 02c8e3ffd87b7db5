// Conversions and texts.

#include <algorithm>

#include "tests/platform/answers.h"

namespace zelto::test {
namespace {

// The result and what was written into `size` units, measured and converted. "default": used.
std::string Narrow(UINT page, const std::u16string& text, const char* missing = nullptr,
                   int size = 16) {
    std::string out(16, '#');
    BOOL used = FALSE;
    BOOL* told = page == CP_UTF8 ? nullptr : &used;
    const int count = static_cast<int>(text.size());
    const int measured =
        WideCharToMultiByte(page, 0, text.c_str(), count, nullptr, 0, missing, told);
    SetLastError(kUntouched);
    const int result =
        WideCharToMultiByte(page, 0, text.c_str(), count, out.data(), size, missing, told);
    EXPECT_TRUE(result == 0 || result == measured);
    return Answer(result, out.substr(0, out.find('#')) + (used ? " default" : ""));
}

std::string Hex(const std::u16string& units) {
    std::string text;
    for (const char16_t unit : units) {
        for (int shift = 12; shift >= 0; shift -= 4)
            text += "0123456789ABCDEF"[unit >> shift & 15];
        text += ' ';
    }
    return text;
}

std::string Widen(UINT page, const std::string& bytes, DWORD flags = 0, int size = 16) {
    std::u16string out(16, u'#');
    SetLastError(kUntouched);
    const int result = MultiByteToWideChar(page, flags, bytes.c_str(),
                                           static_cast<int>(bytes.size()), out.data(), size);
    return Answer(result, Hex(out.substr(0, out.find(u'#'))));
}

TEST(Platform, NarrowText) {
    CheckRows({
        {CALL(Narrow(1251, u"\u00E4")), "1 a"},
        {CALL(Narrow(1252, u"x\u0440")), "2 x? default"},
        {CALL(Narrow(1252, u"\u4E2D\u6587", "*")), "2 ** default"},
        {CALL(Narrow(1252, u"\u03A9\u221E\u0300\u0110\u0141")), "5 O8`\xD0L"},
        {CALL(Narrow(1252, u"\u0081\u009D\u20AC\u017E")), "4 \x81\x9D\x80\x9E"},
        {CALL(Narrow(CP_ACP, u"\uFF21\uFF5E\u3000.")), "4 A~ ."},
        {CALL(Narrow(1253, u"\uF8F9")), "1 \xAA"},
        {CALL(Narrow(1257, u"\u00D1")), "1 ? default"},
        {CALL(Narrow(CP_OEMCP, u"\u00C0\u1EA4\uFF21")), "3 AAA"},
        {CALL(Narrow(437, u"\u2019\u0142\u212B")), "3 ??A default"},
        {CALL(Narrow(20866, u"\u0451\u0439\u045D")), "3 \xA3\xCA\xC9"},
        {CALL(Narrow(857, u"\uF7D5")), "1 \xD5", "the private-use unit is our choice"},
        // A pair is two characters that an 8-bit page lacks.
        {CALL(Narrow(1252, u"\U0001F600\xD83D")), "3 ??? default"},
        {CALL(Narrow(1252, u"\U0001F600", nullptr, 1)), "0 error 122 ? default"},
        {CALL(Narrow(CP_UTF8, u"\u00F1\u20AC")), "5 \xC3\xB1\xE2\x82\xAC"},
        {CALL(Narrow(CP_UTF8, u"\U0001F600")), "4 \xF0\x9F\x98\x80"},
        {CALL(Narrow(CP_UTF8,
                     u"\xDC00"
                     "A\xD800")),
         "7 \xEF\xBF\xBD"
         "A\xEF\xBF\xBD",
         "as newer systems; the device's own is not documented"},
        {CALL(Narrow(CP_UTF8, u"a\u20AC", nullptr, 3)), "0 error 122 a"},
        {CALL(Narrow(CP_UTF8, u"a", "?")), "0 error 87"},
        {CALL(Narrow(1252, u"abc", nullptr, 3)), "3 abc"},
        {CALL(Narrow(1252, u"abc", nullptr, 2)), "0 error 122 ab"},
        {CALL(Narrow(1252, u"")), "0 error 87"},
        {CALL(Narrow(1252, u"a", nullptr, -1)), "0 error 87"},
        {CALL(Narrow(1000, u"a")), "0 error 87"},
        {CALL(Narrow(65000, u"a")), "0 error 87", "UTF-7 is not offered"},
    });
}

// The host's converters make these.
TEST(Platform, TextOfTwoBytePages) {
    CheckRows({
        {CALL(Narrow(932, u"\u30A2\u00E9\u0E01", "\x81\xA1")),
         "5 \x83\x41"
         "e\x81\xA1 default"},
        {CALL(All({Narrow(936, u"\u4E00"), Narrow(949, u"\uAC00")})), "2 \xD2\xBB, 2 \xB0\xA1"},
        {CALL(All({Narrow(950, u"\u4E00"), Narrow(1361, u"\uAC00")})), "2 \xA4\x40, 2 \x88\x61"},
        {CALL(Widen(932, "\x83\x41")), "1 30A2 "},
        // A bad pair takes its second byte with it, but never an ASCII one; so does a lone first.
        {CALL(Widen(932,
                    "\x81\xFFz\x81"
                    "1\x88")),
         "5 FFFD 007A FFFD 0031 FFFD "},
        {CALL(Widen(932, "A\x88", MB_ERR_INVALID_CHARS)), "0 error 1113 0041 "},
    });
}

TEST(Platform, WideText) {
    CheckRows({
        {CALL(Widen(CP_ACP, "\x80\x81\xFF")), "3 20AC 0081 00FF "},
        {CALL(Widen(CP_OEMCP, "\x81\xE3")), "2 00FC 03C0 "},
        {CALL(Widen(1253, "\xAA")), "1 F8F9 "},
        {CALL(Widen(1253, "\xAA", MB_ERR_INVALID_CHARS)), "0 error 1113"},
        {CALL(Widen(857, "\xD5")), "1 F7D5 ", "the private-use unit is our choice"},
        {CALL(Widen(1255, "\xCA\xD9")), "2 05BA F88D "},
        {CALL(Widen(21866, "\x95\xA4")), "2 2219 0454 "},
        {CALL(Widen(28597, "\xA1\xA4\xAA")), "3 2018 20AC 037A "},
        {CALL(Widen(CP_UTF8, "\xC3\xB1\xF0\x9F\x98\x80")), "3 00F1 D83D DE00 "},
        {CALL(Widen(CP_UTF8, "\xE2\x82")), "1 FFFD "},
        {CALL(Widen(CP_UTF8, "\xC0\xAF")), "2 FFFD FFFD "},
        {CALL(Widen(CP_UTF8, "\xED\xA0\x80")), "3 FFFD FFFD FFFD "},
        {CALL(Widen(CP_UTF8, "\xF4\x90\x80\x80")), "4 FFFD FFFD FFFD FFFD "},
        {CALL(Widen(CP_UTF8,
                    "\xF0\x9F\x98"
                    "A")),
         "2 FFFD 0041 "},
        {CALL(Widen(CP_UTF8, "\x80", MB_ERR_INVALID_CHARS)), "0 error 1113"},
        {CALL(Widen(1252, "ab", MB_PRECOMPOSED)), "2 0061 0062 "},
        {CALL(Widen(CP_UTF8, "ab", MB_PRECOMPOSED)), "0 error 1004"},
        {CALL(Widen(1252, "ab", 4)), "0 error 1004"},
        {CALL(Widen(1252, "ab", 0, 1)), "0 error 122 0061 "},
        {CALL(Widen(1252, "ab", 0, -1)), "0 error 87"},
        {CALL(Widen(1252, "")), "0 error 87"},
        {CALL(Widen(2, "a")), "0 error 87"},
    });
}

TEST(Platform, TextArguments) {
    WCHAR units[8] = u"ab\0c";
    char bytes[8] = "ab\0c";
    auto* same = reinterpret_cast<char*>(units);
    BOOL used = 99;
    const auto narrow = [&](const WCHAR* text, int count, char* out, int size, DWORD flags = 0) {
        SetLastError(kUntouched);
        return Answer(WideCharToMultiByte(1252, flags, text, count, out, size, nullptr, nullptr));
    };
    const auto widen = [&](const char* text, int count, WCHAR* out, int size) {
        SetLastError(kUntouched);
        return Answer(MultiByteToWideChar(1252, 0, text, count, out, size));
    };
    CheckRows({
        {CALL(narrow(units, -1, bytes, 8)), "3"},
        {CALL(narrow(units, 4, bytes, 4)), "4"},
        {CALL(narrow(units, 4, bytes, 0)), "4"},
        {CALL(narrow(nullptr, 1, bytes, 8)), "0 error 87"},
        {CALL(narrow(units, 1, nullptr, 8)), "0 error 87"},
        {CALL(narrow(units, 1, same, 8)), "0 error 87"},
        {CALL(narrow(units, 1, bytes, 8, 4)), "0 error 1004"},
        {CALL(widen(bytes, -7, units, 3)), "3"},
        {CALL(widen(bytes, 4, units, 4)), "4"},
        {CALL(widen(nullptr, 1, units, 8)), "0 error 87"},
        {CALL(widen(bytes, 1, nullptr, 8)), "0 error 87"},
        {CALL(widen(same, 1, units, 8)), "0 error 87"},
        {CALL(Answer(WideCharToMultiByte(CP_UTF8, 0, units, 1, bytes, 8, nullptr, &used))),
         "0 error 87"},
    });
    EXPECT_EQ(used, 99);
}

TEST(Platform, RunTimeTexts) {
    const auto sign = [](int value) { return std::to_string((value > 0) - (value < 0)); };
    const auto format = [](size_t size, const char* text, ...) {
        std::string out(48, '.');
        va_list arguments;
        va_start(arguments, text);
        const int result = _vsnprintf(out.data(), size, text, arguments);
        va_end(arguments);
        std::replace(out.begin(), out.end(), '\0', '$');  // the end that was written
        return std::to_string(result) + ' ' + out.substr(0, out.find_last_not_of('.') + 1);
    };
    CheckRows({
        {CALL(All(
             {sign(_stricmp("ABC", "abc")), sign(_stricmp("", "a")), sign(_stricmp("a", "AB"))})),
         "0, -1, -1"},
        {CALL(All({sign(_stricmp("_", "A")), sign(_stricmp("z", "\x80"))})), "-1, -1"},
        {CALL(sign(_stricmp("\xC4", "\xE4"))), "-1"},
        {CALL(All({sign(_strnicmp("abX", "ABy", 2)), sign(_strnicmp("abX", "ABy", 3))})), "0, -1"},
        {CALL(All({sign(_strnicmp("a", "b", 0)), sign(_strnicmp("a\0x", "a\0y", 3))})), "0, 0"},
        {CALL(format(48, "%I64d|%d", -7LL, 5)), "4 -7|5$"},
        {CALL(format(48, "%-4I64i|%+05I64d|%I64x", -7LL, 8LL, 255LL)), "13 -7  |+0008|ff$"},
        {CALL(format(48, "%%I64d %s", "%I64d")), "11 %I64d %I64d$"},
        {CALL(format(5, "%s", "abcde")), "5 abcde"},
        {CALL(format(4, "%s", "abcde")), "-1 abcd"},
        {CALL(format(0, "%s", "abcde")), "-1 "},
        {CALL(format(6, "%s", "abcde")), "5 abcde$"},
        {CALL(format(48, "%I64u %#I64X %I64o", ~0ULL, 255ULL, 8ULL)),
         "28 18446744073709551615 0XFF 10$"},
        {CALL(format(48, "%*I64d %s I64d %.3I64d", 4, 9LL, "x", 1LL)), "15    9 x I64d 001$"},
    });
}

}  // namespace
}  // namespace zelto::test
