#include <sys/stat.h>
#include <sys/wait.h>

#include "platform/coredll/linux/registry/registry_file.h"
#include "tests/platform/host_files.h"

namespace zelto::test {
namespace {

using namespace std::literals;

constexpr LPCWSTR kKey = u"SOFTWARE\\ZeltoNav\\General";

LONG CreateKey(LPCWSTR sub_key, HKEY* key, DWORD* disposition = nullptr) {
    return RegCreateKeyExW(HKEY_LOCAL_MACHINE, sub_key, 0, nullptr, 0, KEY_SET_VALUE, nullptr, key,
                           disposition);
}

LONG OpenKey(LPCWSTR sub_key, HKEY* key) {
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, sub_key, 0, KEY_QUERY_VALUE, key);
}

LONG Set(HKEY key, LPCWSTR name, DWORD type, const std::string& data) {
    return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                          static_cast<DWORD>(data.size()));
}

// The value's bytes, or "error N".
std::string Query(HKEY key, LPCWSTR name, DWORD* type = nullptr) {
    char data[4096];
    DWORD size = sizeof data;
    const LONG error =
        RegQueryValueExW(key, name, nullptr, type, reinterpret_cast<BYTE*>(data), &size);
    return error == 0 ? std::string(data, size) : "error " + std::to_string(error);
}

