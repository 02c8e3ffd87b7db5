#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>

#include "platform/coredll/linux/registry_file.h"
#include "tests/coredll/files_fixture.h"

namespace zelto::test {
namespace {

using namespace std::literals;

constexpr LPCWSTR kKey = u"SOFTWARE\\ZeltoNav\\General";

class RegistryCalls : public FilesFixture {
  protected:
    static LONG Create(LPCWSTR sub_key, HKEY* key, DWORD* disposition = nullptr) {
        return RegCreateKeyExW(HKEY_LOCAL_MACHINE, sub_key, 0, nullptr, 0, KEY_SET_VALUE, nullptr,
                               key, disposition);
    }
    static LONG Open(LPCWSTR sub_key, HKEY* key) {
        return RegOpenKeyExW(HKEY_LOCAL_MACHINE, sub_key, 0, KEY_QUERY_VALUE, key);
    }
    static LONG Set(HKEY key, LPCWSTR name, DWORD type, const std::string& data) {
        return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                              static_cast<DWORD>(data.size()));
    }
    // The value's bytes, or "error N".
    static std::string Query(HKEY key, LPCWSTR name, DWORD* type = nullptr) {
        char data[4096];
        DWORD size = sizeof data;
        const LONG error =
            RegQueryValueExW(key, name, nullptr, type, reinterpret_cast<BYTE*>(data), &size);
        return error == 0 ? std::string(data, size) : "error " + std::to_string(error);
    }
    static std::string Bytes(std::u16string_view text) {
        return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
    }
    void PutRegistry(const std::string& text) const { Put("device/registry", text); }
};

TEST_F(RegistryCalls, ValuesComeBackAsTheyWereStored) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(Create(kKey, &key, &disposition), 0);
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
        {u"number", REG_DWORD, {"\x2A\0\0\x80", 4}, R"("number"=dword:8000002a)"},
        {u"short", REG_DWORD, "\x2A", R"("short"=hex(4):2a)"},
        {u"list", REG_MULTI_SZ, "\xFF", R"("list"=hex(7):ff)"},
        {u"nothing", 0xFFFFFFFF, "", R"("nothing"=hex(ffffffff):)"},
        {u"", REG_SZ, Bytes(u"\0"sv), R"(@=sz:"")"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Set(key, c.name, c.type, c.data), 0);
    const std::string file = Get("device/registry");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        DWORD type = 99;
        EXPECT_EQ(Query(key, c.name, &type), c.data);
        EXPECT_EQ(type, c.type);
        EXPECT_NE(file.find(std::string("\n") + c.line + "\n"), std::string::npos) << file;
    }
    EXPECT_TRUE(file.starts_with("ZELTO-REGISTRY 1\n"));
    EXPECT_NE(file.find("\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\ZeltoNav\\General]\n@="),
              std::string::npos);
    EXPECT_TRUE(file.ends_with("\nEND\n"));
    EXPECT_EQ(RegCloseKey(key), 0);
}

TEST_F(RegistryCalls, SizesAndErrorsOfAQuery) {
    HKEY key = nullptr;
    ASSERT_EQ(Create(kKey, &key), 0);
    ASSERT_EQ(Set(key, u"value", REG_BINARY, "12345"), 0);
    BYTE data[8] = {};
    DWORD type = 0;
    DWORD size = 4;
    SetLastError(4711);
    EXPECT_EQ(RegQueryValueExW(key, u"value", nullptr, &type, data, &size), LONG{ERROR_MORE_DATA});
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(RegQueryValueExW(key, u"VALUE", nullptr, nullptr, data, &size), 0);
    EXPECT_EQ(data[4], '5');
    size = 0;
    EXPECT_EQ(RegQueryValueExW(key, u"value", nullptr, nullptr, nullptr, &size), 0);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(RegQueryValueExW(key, u"value", nullptr, nullptr, data, nullptr), 87);
    EXPECT_EQ(RegQueryValueExW(key, u"value", &type, nullptr, nullptr, &size), 87);
    EXPECT_EQ(Query(key, nullptr), "error 2");
    EXPECT_EQ(Query(key, u"none"), "error 2");
    EXPECT_EQ(GetLastError(), 4711u);
    std::filesystem::remove(device_.Device() + "/registry");
    EXPECT_EQ(Query(key, u"value"), "error 1018");
    EXPECT_EQ(Set(key, u"value", REG_SZ, ""), 1018);
    EXPECT_EQ(Query(HKEY_USERS, u"value"), "error 2");
    RegCloseKey(key);
    EXPECT_EQ(Query(key, u"value"), "error 6");
    EXPECT_EQ(Set(key, u"value", REG_SZ, ""), 6);
    EXPECT_EQ(RegCloseKey(key), 6);
}

