// What the documented calls answer, as tables: a call, its result, the last error where it sets
// one, and what it puts out. A row holds what is documented or was measured on other systems of the
// family; where this layer differs on purpose, the row says so.

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>

#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"

namespace {

struct Row {
    const char* call;
    std::string answer;
    std::string expected;
    const char* on_purpose = "";
};

#define CALL(call) #call, call

// Of several calls, one after the other.
std::string All(std::initializer_list<std::string> answers) {
    std::string text;
    for (const std::string& answer : answers)
        text += (text.empty() ? "" : ", ") + answer;
    return text;
}

void CheckRows(std::initializer_list<Row> rows) {
    for (const Row& row : rows)
        EXPECT_EQ(row.answer, row.expected) << row.call << ' ' << row.on_purpose;
}

constexpr DWORD kUntouched = 4711;  // no call sets it

std::string Answer(long long result, const std::string& output = "") {
    const DWORD error = GetLastError();
    std::string text = std::to_string(result);
    if (error != kUntouched)
        text += " error " + std::to_string(error);
    return output.empty() ? text : text + " " + output;
}

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
        {CALL(Narrow(932, u"\u30A2\u00E9\u0E01", "\x81\xA1")),
         "5 \x83\x41"
         "e\x81\xA1 default"},
        {CALL(All({Narrow(936, u"\u4E00"), Narrow(949, u"\uAC00")})), "2 \xD2\xBB, 2 \xB0\xA1"},
        {CALL(All({Narrow(950, u"\u4E00"), Narrow(1361, u"\uAC00")})), "2 \xA4\x40, 2 \x88\x61"},
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
        {CALL(Widen(932, "\x83\x41")), "1 30A2 "},
        // A bad pair takes its second byte with it, but never an ASCII one; so does a lone first.
        {CALL(Widen(932,
                    "\x81\xFFz\x81"
                    "1\x88")),
         "5 FFFD 007A FFFD 0031 FFFD "},
        {CALL(Widen(932, "A\x88", MB_ERR_INVALID_CHARS)), "0 error 1113 0041 "},
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

constexpr DWORD kRead = GENERIC_READ, kWrite = GENERIC_WRITE, kBoth = GENERIC_READ | GENERIC_WRITE;

class PlatformFiles : public testing::Test {
  protected:
    std::string Host(const std::string& name) const { return device_.Path() + "/" + name; }
    std::u16string Wide(const std::string& name) const { return zelto::test::WidePath(Host(name)); }
    void Put(const std::string& name, const std::string& text = "") const {
        std::ofstream(Host(name), std::ios::binary) << text;
    }
    void PutReadOnly(const std::string& name) const {
        Put(name, "fixed");
        std::filesystem::permissions(Host(name), std::filesystem::perms::owner_read);
    }
    std::string Get(const std::string& name) const {
        std::ifstream in(Host(name), std::ios::binary);
        return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(missing)";
    }
    // Every call on a name: nonzero is success.
    template <class Call>
    std::string On(const std::string& name, Call call) const {
        const std::u16string wide = Wide(name);
        SetLastError(kUntouched);
        return Answer(call(wide.c_str()) ? 1 : 0);
    }
    std::string Open(const std::string& name, DWORD access, DWORD disposition) const {
        return On(name, [&](LPCWSTR wide) {
            HANDLE file = CreateFileW(wide, access, 0, nullptr, disposition, 0, nullptr);
            const DWORD error = GetLastError();
            CloseHandle(file);
            SetLastError(error);
            return file != INVALID_HANDLE_VALUE;
        });
    }
    std::string Stream(const std::string& name, const char16_t* mode) const {
        return On(name, [&](LPCWSTR wide) {
            FILE* file = _wfopen(wide, mode);
            return file != nullptr && std::fclose(file) == 0;
        });
    }
    std::string Attributes(const std::string& name) const {
        const std::u16string wide = Wide(name);
        SetLastError(kUntouched);
        return Answer(static_cast<int32_t>(GetFileAttributesW(wide.c_str())));
    }
    std::string Delete(const std::string& name) const { return On(name, DeleteFileW); }
    std::string Make(const std::string& name) const {
        return On(name, [](LPCWSTR wide) { return CreateDirectoryW(wide, nullptr); });
    }
    std::string Move(const std::string& from, const std::string& to) const {
        return On(to, [&](LPCWSTR wide) { return MoveFileW(Wide(from).c_str(), wide); });
    }
    std::string Copy(const std::string& from, const std::string& to, BOOL keep = FALSE) const {
        return On(to, [&](LPCWSTR wide) { return CopyFileW(Wide(from).c_str(), wide, keep); });
    }
    // The names found, sorted, or the failure; both calls tell their ends by the last error.
    std::string Find(const std::string& pattern) const {
        WIN32_FIND_DATAW data;
        std::set<std::string> names;
        HANDLE search = FindFirstFileW(Wide(pattern).c_str(), &data);
        if (search == INVALID_HANDLE_VALUE)
            return "error " + std::to_string(GetLastError());
        do
            names.insert(std::filesystem::path(data.cFileName).string());
        while (FindNextFileW(search, &data));
        EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
        EXPECT_TRUE(FindClose(search));
        std::string text;
        for (const std::string& name : names)
            text += (text.empty() ? "" : " ") + name;
        return text;
    }

