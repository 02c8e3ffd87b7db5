#include "bench/request/futex_ping_pong.h"

#include <linux/futex.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelto::bench {

namespace {

// Keeps the calling process on one of the processors it may use, counted from 0; does nothing when
// there are not as many.
void UseProcessor(int number) {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) <= number)
        return;
    int processor = 0;
    for (; !CPU_ISSET(processor, &allowed) || number-- > 0; ++processor) {
    }
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(processor, &only);
    sched_setaffinity(0, sizeof only, &only);
}

void Sleep(std::atomic<uint32_t>& word, uint32_t expected) {
    while (word.load() == expected)
        syscall(SYS_futex, &word, FUTEX_WAIT, expected, nullptr, nullptr, 0);
}

void Wake(std::atomic<uint32_t>& word) {
    word.fetch_add(1);
    syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

}  // namespace

OnFirstProcessor::OnFirstProcessor() {
    sched_getaffinity(0, sizeof allowed_, &allowed_);
    UseProcessor(0);
}

OnFirstProcessor::~OnFirstProcessor() {
    sched_setaffinity(0, sizeof allowed_, &allowed_);
}

FutexPingPong::FutexPingPong(Partner partner)
    : words_(static_cast<Words*>(
          mmap(nullptr, sizeof(Words), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))),
      partner_(fork()) {
    if (partner_ == 0) {
        if (partner == Partner::kOnSecondProcessor)
            UseProcessor(1);
        Answer(*words_);
    }
}

FutexPingPong::~FutexPingPong() {
    kill(partner_, SIGKILL);
    waitpid(partner_, nullptr, 0);
    munmap(words_, sizeof(Words));
}

void FutexPingPong::Ping() {
    const uint32_t before = words_->pong.load();
    Wake(words_->ping);
    Sleep(words_->pong, before);
}

void FutexPingPong::Answer(Words& words) {
    for (uint32_t seen = 0;; ++seen) {
        Sleep(words.ping, seen);
        Wake(words.pong);
    }
}

}  // namespace zelto::bench
