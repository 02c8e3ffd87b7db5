// The shared library itself, and a navigator in another process.

#include <cstdio>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <set>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace zelto::test {
namespace {

using Lines = std::vector<std::string>;

Lines LinesOf(FILE* stream) {
    Lines lines;
    char line[1100];
    while (std::fgets(line, sizeof(line), stream) != nullptr)
        lines.emplace_back(line, std::string(line).find('\n'));
    return lines;
}

class Navigator {
  public:
    Navigator() {
        int ends[2];
        if (pipe(ends) != 0)
            throw std::runtime_error("no pipe");
        process_ = fork();
        if (process_ == 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            close(ends[1]);
            execl(ECHO_NAVIGATOR, ECHO_NAVIGATOR, nullptr);
            _exit(127);
        }
        close(ends[1]);
        output_ = fdopen(ends[0], "r");
        char ready[8] = "";
        EXPECT_NE(std::fgets(ready, sizeof(ready), output_), nullptr) << "no navigator";
    }
    ~Navigator() {
        Kill();
        std::fclose(output_);
    }
    Navigator(const Navigator&) = delete;
    Navigator& operator=(const Navigator&) = delete;

    void Kill() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
        process_ = -1;
    }
    // What it was asked, once it has ended.
    Lines Requests() { return LinesOf(output_); }

  private:
    pid_t process_;
    FILE* output_;
};

// The library, loaded for as long as this lives.
class Library {
  public:
    Library() {
#ifdef __SANITIZE_ADDRESS__
        const __lsan::ScopedDisabler registry_is_never_destroyed;
#endif
        module_ = dlopen(ZELTO_PORT_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (module_ == nullptr)
            throw std::runtime_error(dlerror());
    }
    ~Library() {
        dlclose(module_);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    template <typename... Arguments>
    int32_t Call(const char* name, Arguments... arguments) const {
        using Function = int32_t (*)(Arguments...);
        return reinterpret_cast<Function>(dlsym(module_, name))(arguments...);
    }
    static bool Loaded() {
        return dlopen(ZELTO_PORT_LIBRARY, RTLD_NOW | RTLD_NOLOAD) != nullptr;
    }

  private:
    void* module_;
};

class ProcessTest : public testing::Test {
  protected:
    ProcessTest() {
        HKEY key = nullptr;
        const std::u16string path = u"\\navigator";  // it is running: only the folder is taken
        EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, TEXT("SOFTWARE\\ZeltoNav\\General"), 0,
                                  nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr),
                  0);
        EXPECT_EQ(RegSetValueExW(key, TEXT("Path_EXE"), 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(path.c_str()),
                                 static_cast<DWORD>(2 * path.size() + 2)),
                  0);
        RegCloseKey(key);
    }

    TempDevice device_;
};

TEST_F(ProcessTest, LoadsWorksUnloadsAndLoadsAgain) {
    for (int round = 0; round < 2; ++round) {
        Navigator navigator;
        {
            const Library library;
            char answer[32] = "";
            EXPECT_EQ(library.Call("ZeltoNavPort_Init"), 0);
            EXPECT_EQ(library.Call("ZeltoNavPort_GetString", "street", 32u, answer), 0);
            EXPECT_STREQ(answer, "street");
            EXPECT_EQ(library.Call("_Z21ZeltoNavPort_OpenFilePKc", "\xE9"), 0);
            EXPECT_EQ(library.Call("_Z28ZeltoNavPort_PositionStreetAv"), 1);
            EXPECT_EQ(library.Call("ZeltoNavPort_CloseZeltoNav"), 0);
        }
        EXPECT_FALSE(Library::Loaded());
        EXPECT_EQ(navigator.Requests(), (Lines{"2 F|0", "3 F|street", "4 D|\xC3\xA9", "5 R|0"}));
    }
}

TEST_F(ProcessTest, AKilledNavigatorIsNoticed) {
    const Library library;
    EXPECT_EQ(library.Call("ZeltoNavPort_IsOpen"), 6);
    Navigator navigator;
    EXPECT_EQ(library.Call("ZeltoNavPort_IsOpen"), 0);
    EXPECT_EQ(library.Call("ZeltoNavPort_Cobertura"), 0);
    navigator.Kill();
    EXPECT_EQ(library.Call("ZeltoNavPort_Cobertura"), 12);
    EXPECT_EQ(library.Call("ZeltoNavPort_IsOpen"), 6);
}

TEST_F(ProcessTest, AClientInCCallsEverything) {
    Navigator navigator;
    EXPECT_EQ(std::system(C_CLIENT), 0);
    const Lines requests = navigator.Requests();
    ASSERT_EQ(requests.size(), 20u);
    EXPECT_EQ(requests[0], "2 F|0");
    EXPECT_EQ(requests[6], "8 D|caf\xC3\xA9");
    EXPECT_EQ(requests[19], "21 R|0");
}

TEST(SharedLibraryTest, ExportsItsFunctionsAndNothingElse) {
    FILE* nm = popen("nm -D --defined-only " ZELTO_PORT_LIBRARY, "r");
    ASSERT_NE(nm, nullptr);
    int plain = 0;
    std::set<std::string> decorated;
    for (const std::string& line : LinesOf(nm)) {
        const size_t kind = line.find(" T ");
        ASSERT_NE(kind, std::string::npos) << line;
        const std::string name = line.substr(kind + 3);
        if (name.starts_with("ZeltoNavPort_"))
            ++plain;
        else
            decorated.insert(name);
    }
    EXPECT_EQ(pclose(nm), 0);
    EXPECT_EQ(plain, 24);
    EXPECT_EQ(decorated, (std::set<std::string>{"_Z21ZeltoNavPort_OpenFilePKc",
                                                "_Z28ZeltoNavPort_PositionStreetAv"}));
}

}  // namespace
}  // namespace zelto::test
