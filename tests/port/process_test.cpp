// The shared library itself, with the stand-in navigator in another process.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "tests/tools/processes.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace zelto::test {
namespace {

// The library, loaded for as long as this lives.
class Library {
  public:
    Library() {
#ifdef __SANITIZE_ADDRESS__
        const __lsan::ScopedDisabler the_codepage_registry_is_never_destroyed;
#endif
        module_ = dlopen(ZELTO_PORT_LIBRARY, RTLD_NOW);
    }
    ~Library() {
        dlclose(module_);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    template <class... Arguments>
    int32_t Call(const char* name, Arguments... arguments) const {
        using Function = int32_t (*)(Arguments...);
        return reinterpret_cast<Function>(dlsym(module_, name))(arguments...);
    }

  private:
    void* module_;
};

TEST(SharedLibrary, LoadsWorksUnloadsAndLoadsAgain) {
    const NavigatorTest device;
    for (int round = 0; round < 2; ++round) {
        {
            const Library library;
            char answer[64] = "";
            EXPECT_EQ(library.Call("ZeltoNavPort_Init"), 0);
            EXPECT_EQ(library.Call("_Z21ZeltoNavPort_OpenFilePKc", "/bin/sh"), 0);
            EXPECT_EQ(library.Call("ZeltoNavPort_GetString", "file", 64u, answer), 0);
            EXPECT_STREQ(answer, "/bin/sh");
            EXPECT_EQ(library.Call("_Z28ZeltoNavPort_PositionStreetAv"), 1);
        }
        EXPECT_EQ(dlopen(ZELTO_PORT_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
    // Each load begins with the state of a fresh process.
    const std::string journal = ReadWholeFile(device.Journal());
    EXPECT_NE(journal.find("\"generation\":2", journal.find("\"generation\":4")), journal.npos);
}

TEST(SharedLibrary, ServesAClientInC) {
    const NavigatorTest device;
    const Outcome client = RunProgram({C_CLIENT});
    EXPECT_EQ(client.output, "");
    EXPECT_EQ(client.status, 0);
}

TEST(SharedLibrary, ExportsItsFunctionsAndNothingElse) {
    std::istringstream symbols(
        RunProgram({"/usr/bin/env", "nm", "-D", "--defined-only", ZELTO_PORT_LIBRARY}).output);
    int plain = 0;
    std::set<std::string> others;
    for (std::string address, kind, name; symbols >> address >> kind >> name;) {
        if (kind == "T" && name.starts_with("ZeltoNavPort_"))
            ++plain;
        else
            others.insert(name);
    }
    EXPECT_EQ(plain, 24);
    EXPECT_EQ(others, (std::set<std::string>{"_Z21ZeltoNavPort_OpenFilePKc",
                                             "_Z28ZeltoNavPort_PositionStreetAv"}));
}

}  // namespace
}  // namespace zelto::test