    zelto::test::TempDevice device_;
};

TEST_F(PlatformFiles, Opening) {
    Put("old", "old");
    PutReadOnly("fixed");
    CheckRows({
        {CALL(Open("new", kBoth, CREATE_NEW)), "1 error 0"},
        {CALL(Open("new", kBoth, CREATE_NEW)), "0 error 80"},
        {CALL(Open("made", kBoth, CREATE_ALWAYS)), "1 error 0"},
        {CALL(Open("kept", kRead, OPEN_ALWAYS)), "1 error 0"},
        {CALL(Open("none", kBoth, OPEN_EXISTING)), "0 error 2"},
        {CALL(Open("none", kBoth, TRUNCATE_EXISTING)), "0 error 2"},
        {CALL(Open("old", kRead, OPEN_ALWAYS)), "1 error 183"},
        {CALL(Open("old", kRead, OPEN_EXISTING)), "1"},
        {CALL(Open("old", 0, OPEN_EXISTING)), "1"},
        {CALL(Open("old", kRead, TRUNCATE_EXISTING)), "0 error 87"},
        {CALL(All({Open("old", kBoth, 0), Open("old", kBoth, 7)})), "0 error 87, 0 error 87"},
        {CALL(Get("old")), "old"},
        {CALL(All({Open("old", kWrite, TRUNCATE_EXISTING), Get("old")})), "1, "},
        {CALL(Open("old", kWrite, CREATE_ALWAYS)), "1 error 183"},
        {CALL(Open("old", kBoth, OPEN_ALWAYS | CREATE_ALWAYS)), "1",
         "the two together are taken as TRUNCATE_EXISTING"},
        {CALL(Open("none", kBoth, OPEN_ALWAYS | CREATE_ALWAYS)), "0 error 2", "as above"},
        {CALL(Open("fixed", kRead, OPEN_EXISTING)), "1"},
        {CALL(Open("fixed", kWrite, OPEN_EXISTING)), "0 error 5"},
        {CALL(Open("device", kRead, OPEN_EXISTING)), "0 error 5"},
        {CALL(Open("none/file", kBoth, CREATE_NEW)), "0 error 3"},
        {CALL(Open("a<b", kBoth, CREATE_NEW)), "0 error 123"},
        {CALL(Open(std::string(260, 'n'), kRead, OPEN_EXISTING)), "0 error 206"},
        {CALL(Stream("none", u"rb")), "0 error 2"},
        {CALL(Stream("none/file", u"w")), "0 error 3"},
        {CALL(All({Stream("fixed", u"r"), Stream("old", u"a+b"), Stream("fresh", u"wt")})),
         "1, 1, 1"},
        {CALL(All({Stream("fixed", u"w"), Stream("fixed", u"a"), Stream("fixed", u"r+")})),
         "0 error 5, 0 error 5, 0 error 5"},
        {CALL(Stream("device", u"r")), "0 error 5"},
        {CALL(All({Stream("old", u"x"), Stream("old", u"rq")})), "0 error 87, 0 error 87"},
        {CALL(Get("fixed")), "fixed"},
    });
}

TEST_F(PlatformFiles, Positions) {
    const std::u16string name = Wide("file");
    HANDLE file = CreateFileW(name.c_str(), kBoth, 0, nullptr, CREATE_NEW, 0, nullptr);
    DWORD done = 0;
    WriteFile(file, "0123456789", 10, &done, nullptr);
    // The result, and behind it the position and the bytes that are read there.
    const auto seek = [&](LONG distance, LONG* high, DWORD method) {
        SetLastError(kUntouched);
        const std::string text =
            Answer(static_cast<int32_t>(SetFilePointer(file, distance, high, method)));
        return text + (high != nullptr ? " high " + std::to_string(*high) : "");
    };
    const auto read = [&](DWORD size) {
        std::string bytes(size, '?');
        DWORD got = 99;
        SetLastError(kUntouched);
        const BOOL result = ReadFile(file, bytes.data(), size, &got, nullptr);
        return Answer(result, bytes.substr(0, got));
    };
    LONG back = -1, far = 4, least = 0;
    CheckRows({
        {CALL(All({seek(4, nullptr, FILE_BEGIN), read(3)})), "4 error 0, 1 456"},
        {CALL(All({seek(-1, nullptr, FILE_CURRENT), read(9)})), "6 error 0, 1 6789"},
        {CALL(read(9)), "1"},
        {CALL(seek(-11, nullptr, FILE_END)), "-1 error 131"},
        {CALL(seek(0, nullptr, FILE_CURRENT)), "10 error 0"},
        {CALL(seek(0, nullptr, 3)), "-1 error 87"},
        {CALL(seek(-4, &back, FILE_END)), "6 error 0 high 0"},
        {CALL(seek(-1, &far, FILE_BEGIN)), "-1 error 0 high 4"},
        {CALL(seek(0, nullptr, FILE_CURRENT)), "-1 error 87"},
        {CALL(read(1)), "1"},
        {CALL(seek(0x7FFFFFFF, nullptr, FILE_BEGIN)), "2147483647 error 0"},
        {CALL(seek(0x7FFFFFFF, nullptr, FILE_CURRENT)), "-2 error 0"},
        {CALL(seek(2, nullptr, FILE_CURRENT)), "-1 error 87"},
        {CALL(seek(-1, &least, FILE_BEGIN)), "-1 error 0 high 0"},
    });
    CloseHandle(file);
    CheckRows({{CALL(seek(0, nullptr, FILE_BEGIN)), "-1 error 6"}, {CALL(read(1)), "0 error 6"}});
}

TEST_F(PlatformFiles, NamesOfFiles) {
    Put("file", "data");
    Put("other", "other");
    PutReadOnly("fixed");
    Put(".hidden");
    CheckRows({
        {CALL(All({Make("folder"), Make("folder/sub/"), Make("new/")})), "1, 1, 1"},
        {CALL(All({Make("folder"), Make("file")})), "0 error 183, 0 error 183"},
        {CALL(All({Make("none/new"), Make("a<b")})), "0 error 3, 0 error 123"},
        {CALL(All({Attributes("file"), Attributes("fixed")})), "128, 1"},
        {CALL(All({Attributes("folder"), Attributes("folder/")})), "16, 16"},
        {CALL(Attributes(".hidden")), "2", "what the host hides"},
        {CALL(All({Attributes("none"), Attributes("none/file")})), "-1 error 2, -1 error 3"},
        {CALL(All({Attributes("fi*"), Attributes("file/")})), "-1 error 123, -1 error 3"},
        {CALL(All({Delete("none"), Delete("none/file")})), "0 error 2, 0 error 3"},
        {CALL(All({Delete("fixed"), Delete("folder")})), "0 error 5, 0 error 5"},
        {CALL(All({Copy("file", "copy"), Get("copy")})), "1, data"},
        {CALL(Copy("other", "copy", TRUE)), "0 error 80"},
        {CALL(All({Copy("other", "copy"), Get("copy")})), "1, other"},
        {CALL(All({Copy("other", "fixed"), Copy("other", ".hidden")})), "0 error 5, 0 error 5"},
        {CALL(All({Copy("none", "copy"), Copy("file", "none/copy")})), "0 error 2, 0 error 3"},
        {CALL(All({Move("file", "other"), Get("other")})), "0 error 183, other"},
        {CALL(All({Move("none", "x"), Move("file", "none/x")})), "0 error 2, 0 error 3"},
        {CALL(All({Move("file", "moved"), Get("file"), Get("moved")})), "1, (missing), data"},
        {CALL(All({Move("folder", "taken"), Attributes("taken/sub")})), "1, 16"},
        {CALL(All({Delete("moved"), Delete("moved")})), "1, 0 error 2"},
    });
}

TEST_F(PlatformFiles, NamesWithoutRegardToCase) {
    Put("MAPA.ITV", "map");
    Make("Dir");
    Put("Dir/Ruta", "in");
    for (const char* name : {"Two", "two", "tWO", "a\xC3\x91o", "ab"})
        Put(name, name);
    CheckRows({
        {CALL(Open("mapa.itv", kRead, OPEN_EXISTING)), "1"},
        {CALL(Open("dIR/rUTA", kRead, OPEN_EXISTING)), "1"},
        {CALL(Open("dIR/none", kRead, OPEN_EXISTING)), "0 error 2"},
        {CALL(Open("mapa.itv", kBoth, CREATE_NEW)), "0 error 80"},
        {CALL(Open("mapa.ITV", kRead, OPEN_ALWAYS)), "1 error 183"},
        {CALL(Open("A\xC3\xB1O", kRead, OPEN_EXISTING)), "1"},
        {CALL(All({Stream("Mapa.itv", u"r"), Stream("DIR/new", u"w"), Get("Dir/new")})), "1, 1, "},
        {CALL(All({Attributes("DIR/RUTA"), Attributes("dir")})), "128, 16"},
        {CALL(All({Make("DIR"), Make("dir/sub"), Attributes("Dir/sub")})), "0 error 183, 1, 16"},
        {CALL(All({Copy("TWO", "copy"), Get("copy")})), "1, Two",
         "of several the first in byte order"},
        {CALL(All({Copy("tWO", "copy"), Get("copy")})), "1, tWO"},
        {CALL(All({Copy("two", "COPY"), Get("copy")})), "1, two"},
        {CALL(Move("ab", "mapa.itv")), "0 error 183"},
        {CALL(All({Move("ab", "AB"), Get("ab"), Get("AB")})), "1, (missing), ab"},
        {CALL(All({Find("*.itv"), Find("A*.*")})), "MAPA.ITV, AB a\xC3\x91o"},
        {CALL(Find("DIR/*")), "Ruta new sub"},
        {CALL(All({Find("two"), Find("TWO"), Find("t?o")})), "two, Two, Two tWO two",
         "the host keeps them apart"},
        {CALL(All({Delete("TWO"), Delete("TWO"), Get("two")})), "1, 1, two"},
        {CALL(All({Get("Two"), Get("tWO")})), "(missing), (missing)"},
    });
}

TEST_F(PlatformFiles, Searches) {
    Make("folder");
    for (const char* name : {"folder/a.txt", "folder/b.tx", "folder/.c", "folder/inside"})
        Put(name);
    Make("folder/sub.txt");
    CheckRows({
        {CALL(Find("folder/*")), ".c a.txt b.tx inside sub.txt", "neither . nor .."},
        {CALL(Find("folder/*.*")), ".c a.txt b.tx inside sub.txt"},
        {CALL(Find("folder/*.txt")), "a.txt sub.txt"},
        {CALL(Find("folder/?.tx*")), "a.txt b.tx"},
        {CALL(All({Find("folder/i*.*"), Find("folder/*s*d*")})), "inside, inside"},
        {CALL(Find("folder")), "folder"},
        {CALL(All({Find("folder/"), Find("folder/none*")})), "error 2, error 2"},
        {CALL(All({Find("none/*"), Find("fol*/*")})), "error 3, error 123"},
    });
}

}  // namespace
