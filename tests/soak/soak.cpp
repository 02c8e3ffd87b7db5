#include "tests/soak/soak.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/objects/store.h"

namespace zelto::soak {
namespace {

constexpr int kMostWorkers = 8;

int Guarded(const std::function<int()>& body) {
    try {
        return body();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "FAILED: %s\n", error.what());
        return 1;
    }
}

// Becomes the program; its output goes to the file, nothing comes in.
[[noreturn]] void Execute(const std::vector<std::string>& command, const std::string& output) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(out, STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

bool EndsWithin(pid_t pid, double seconds) {
    const int process = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    pollfd question{process, POLLIN, 0};
    const bool ended = poll(&question, 1, static_cast<int>(seconds * 1000)) > 0;
    close(process);
    return ended;
}

}  // namespace

void Require(bool held, const std::string& what) {
    if (!held)
        throw Failure(what);
}

Child::Child(const std::function<int()>& body) {
    std::fflush(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        const int status = Guarded(body);
        std::fflush(nullptr);
        _exit(status);
    }
    Require(pid_ > 0, "no further process");
}

Child::Child(const std::vector<std::string>& command, const std::string& output) {
    pid_ = fork();
    if (pid_ == 0)
        Execute(command, output);
    Require(pid_ > 0, "no further process");
}

Child::Child(Child&& other) noexcept : pid_(std::exchange(other.pid_, 0)) {}

Child& Child::operator=(Child&& other) noexcept {
    std::swap(pid_, other.pid_);
    return *this;
}

Child::~Child() {
    if (pid_ <= 0)
        return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void Child::Signal(int number) const {
    if (pid_ > 0)
        kill(pid_, number);
}

void Child::AwaitStop() const {
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(pid_), &info, WSTOPPED | WEXITED | WNOWAIT);
    Require(info.si_code == CLD_STOPPED, "a process ended before it stopped");
}

int Child::Wait(double seconds) {
    Require(EndsWithin(pid_, seconds), "a process did not end in its time");
    int status = 0;
    waitpid(std::exchange(pid_, 0), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool Child::Lives() const {
    return pid_ > 0 && !EndsWithin(pid_, 0);
}

void* SharedPages(size_t size) {
    void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Require(pages != MAP_FAILED, "no shared memory");
    return pages;
}

void FreeSharedPages(void* pages, size_t size) {
    munmap(pages, size);
}

Child StartNavigator() {
    Child navigator({ZELTO_NAVIGATOR_PROGRAM}, "/dev/null");
    const Stopwatch watch;
    while (FindWindowW(TEXT("ZELTOPOCKETMAINW"), nullptr) == nullptr) {
        Require(watch.Seconds() < 5 && navigator.Lives(),
                "the navigator did not start; " + coredll::StoreProblem());
        usleep(500);
    }
    return navigator;
}

void InWorkers(int total, const std::function<void(int worker, int count)>& rounds) {
    const int workers = std::min(kMostWorkers, total);
    std::vector<Child> children;
    for (int worker = 0; worker < workers; ++worker) {
        const int count = total / workers + (worker < total % workers ? 1 : 0);
        children.emplace_back([&rounds, worker, count] {
            rounds(worker, count);
            return 0;
        });
    }
    bool held = true;
    for (Child& child : children)
        held = child.Wait(24 * 3600) == 0 && held;
    Require(held, "a worker failed");
}

int RunSoak(const std::function<void()>& body) {
    return Guarded([&body] {
        body();
        return 0;
    });
}

}  // namespace zelto::soak
