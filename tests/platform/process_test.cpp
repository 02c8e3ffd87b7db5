#include <sys/stat.h>
#include <sys/wait.h>

#include "tests/platform/host_files.h"

namespace zelto::test {
namespace {

class Programs : public HostFiles {
  protected:
    void PutProgram(const std::string& name, const std::string& text) const {
        Put(name, text);
        chmod(Host(name).c_str(), 0755);
    }
    // Outcome and instance number: "5/5".
    static std::string Start(const std::u16string& file, LPCWSTR parameters = nullptr,
                             LPCWSTR verb = nullptr) {
        SHELLEXECUTEINFO info{};
        info.cbSize = sizeof info;
        info.lpVerb = verb;
        info.lpFile = file.c_str();
        info.lpParameters = parameters;
        const std::string outcome = Outcome([&info] { return ShellExecuteEx(&info); });
        return outcome + "/" + std::to_string(reinterpret_cast<uintptr_t>(info.hInstApp));
    }
};

TEST_F(Programs, AProgramStartsDetached) {
    ASSERT_EQ(mkfifo(Host("out").c_str(), 0600), 0);
    PutProgram("a program",
               "#!/bin/sh\nfiles=$(cd /proc/$$/fd; readlink 0 1 2)\nexec > '" + Host("out") +
                   "'\n" +
                   R"(printf '[%s]' "$@" $ZELTO_DEVICE $PWD $files
                      [ -e /proc/$$/fd/77 ] && echo leaked
                      grep -E '^Sig(Blk|Ign)' /proc/$$/status | tr -d '\t\n'
                      sed 's/.*) //' /proc/$$/stat | cut -d' ' -f4)");  // its session
    int ours[2];
    ASSERT_EQ(pipe(ours), 0);
    ASSERT_EQ(dup2(ours[0], 77) + dup2(ours[0], STDIN_FILENO), 77);
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, SIGTERM);
    sigprocmask(SIG_BLOCK, &mask, nullptr);
    std::signal(SIGINT, SIG_IGN);
    ASSERT_EQ(Start(Wide("a program"), u" a\\b  \"c d\"e \"\"\t\xF1 ", u"OPEN"), "ok/42");
    const std::string out = Get("out");  // until the program has ended
    const std::string expected = "[a\\b][c de][][\xC3\xB1][" + device_.Device() +
                                 "][/][/dev/null][/dev/null][/dev/null]"
                                 "SigBlk:0000000000000000SigIgn:0000000000000000";
    EXPECT_EQ(out.substr(0, expected.size()), expected);
    EXPECT_NE(out.substr(expected.size()), std::to_string(getsid(0)) + "\n");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // no child, so no zombie
    sigprocmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_TRUE(sigismember(&mask, SIGTERM) == 1 && sigismember(&mask, SIGUSR1) == 0);
    const std::string tell = "-c \"echo $0 $# > '" + Host("out") + "'\"";
    ASSERT_EQ(Start(u"\\bin\\sh", WideFromUtf8(tell).c_str()), "ok/42");
    EXPECT_EQ(Get("out"), "/bin/sh 0\n");
}

TEST_F(Programs, AProgramThatCannotStart) {
    Put("text", "text");
    PutProgram("good", "#!/bin/true\n");
    PutProgram("garbage",
               "\x7F"
               "ELFnot");
    EXPECT_EQ(Start(Wide("none")), "2/2");
    EXPECT_EQ(Start(Wide("none/file")), "3/3");
    EXPECT_EQ(Start(Wide("device")), "5/5");
    EXPECT_EQ(Start(Wide("text")), "5/5");
    EXPECT_EQ(Start(Wide("garbage")), "193/11");
    EXPECT_EQ(Start(Wide("good"), nullptr, u"opens"), "1155/31");
    EXPECT_EQ(Start(Wide("good"), u"\xD800"), "87/2");
    EXPECT_EQ(Start(u""), "3/3");
    SHELLEXECUTEINFO info{};
    info.cbSize = sizeof info - 1;
    EXPECT_EQ(Outcome([&info] { return ShellExecuteEx(&info); }), "87");
    chmod(device_.Device().c_str(), 0755);
    EXPECT_EQ(Start(Wide("good")), "5/5");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(Programs, TheModulesOwnName) {
    const std::u16string full = WidePath(std::filesystem::read_symlink("/proc/self/exe").string());
    WCHAR name[MAX_PATH] = {};
    EXPECT_EQ(GetModuleFileNameW(nullptr, name, MAX_PATH), full.size());
    EXPECT_EQ(std::u16string(name), full);
    name[6] = u'!';
    EXPECT_EQ(GetModuleFileNameW(nullptr, name, 6), 6u);
    EXPECT_EQ(std::u16string(name, 7), full.substr(0, 5) + u'\0' + u'!');
    EXPECT_EQ(Outcome([&] { return GetModuleFileNameW(name, name, 6) != 0; }), "6");
    EXPECT_EQ(Outcome([&] { return GetModuleFileNameW(nullptr, name, 0) != 0; }), "87");
}

}  // namespace
}  // namespace zelto::test
