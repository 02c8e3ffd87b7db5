#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "tests/coredll/files_fixture.h"

namespace zelto::test {
namespace {

class Programs : public FilesFixture {
  protected:
    void PutProgram(const std::string& name, const std::string& text) const {
        Put(name, text);
        chmod(Host(name).c_str(), 0755);
    }
    static std::string Start(LPCWSTR file, LPCWSTR parameters, LPCWSTR verb, uintptr_t* instance) {
        SHELLEXECUTEINFO info{};
        info.cbSize = sizeof info;
        info.lpVerb = verb;
        info.lpFile = file;
        info.lpParameters = parameters;
        info.hProcess = &info;
        std::string outcome = Outcome([&info] { return ShellExecuteEx(&info); });
        *instance = reinterpret_cast<uintptr_t>(info.hInstApp);
        EXPECT_EQ(info.hProcess, nullptr);
        return outcome;
    }
};

TEST_F(Programs, AProgramStartsDetached) {
    ASSERT_EQ(mkfifo(Host("out").c_str(), 0600), 0);
    PutProgram("a program",
               "#!/bin/sh\n"
               "exec > '" +
                   Host("out") +
                   "'\n"
                   "printf '[%s]\\n' \"$@\"\n"
                   "echo $ZELTO_DEVICE; pwd; readlink /proc/$$/fd/0\n"
                   "[ -e /proc/$$/fd/77 ] && echo leaked\n"
                   "grep -E '^Sig(Blk|Ign)' /proc/$$/status | tr -d '\\t'\n"
                   "sed 's/.*) //' /proc/$$/stat | cut -d' ' -f2,4\n");  // parent and session
    ASSERT_EQ(dup2(STDOUT_FILENO, 77), 77);
    sigset_t block;
    sigemptyset(&block);
    sigaddset(&block, SIGTERM);
    sigprocmask(SIG_BLOCK, &block, nullptr);
    std::signal(SIGINT, SIG_IGN);
    uintptr_t instance = 0;
    ASSERT_EQ(Start(Wide("a program").c_str(), u" a\\b  \"c d\"e \"\"\t\xF1 ", u"OPEN", &instance),
              "ok");
    EXPECT_GT(instance, 32u);
    const std::string out = Get("out");  // until the program has ended
    const std::string expected = "[a\\b]\n[c de]\n[]\n[\xC3\xB1]\n" + device_.Device() +
                                 "\n/\n/dev/null\n"
                                 "SigBlk:0000000000000000\nSigIgn:0000000000000000\n";
    ASSERT_EQ(out.substr(0, expected.size()), expected);
    int parent = 0;
    int session = 0;
    ASSERT_EQ(std::sscanf(out.c_str() + expected.size(), "%d %d", &parent, &session), 2);
    EXPECT_NE(parent, getpid());
    EXPECT_NE(session, getsid(0));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // no child, no zombie
    sigset_t mask;
    sigprocmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_TRUE(sigismember(&mask, SIGTERM) == 1 && sigismember(&mask, SIGUSR1) == 0);
}

TEST_F(Programs, AProgramThatCannotStart) {
    Put("text", "text");
    PutProgram("good", "#!/bin/true\n");
    PutProgram("garbage",
               "\x7F"
               "ELFnot");
    struct Case {
        std::u16string name;
        LPCWSTR parameters;
        LPCWSTR verb;
        const char* outcome;
        uintptr_t instance;
    };
    for (const Case& c : {Case{Wide("none"), nullptr, nullptr, "2", 2},
                          {Wide("none/file"), nullptr, nullptr, "3", 3},
                          {Wide("device"), nullptr, nullptr, "5", 5},
                          {Wide("text"), nullptr, nullptr, "5", 5},
                          {Wide("garbage"), nullptr, nullptr, "193", 11},
                          {Wide("good"), nullptr, u"print", "1155", 31},
                          {Wide("good"), nullptr, u"opens", "1155", 31},
                          {Wide("good"), u"\xD800", nullptr, "87", 2},
                          {u"", nullptr, nullptr, "3", 3}}) {
        SCOPED_TRACE(c.outcome);
        uintptr_t instance = 0;
        EXPECT_EQ(Start(c.name.c_str(), c.parameters, c.verb, &instance), c.outcome);
        EXPECT_EQ(instance, c.instance);
    }
    uintptr_t instance = 0;
    EXPECT_EQ(Start(nullptr, nullptr, nullptr, &instance), "87");
    SHELLEXECUTEINFO info{};
    info.cbSize = sizeof info - 1;
    EXPECT_EQ(Outcome([&info] { return ShellExecuteEx(&info); }), "87");
    EXPECT_EQ(Outcome([] { return ShellExecuteEx(nullptr); }), "87");
    chmod(device_.Device().c_str(), 0755);
    EXPECT_EQ(Start(Wide("good").c_str(), nullptr, nullptr, &instance), "5");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(Programs, TheModulesOwnName) {
    const std::u16string full = WidePath(std::filesystem::read_symlink("/proc/self/exe").string());
    WCHAR name[MAX_PATH];
    DWORD length = 0;
    EXPECT_EQ(Outcome([&] { return (length = GetModuleFileNameW(nullptr, name, MAX_PATH)) != 0; }),
              "ok");
    EXPECT_EQ(std::u16string(name), full);
    EXPECT_EQ(length, full.size());
    name[6] = u'!';
    EXPECT_EQ(GetModuleFileNameW(nullptr, name, 6), 6u);
    EXPECT_EQ(std::u16string(name, 7), full.substr(0, 5) + u'\0' + u'!');
    EXPECT_EQ(Outcome([&] { return GetModuleFileNameW(&length, name, 6) != 0; }), "6");
    EXPECT_EQ(Outcome([&] { return GetModuleFileNameW(nullptr, name, 0) != 0; }), "87");
    EXPECT_EQ(Outcome([] { return DisableThreadLibraryCalls(nullptr); }), "ok");
}

}  // namespace
}  // namespace zelto::test