TEST_F(RegistryCalls, KeysByNameWithoutCase) {
    HKEY key = nullptr;
    HKEY again = nullptr;
    EXPECT_EQ(Open(u"Ma\xD1"
                   u"ana",
                   &key),
              2);
    ASSERT_EQ(Create(u"Ma\xD1"
                     u"ana\\Sub",
                     &key),
              0);
    ASSERT_EQ(Set(key, u"Name", REG_SZ, "kept"), 0);
    ASSERT_EQ(Open(u"mA\xF1"
                   u"ANA\\sub\\",
                   &again),
              0);
    EXPECT_EQ(Query(again, u"nAME"), "kept");
    ASSERT_EQ(Set(again, u"NAME", REG_SZ, "new!"), 0);
    EXPECT_NE(Get("device/registry").find("\"Name\"="), std::string::npos);
    HKEY same = nullptr;
    for (const LPCWSTR nothing : {LPCWSTR{}, LPCWSTR{u""}}) {
        ASSERT_EQ(RegOpenKeyExW(again, nothing, 0, 0, &same), 0);
        EXPECT_EQ(Query(same, u"name"), "new!");
        RegCloseKey(same);
    }
    DWORD disposition = 0;
    ASSERT_EQ(Create(u"ma\xF1"
                     u"ana",
                     &same, &disposition),
              0);
    EXPECT_EQ(disposition, DWORD{REG_OPENED_EXISTING_KEY});
    EXPECT_EQ(Open(u"\\SOFTWARE", &key), 87);
    EXPECT_EQ(Open(u"x", nullptr), 87);
    EXPECT_EQ(RegOpenKeyExW(nullptr, u"x", 0, 0, &key), 6);
    EXPECT_EQ(RegOpenKeyExW(static_cast<HKEY>(INVALID_HANDLE_VALUE), u"x", 0, 0, &key), 6);
    EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(CloseHandle(same), FALSE);  // not a file's
}

TEST_F(RegistryCalls, Limits) {
    HKEY key = nullptr;
    const std::u16string name(255, u'n');
    std::u16string deep = u"1";
    for (int level = 2; level <= 16; ++level)
        deep += u"\\k";
    EXPECT_EQ(Create(name.c_str(), &key), 0);
    EXPECT_EQ(Create((name + u"n").c_str(), &key), 87);
    EXPECT_EQ(Create((deep + u"\\k").c_str(), &key), 87);
    EXPECT_EQ(Create(u"a\\\\b", &key), 87);
    EXPECT_EQ(Create(u"line\nfeed", &key), 87);
    EXPECT_EQ(Create(u"half\xD800", &key), 87);
    ASSERT_EQ(Create(deep.c_str(), &key), 0);
    EXPECT_EQ(Set(key, name.c_str(), REG_BINARY, std::string(4096, 'x')), 0);
    EXPECT_EQ(Set(key, name.c_str(), REG_BINARY, std::string(4097, 'x')), 87);
    EXPECT_EQ(Set(key, (name + u"n").c_str(), REG_BINARY, ""), 87);
    EXPECT_EQ(Query(key, name.c_str()), std::string(4096, 'x'));
    EXPECT_EQ(coredll::RegistryProblem(), "");
    const std::string before = Get("device/registry");
    {
        const SizeLimit limit(before.size());
        EXPECT_EQ(Set(key, u"more", REG_SZ, "more"), 112);
    }
    EXPECT_EQ(Get("device/registry"), before);
}

TEST_F(RegistryCalls, AFileWrittenByHandLoads) {
    PutRegistry(
        "\xEF\xBB\xBFZELTO-REGISTRY 1\r\n# by hand\r\n\r\n\t[hkey_local_machine\\A b]\r\n"
        " \"v\" = dword:0000002A \r\n[HKEY_LOCAL_MACHINE\\a B]\r\n@=hex(3):00,fF\r\n END\r\n#\r\n");
    HKEY key = nullptr;
    ASSERT_EQ(Open(u"a b", &key), 0) << coredll::RegistryProblem();
    EXPECT_EQ(Query(key, u"v"), std::string("\x2A\0\0\0", 4));
    EXPECT_EQ(Query(key, u""), std::string("\0\xFF", 2));
}

