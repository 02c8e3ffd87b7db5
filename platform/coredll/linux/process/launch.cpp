#include "platform/coredll/linux/process/launch.h"

#include <cerrno>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {
namespace {

constexpr int kFirstFileOfOurs = 3;  // after the standard ones

// What the new processes need, made before the fork: after it they may not allocate.
struct Launch {
    const char* path;
    char* const* arguments;
    int report;  // receives an errno value; closed by the program's start
};

void ResetSignals() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number)
        sigaction(number, &action, nullptr);  // a few cannot be set
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void CloseOurFilesAtStart() {
    if (close_range(kFirstFileOfOurs, ~0u, CLOSE_RANGE_CLOEXEC) == 0)
        return;
    const long limit = sysconf(_SC_OPEN_MAX);
    for (int fd = kFirstFileOfOurs; fd < limit; ++fd)
        fcntl(fd, F_SETFD, FD_CLOEXEC);
}

// Who waits for the end of our output shall not wait for the program's.
void SetStandardFiles() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        close(fd);
    for (const int mode : {O_RDONLY, O_WRONLY, O_WRONLY})
        open("/dev/null", mode);  // the lowest number that is free
}

[[noreturn]] void ReportAndExit(const Launch& launch) {
    const int failed = errno;
    (void)!write(launch.report, &failed, sizeof failed);
    _exit(127);
}

[[noreturn]] void RunProgram(const Launch& launch) {
    SetStandardFiles();
    CloseOurFilesAtStart();
    ResetSignals();
    if (chdir("/") == 0)
        execv(launch.path, launch.arguments);
    ReportAndExit(launch);
}

// The process between us and the program: when it is gone, the program is nobody's child. _Fork,
// since nothing may run here that a lock of another of our threads could stop.
[[noreturn]] void RunIntermediate(const Launch& launch) {
    setsid();
    const pid_t program = _Fork();
    if (program == 0)
        RunProgram(launch);
    if (program < 0)
        ReportAndExit(launch);
    _exit(0);
}

// Forks with all signals blocked, so that no handler of ours runs in the child. 0 or errno.
int ForkIntermediate(const Launch& launch) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    if (child == 0)
        RunIntermediate(launch);
    const int failed = child < 0 ? errno : 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (child > 0)
        RetryInterrupted([child] { return waitpid(child, nullptr, 0); });
    return failed;
}

// Above the standard files, which the child sets anew.
UniqueFd MoveUp(int fd) {
    const UniqueFd low(fd);
    return UniqueFd(fcntl(fd, F_DUPFD_CLOEXEC, kFirstFileOfOurs));
}

}  // namespace

int StartDetached(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<char*> vector = {const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments)
        vector.push_back(const_cast<char*>(argument.c_str()));
    vector.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    const UniqueFd reports = MoveUp(ends[0]);
    UniqueFd report = MoveUp(ends[1]);
    if (!reports.IsOpen() || !report.IsOpen())
        return errno;
    const int failed = ForkIntermediate({path.c_str(), vector.data(), report.Get()});
    if (failed != 0)
        return failed;
    report.Reset(-1);
    int number = 0;
    const ssize_t got =
        RetryInterrupted([&] { return read(reports.Get(), &number, sizeof number); });
    return got == sizeof number ? number : 0;
}

}  // namespace zelto::coredll