std::string Bytes(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

class RegistryCalls : public HostFiles {
  protected:
    const char* kFile = "device/registry";
    HKEY key_ = nullptr;
};

TEST_F(RegistryCalls, ValuesComeBackAsTheyWereStored) {
    DWORD disposition = 0;
    ASSERT_EQ(CreateKey(kKey, &key_, &disposition), 0);
    EXPECT_EQ(disposition, DWORD{REG_CREATED_NEW_KEY});
    struct Case {
        const WCHAR* name;
        DWORD type;
        std::string data;
        const char* line;  // in the file
    };
    const Case cases[] = {
        {u"Path_EXE", REG_SZ, Bytes(u"\\a b\\ñ.exe\0"sv), R"("Path_EXE"=sz:"\\a b\\ñ.exe")"},
        {u"no nul", REG_SZ, Bytes(u"x"), R"("no nul"=sz-unterminated:"x")"},
        {u"nuls", REG_SZ, Bytes(u"a\0b\0\0"sv), R"("nuls"=sz:"a\x0000b\x0000")"},
        {u"odd", REG_SZ, "odd", R"("odd"=hex(1):6f,64,64)"},
        {u"q\"\n", REG_SZ, Bytes(u"\xD800\"\0"sv), R"("q\"\x000a"=sz:"\xd800\"")"},
        {u"number", REG_DWORD, "\x2A\0\0\x80"s, R"("number"=dword:8000002a)"},
        {u"short", REG_DWORD, "\x2A", R"("short"=hex(4):2a)"},
        {u"nothing", 0xFFFFFFFF, "", R"("nothing"=hex(ffffffff):)"},
        {u"", REG_SZ, Bytes(u"\0"sv), R"(@=sz:"")"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Set(key_, c.name, c.type, c.data), 0);
    const std::string file = Get(kFile);
    for (const Case& c : cases) {
        DWORD type = 99;
        EXPECT_EQ(Query(key_, c.name, &type), c.data);
        EXPECT_EQ(type, c.type);
        EXPECT_NE(file.find("\n"s + c.line + "\n"), std::string::npos) << c.line;
    }
    EXPECT_TRUE(file.starts_with("ZELTO-REGISTRY 1\n") && file.ends_with("\nEND\n")) << file;
}

TEST_F(RegistryCalls, KeysOutliveTheirFileAndAreNoHandles) {
    ASSERT_EQ(CreateKey(kKey, &key_), 0);
    SetLastError(4711);
    std::filesystem::remove(Host(kFile));
    EXPECT_EQ(Query(key_, u"value"), "error 1018");
    EXPECT_EQ(Set(key_, u"value", REG_SZ, ""), 1018);
    EXPECT_EQ(Query(HKEY_USERS, u"value"), "error 2");
    EXPECT_EQ(GetLastError(), 4711u);
    EXPECT_EQ(CloseHandle(key_), FALSE);
}

TEST_F(RegistryCalls, NamesComeWithoutCaseAndWithinLimits) {
    HKEY again = nullptr;
    EXPECT_EQ(OpenKey(u"\u00D1and\u00FA", &key_), 2);
    ASSERT_EQ(CreateKey(u"\u00D1and\u00FA\\Sub", &key_), 0);
    ASSERT_EQ(Set(key_, u"Name", REG_SZ, "old"), 0);
    ASSERT_EQ(OpenKey(u"\u00F1AND\u00DA\\sub\\", &again), 0);
    ASSERT_EQ(RegOpenKeyExW(again, u"", 0, 0, &again), 0);
    ASSERT_EQ(Set(again, u"NAME", REG_SZ, "new"), 0);
    EXPECT_EQ(Query(key_, u"Name"), "new");
    EXPECT_NE(Get(kFile).find("\"Name\"="), std::string::npos);
    EXPECT_EQ(OpenKey(u"\\SOFTWARE", &key_), 87);
    EXPECT_EQ(RegOpenKeyExW(static_cast<HKEY>(INVALID_HANDLE_VALUE), u"", 0, 0, &key_), 6);

    const std::u16string name(255, u'n');
    std::u16string deep = u"1";
    for (int level = 2; level <= 16; ++level)
        deep += u"\\k";
    for (const std::u16string& bad : {name + u"n", deep + u"\\k", u"a\\\\b"s, u"a\nb"s, u"\xD800"s})
        EXPECT_EQ(CreateKey(bad.c_str(), &key_), 87);
    EXPECT_EQ(CreateKey(name.c_str(), &key_), 0);
    ASSERT_EQ(CreateKey(deep.c_str(), &key_), 0);
    EXPECT_EQ(Set(key_, name.c_str(), REG_BINARY, std::string(4097, 'x')), 87);
    EXPECT_EQ(Set(key_, name.c_str(), REG_BINARY, std::string(4096, 'x')), 0);
    EXPECT_EQ(Set(key_, (name + u"n").c_str(), REG_BINARY, ""), 87);
    EXPECT_EQ(Query(key_, name.c_str()), std::string(4096, 'x'));
    const std::string before = Get(kFile);
    const SizeLimit limit(before.size());
    EXPECT_EQ(Set(key_, u"more", REG_SZ, "more"), 112);
    EXPECT_EQ(Get(kFile), before);
}

TEST_F(RegistryCalls, AFileWrittenByHandLoads) {
    Put(kFile,
        "\xEF\xBB\xBFZELTO-REGISTRY 1\r\n# by hand\r\n\r\n\t[hkey_local_machine\\A b]\r\n"
        " \"v\" = dword:0000002A \r\n[HKEY_LOCAL_MACHINE\\a B]\r\n@=hex(3):00,fF\r\n END\r\n#\r\n");
    ASSERT_EQ(OpenKey(u"a b", &key_), 0) << coredll::RegistryProblem();
    EXPECT_EQ(Query(key_, u"v"), "\x2A\0\0\0"s);
    EXPECT_EQ(Query(key_, u""), "\0\xFF"s);
}

TEST_F(RegistryCalls, ADamagedFileIsRefusedNamedAndKept) {
    std::string deep = "[HKEY_USERS";
    for (int level = 1; level <= 17; ++level)
        deep += "\\k";
    const auto check = [this](const std::string& text, const std::string& problem) {
        SCOPED_TRACE(text.substr(0, 80));
        Put(kFile, text);
        EXPECT_EQ(OpenKey(kKey, &key_), LONG{ERROR_BADDB});
        EXPECT_EQ(CreateKey(kKey, &key_), LONG{ERROR_BADDB});
        EXPECT_EQ(Set(HKEY_USERS, u"v", REG_SZ, "x"), LONG{ERROR_BADDB});
        EXPECT_EQ(Get(kFile), text);
        const std::string told = coredll::RegistryProblem();
        EXPECT_NE(told.find(problem), std::string::npos) << told;
    };
    for (const char* text : {"", "something else\n", "ZELTO-REGISTRY 2\nEND\n"})
        check(text, "line 1:");
    const std::string head = "ZELTO-REGISTRY 1\n[HKEY_USERS\\k]\n";
    check("ZELTO-REGISTRY 1\n@=sz:\"\"\nEND\n", "line 2:");
    check(head, "line 2: the end mark is missing");
    for (const std::string& line :
         {"@=sz:\"te"s, "@=sz:\"\x01\""s, "@=sz:\"\\q\""s, "@=sz:\"\\x12g4\""s, "@=sz:\"\xC3\""s,
          "@=sz:\"\"x"s, "@=dword:123"s, "@=dword:-0000001"s, "@=hex():00"s, "@=hex(3):0"s,
          "@=hex(3):00,"s, "@ sz:\"\""s, "[HKEY_X\\k]"s, "[HKEY_USERS\\\\k]"s, "[HKEY_USERS"s,
          deep + "]", "@=sz:\"" + std::string(2048, 'n') + "\"",
          "\"" + std::string(256, 'n') + "\"=hex(3):"})
        check(head + line + "\nEND\n", "line 3:");
    check(head + "\"v\"=hex(3):\n\"V\"=hex(3):\nEND\n", "line 4:");
    check(head + "END\n[HKEY_USERS\\l]\n", "line 4:");
    check(head + std::string(4 << 20, '\n') + "END\n", "4 MiB");
}

TEST_F(RegistryCalls, WithoutADevice) {
    EXPECT_EQ(OpenKey(kKey, &key_), 2);
    chmod(device_.Device().c_str(), 0755);
    EXPECT_EQ(OpenKey(kKey, &key_), 5);
    EXPECT_EQ(CreateKey(kKey, &key_), 5);
    EXPECT_NE(coredll::RegistryProblem(), "");
    std::filesystem::remove_all(device_.Device());
    EXPECT_EQ(OpenKey(kKey, &key_), 2);
    EXPECT_EQ(CreateKey(kKey, &key_), 5);
}

TEST_F(RegistryCalls, WritersOfSeveralProcessesLoseNothing) {
    ASSERT_EQ(CreateKey(kKey, &key_), 0);
    const auto name = [](int number) { return WideFromUtf8(std::to_string(number)); };
    constexpr int kWriters = 4;
    constexpr int kValues = 40;
    for (int writer = 0; writer < kWriters; ++writer) {
        if (fork() != 0)
            continue;
        for (int i = writer; i < kValues; i += kWriters) {
            while (Set(key_, name(i).c_str(), REG_BINARY, "x") == LONG{ERROR_BUSY}) {
            }
        }
        _exit(0);
    }
    while (wait(nullptr) > 0) {
    }
    for (int i = 0; i < kValues; ++i)
        EXPECT_EQ(Query(key_, name(i).c_str()), "x");
}

}  // namespace
}  // namespace zelto::test
