#include "tests/soak/tracer.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/soak/soak.h"

namespace zelto::soak {
namespace {

std::string ReadText(pid_t process, uint64_t address) {
    std::string text;
    char byte = 0;
    iovec here{&byte, 1};
    for (;; ++address) {
        iovec there{reinterpret_cast<void*>(address), 1};
        if (process_vm_readv(process, &here, 1, &there, 1, 0) != 1 || byte == 0)
            return text;
        text += byte;
    }
}

std::string LinkTarget(const std::string& link) {
    std::error_code failed;
    return std::filesystem::read_symlink(link, failed).string();
}

[[noreturn]] void WorkUnderTrace(const std::function<int()>& work) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(1);
    raise(SIGSTOP);
    _exit(work());
}

class Run {
  public:
    Run(pid_t process, const BeforeCall& before, const AfterCall& after)
        : process_(process), before_(before), after_(after) {}

    // The status to tell, once the process has ended.
    int Follow() {
        int status = 0;
        waitpid(process_, &status, 0);
        Require(WIFSTOPPED(status), "this host lets nobody trace");
        ptrace(PTRACE_SETOPTIONS, process_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        long signal = 0;
        while (ptrace(PTRACE_SYSCALL, process_, nullptr, signal) == 0) {
            waitpid(process_, &status, 0);
            if (!WIFSTOPPED(status))
                break;
            const bool at_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
            signal = at_call ? 0 : WSTOPSIG(status);
            if (at_call && !TakeCall())
                return End();
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    bool TakeCall() {
        __ptrace_syscall_info info{};
        ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof info, &info);
        if (info.op == PTRACE_SYSCALL_INFO_EXIT) {
            after_(call_, info.exit.rval);
            return true;
        }
        call_.process = process_;
        call_.number = static_cast<long>(info.entry.nr);
        std::copy(std::begin(info.entry.args), std::end(info.entry.args), call_.arguments.begin());
        return before_(call_);
    }

    int End() const {
        kill(process_, SIGKILL);
        int status = 0;
        while (waitpid(process_, &status, 0) == process_ && WIFSTOPPED(status))
            ptrace(PTRACE_CONT, process_, nullptr, nullptr);
        return kEndedByTracer;
    }

    pid_t process_;
    const BeforeCall& before_;
    const AfterCall& after_;
    TracedCall call_;
};

}  // namespace

std::string TracedCall::Path(int argument, int folder) const {
    const std::string path = ReadText(process, arguments.at(static_cast<size_t>(argument)));
    if (path.starts_with('/'))
        return path;
    const auto descriptor =
        folder < 0 ? int64_t{-1} : static_cast<int32_t>(arguments.at(static_cast<size_t>(folder)));
    const std::string start = descriptor < 0
                                  ? LinkTarget("/proc/" + std::to_string(process) + "/cwd")
                                  : OpenPath(descriptor);
    return start + "/" + path;
}

std::string TracedCall::OpenPath(int64_t descriptor) const {
    return LinkTarget("/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor));
}

int RunTraced(const std::function<int()>& work, const BeforeCall& before, const AfterCall& after) {
    std::fflush(nullptr);
    const pid_t process = fork();
    Require(process >= 0, "no further process");
    if (process == 0)
        WorkUnderTrace(work);
    return Run(process, before, after).Follow();
}

}  // namespace zelto::soak
