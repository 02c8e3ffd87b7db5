// Files, folders and their names.

#include <filesystem>
#include <set>

#include "tests/platform/answers.h"
#include "tests/platform/host_files.h"

namespace zelto::test {
namespace {

constexpr DWORD kRead = GENERIC_READ, kWrite = GENERIC_WRITE, kBoth = GENERIC_READ | GENERIC_WRITE;

class PlatformFiles : public HostFiles {
  protected:
    void PutReadOnly(const std::string& name) const {
        Put(name, "fixed");
        std::filesystem::permissions(Host(name), std::filesystem::perms::owner_read);
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
}  // namespace zelto::test