TEST_F(RegistryCalls, ADamagedFileIsRefusedAndKept) {
    const std::string head = "ZELTO-REGISTRY 1\n[HKEY_USERS\\k]\n";
    std::string deep = "[HKEY_USERS";
    for (int level = 1; level <= 17; ++level)
        deep += "\\k";
    struct Case {
        std::string text;
        int line;
    };
    for (const Case& c : {Case{"", 1},
                          {"something else\n", 1},
                          {"ZELTO-REGISTRY 2\nEND\n", 1},
                          {"ZELTO-REGISTRY 1\n@=sz:\"\"\nEND\n", 2},
                          {head, 2},
                          {head + "@=sz:\"te", 3},
                          {head + "@=sz:\"a\x01\"\nEND\n", 3},
                          {head + "@=sz:\"\\q\"\nEND\n", 3},
                          {head + "@=sz:\"\\x12g4\"\nEND\n", 3},
                          {head + "@=sz:\"\xC3\"\nEND\n", 3},
                          {head + "@=sz:\"\"x\nEND\n", 3},
                          {head + "@=dword:123\nEND\n", 3},
                          {head + "@=dword:-0000001\nEND\n", 3},
                          {head + "@=hex():00\nEND\n", 3},
                          {head + "@=hex(3):0\nEND\n", 3},
                          {head + "@=hex(3):00,\nEND\n", 3},
                          {head + "\"v\" sz:\"\"\nEND\n", 3},
                          {head + "\"v\"=hex(3):\n\"V\"=hex(3):\nEND\n", 4},
                          {head + "[HKEY_NOBODY\\k]\nEND\n", 3},
                          {head + "[HKEY_USERS\\\\k]\nEND\n", 3},
                          {head + "[HKEY_USERS\\k\nEND\n", 3},
                          {head + deep + "]\nEND\n", 3},
                          {head + "\"" + std::string(256, 'n') + "\"=sz:\"\"\nEND\n", 3},
                          {head + "@=sz:\"" + std::string(2048, 'n') + "\"\nEND\n", 3},
                          {head + "END\n[HKEY_USERS\\l]\n", 4},
                          {head + std::string(4 << 20, '\n') + "END\n", 0}}) {
        SCOPED_TRACE(c.text.substr(0, 80));
        PutRegistry(c.text);
        HKEY key = nullptr;
        EXPECT_EQ(Open(kKey, &key), LONG{ERROR_BADDB});
        EXPECT_EQ(Create(kKey, &key), LONG{ERROR_BADDB});
        EXPECT_EQ(Set(HKEY_USERS, u"v", REG_SZ, "x"), LONG{ERROR_BADDB});
        EXPECT_EQ(Get("device/registry"), c.text);
        const std::string line = c.line == 0 ? "4 MiB" : "line " + std::to_string(c.line) + ":";
        EXPECT_NE(coredll::RegistryProblem().find(line), std::string::npos)
            << coredll::RegistryProblem();
    }
}

TEST_F(RegistryCalls, WithoutADevice) {
    HKEY key = nullptr;
    EXPECT_EQ(Open(kKey, &key), 2);
    EXPECT_FALSE(std::filesystem::exists(device_.Device() + "/registry"));
    chmod(device_.Device().c_str(), 0755);
    EXPECT_EQ(Open(kKey, &key), 5);
    EXPECT_EQ(Create(kKey, &key), 5);
    EXPECT_NE(coredll::RegistryProblem(), "");
    std::filesystem::remove_all(device_.Device());
    EXPECT_EQ(Open(kKey, &key), 2);
    EXPECT_EQ(Create(kKey, &key), 5);
}

TEST_F(RegistryCalls, WritersOfSeveralProcessesLoseNothing) {
    constexpr int kWriters = 4;
    constexpr int kValues = 12;
    for (int writer = 0; writer < kWriters; ++writer) {
        if (fork() != 0)
            continue;
        HKEY key = nullptr;
        LONG failed = Create(kKey, &key);
        for (int i = 0; i < kValues; ++i)
            failed |= Set(key, WideFromUtf8(std::to_string(writer * 100 + i)).c_str(), 3, "x");
        _exit(failed == 0 ? 0 : 1);
    }
    for (int writer = 0; writer < kWriters; ++writer) {
        int status = 0;
        ASSERT_GT(wait(&status), 0);
        EXPECT_EQ(status, 0);
    }
    HKEY key = nullptr;
    ASSERT_EQ(Open(kKey, &key), 0) << coredll::RegistryProblem();
    for (int writer = 0; writer < kWriters; ++writer) {
        for (int i = 0; i < kValues; ++i) {
            EXPECT_EQ(Query(key, WideFromUtf8(std::to_string(writer * 100 + i)).c_str()), "x");
        }
    }
}

}  // namespace
}  // namespace zelto::test
