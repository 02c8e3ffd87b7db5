// Share modes, in one process and between two.

#include <sys/wait.h>

#include "tests/coredll/files_fixture.h"

namespace zelto::test {
namespace {

constexpr DWORD kR = GENERIC_READ;
constexpr DWORD kW = GENERIC_WRITE;
constexpr DWORD kShareR = FILE_SHARE_READ;
constexpr DWORD kShareW = FILE_SHARE_WRITE;

class Sharing : public FilesFixture {
  protected:
    void SetUp() override { Put("file", "data"); }

    // The same open from a process of its own.
    std::string OpenElsewhere(DWORD access, DWORD share, DWORD disposition) const {
        const pid_t child = fork();
        if (child == 0) {
            const std::string outcome = Open(Wide("file"), access, share, disposition);
            _exit(outcome.starts_with("ok") ? 0 : std::stoi(outcome));
        }
        int status = 0;
        waitpid(child, &status, 0);
        const int code = WEXITSTATUS(status);
        return code == 0 ? "ok" : std::to_string(code);
    }
};

TEST_F(Sharing, BothSidesMustAgree) {
    struct Case {
        DWORD access, share, other_access, other_share;
        const char* outcome;
    };
    for (const Case& c : {Case{kR, kShareR, kR, kShareR, "ok"},
                          {kR, 0, kR, kShareR, "32"},
                          {kR, kShareR, kR, 0, "32"},
                          {kR, kShareR, kW, kShareR | kShareW, "32"},
                          {kR, kShareR | kShareW, kW, kShareR, "ok"},
                          {kR, kShareR | kShareW, kW, kShareW, "32"},
                          {kW, kShareR | kShareW, kR, kShareR, "32"},
                          {kW, kShareW, kW, kShareW, "ok"},
                          {kR | kW, kShareR | kShareW, kR | kW, kShareR | kShareW, "ok"},
                          {kR | kW, 0, 0, 0, "ok"},
                          {0, 0, kR | kW, 0, "ok"}}) {
        SCOPED_TRACE(testing::Message() << c.access << " " << c.share << " against "
                                        << c.other_access << " " << c.other_share);
        HANDLE first = nullptr;
        ASSERT_EQ(Open(Wide("file"), c.access, c.share, OPEN_EXISTING, &first), "ok");
        EXPECT_EQ(Open(Wide("file"), c.other_access, c.other_share, OPEN_EXISTING), c.outcome);
        EXPECT_EQ(OpenElsewhere(c.other_access, c.other_share, OPEN_EXISTING), c.outcome);
        CloseHandle(first);
        EXPECT_EQ(OpenElsewhere(kR | kW, 0, OPEN_EXISTING), "ok");
    }
}

TEST_F(Sharing, ARefusedOpenTruncatesNothing) {
    HANDLE reader = nullptr;
    ASSERT_EQ(Open(Wide("file"), kR, kShareR, OPEN_EXISTING, &reader), "ok");
    for (const DWORD disposition : {CREATE_ALWAYS, TRUNCATE_EXISTING}) {
        EXPECT_EQ(Open(Wide("file"), kW, kShareR, disposition), "32");
        EXPECT_EQ(OpenElsewhere(kW, kShareR, disposition), "32");
    }
    EXPECT_EQ(Open(Wide("file"), kR, kShareR, CREATE_ALWAYS), "32");  // truncating is writing
    EXPECT_EQ(Get("file"), "data");
    CloseHandle(reader);
}

TEST_F(Sharing, AKilledProcessKeepsNothing) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        HANDLE file = nullptr;
        const bool open = Open(Wide("file"), kR | kW, 0, OPEN_EXISTING, &file) == "ok";
        (void)!write(ready[1], &open, 1);
        pause();
    }
    char open = 0;
    ASSERT_EQ(read(ready[0], &open, 1), 1);
    EXPECT_TRUE(open);
    EXPECT_EQ(Open(Wide("file"), kR, kShareR, OPEN_EXISTING), "32");
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(Open(Wide("file"), kR | kW, 0, OPEN_EXISTING), "ok");
}

TEST_F(Sharing, AnOpenFileKeepsItsNameAndContent) {
    Put("other", "other");
    const std::u16string name = Wide("file");
    const std::u16string other = Wide("other");
    for (const DWORD access : {kR, kW, DWORD{0}}) {
        SCOPED_TRACE(access);
        HANDLE file = nullptr;
        ASSERT_EQ(Open(name, access, kShareR | kShareW, OPEN_EXISTING, &file), "ok");
        EXPECT_EQ(Outcome([&] { return DeleteFileW(name.c_str()); }), "32");
        EXPECT_EQ(Outcome([&] { return MoveFileW(name.c_str(), Wide("new").c_str()); }), "32");
        EXPECT_EQ(Outcome([&] { return CopyFileW(other.c_str(), name.c_str(), FALSE); }), "32");
        CloseHandle(file);
    }
    HANDLE writer = nullptr;
    ASSERT_EQ(Open(name, kW, 0, OPEN_EXISTING, &writer), "ok");
    EXPECT_EQ(Outcome([&] { return CopyFileW(name.c_str(), other.c_str(), FALSE); }), "32");
    CloseHandle(writer);
    EXPECT_EQ(Outcome([&] { return CopyFileW(name.c_str(), name.c_str(), FALSE); }), "32");
    EXPECT_EQ(Get("file") + Get("other"), "dataother");
    EXPECT_EQ(Outcome([&] { return DeleteFileW(name.c_str()); }), "ok");
}

}  // namespace
}  // namespace zelto::test
