#include "platform/coredll/linux/process/child.h"

#include <cerrno>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/coredll/linux/base/monotonic.h"

namespace zelto::coredll {
namespace {

constexpr int64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr useconds_t kPause = 1000;  // between looks

// What a spawn is asked for besides the command, freed with the object.
class SpawnOrders {
  public:
    SpawnOrders(bool quiet, bool own_group) {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            if (quiet)
                posix_spawn_file_actions_addopen(&files, fd, "/dev/null", O_RDWR, 0);
        }
        // What we catch or ignore is ours alone.
        sigset_t all;
        sigfillset(&all);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(
            &attributes,
            static_cast<short>(POSIX_SPAWN_SETSIGDEF | (own_group ? POSIX_SPAWN_SETPGROUP : 0)));
    }
    ~SpawnOrders() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnOrders(const SpawnOrders&) = delete;
    SpawnOrders& operator=(const SpawnOrders&) = delete;

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

}  // namespace

ChildProgram::~ChildProgram() {
    if (process_ == 0 || end_)
        return;
    Kill();
    waitpid(process_, nullptr, 0);
}

int ChildProgram::Start(const std::vector<std::string>& command, Output output, bool own_group) {
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    const SpawnOrders orders(output == Output::kNowhere, own_group);
    own_group_ = own_group;
    const int failed = posix_spawnp(&process_, command[0].c_str(), &orders.files,
                                    &orders.attributes, words.data(), environ);
    if (failed != 0)
        process_ = 0;
    return failed;
}

std::optional<ProgramEnd> ChildProgram::Wait(uint32_t milliseconds) {
    const int64_t end = MonotonicNanoseconds() + milliseconds * kNanosecondsPerMillisecond;
    while (!end_ && process_ != 0) {
        int status = 0;
        if (waitpid(process_, &status, WNOHANG) == process_) {
            end_ = WIFSIGNALED(status) ? ProgramEnd{true, WTERMSIG(status)}
                                       : ProgramEnd{false, WEXITSTATUS(status)};
        } else if (MonotonicNanoseconds() >= end) {
            break;
        } else {
            usleep(kPause);
        }
    }
    return end_;
}

void ChildProgram::Kill() {
    if (process_ != 0 && (own_group_ || !end_))
        kill(own_group_ ? -process_ : process_, SIGKILL);
}

}  // namespace zelto::coredll
