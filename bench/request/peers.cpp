#include "bench/request/peers.h"

#include <cstdlib>
#include <fcntl.h>
#include <linux/futex.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelto::bench {
namespace {

constexpr size_t kMessage = 64;  // bytes of the longest
constexpr char kRequest[] = "S|42.5000000,1.5000000,,,0\n";
constexpr char kReply[] = "A|";

void WaitFor(std::atomic<uint32_t>& word, uint32_t expected, PingPong::Wait wait) {
    constexpr int kLooksBeforeYield = 64;
    for (int looks = 1; word.load(std::memory_order_acquire) == expected; ++looks) {
        if (wait == PingPong::Wait::kSleep)
            syscall(SYS_futex, &word, FUTEX_WAIT, expected, nullptr, nullptr, 0);
        else if (wait == PingPong::Wait::kYield && looks % kLooksBeforeYield == 0)
            sched_yield();
    }
}

void Signal(std::atomic<uint32_t>& word, PingPong::Wait wait) {
    word.fetch_add(1, std::memory_order_release);
    if (wait == PingPong::Wait::kSleep)
        syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

void Require(bool good) {
    if (!good)
        std::abort();
}

mqd_t OpenQueue(const std::string& name, int flags) {
    mq_attr attributes{};
    attributes.mq_maxmsg = 4;
    attributes.mq_msgsize = kMessage;
    const mqd_t queue = mq_open(name.c_str(), flags, 0600, &attributes);
    Require(queue != -1);
    return queue;
}

std::string Numbered(const std::string& name, uint32_t number, const char* suffix) {
    return name + "-" + std::to_string(number) + suffix;
}

void AnswerKept(mqd_t requests, mqd_t replies) {
    char bytes[kMessage];
    while (mq_receive(requests, bytes, sizeof bytes, nullptr) > 0)
        mq_send(replies, kReply, sizeof kReply, 0);
}

void AnswerFresh(mqd_t announcements, const std::string& name) {
    uint32_t number = 0;
    char bytes[kMessage];
    while (mq_receive(announcements, bytes, sizeof bytes, nullptr) > 0) {
        ++number;
        const mqd_t requests = OpenQueue(Numbered(name, number, "-tx"), O_RDONLY);
        const mqd_t replies = OpenQueue(Numbered(name, number, "-rx"), O_WRONLY);
        mq_receive(requests, bytes, sizeof bytes, nullptr);
        mq_send(replies, kReply, sizeof kReply, 0);
        mq_close(requests);
        mq_close(replies);
    }
}

}  // namespace

void UseProcessor(int number) {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) <= number ||
        number == kAnyProcessor)
        return;
    int processor = 0;
    for (; !CPU_ISSET(processor, &allowed) || number-- > 0; ++processor) {
    }
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(processor, &only);
    sched_setaffinity(0, sizeof only, &only);
}

Partner::Partner(int processor, const std::function<void()>& body) : id_(fork()) {
    if (id_ != 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    UseProcessor(processor);
    body();
    _exit(1);
}

Partner::~Partner() {
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
}

void Partner::Pause() {
    kill(id_, SIGSTOP);
}

void Partner::Resume() {
    kill(id_, SIGCONT);
}

PingPong::PingPong(Wait wait, int processor)
    : wait_(wait), words_(Map()), partner_(processor, [this] {
          for (uint32_t seen = 0;; ++seen) {
              WaitFor(words_->ping, seen, wait_);
              Signal(words_->pong, wait_);
          }
      }) {}

PingPong::~PingPong() {
    munmap(words_, sizeof(Words));
}

PingPong::Words* PingPong::Map() {
    void* memory =
        mmap(nullptr, sizeof(Words), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Require(memory != MAP_FAILED);
    return static_cast<Words*>(memory);
}

void PingPong::Exchange() {
    const uint32_t before = words_->pong.load(std::memory_order_relaxed);
    Signal(words_->ping, wait_);
    WaitFor(words_->pong, before, wait_);
}

PosixQueues::PosixQueues(bool fresh, int processor)
    : name_("/zelto-bench-" + std::to_string(getpid()) + (fresh ? "-fresh" : "-kept")),
      fresh_(fresh),
      requests_(OpenQueue(name_ + "-tx", O_RDWR | O_CREAT)),
      replies_(OpenQueue(name_ + "-rx", O_RDWR | O_CREAT)),
      partner_(processor, [this] {
          if (fresh_)
              AnswerFresh(requests_, name_);
          else
              AnswerKept(requests_, replies_);
      }) {}

PosixQueues::~PosixQueues() {
    mq_close(requests_);
    mq_close(replies_);
    mq_unlink((name_ + "-tx").c_str());
    mq_unlink((name_ + "-rx").c_str());
}

void PosixQueues::Exchange() {
    if (fresh_)
        return ExchangeFresh();
    char bytes[kMessage];
    Require(mq_send(requests_, kRequest, sizeof kRequest, 0) == 0 &&
            mq_receive(replies_, bytes, sizeof bytes, nullptr) > 0);
}

void PosixQueues::ExchangeFresh() {
    ++number_;
    const std::string to = Numbered(name_, number_, "-tx");
    const std::string from = Numbered(name_, number_, "-rx");
    const mqd_t requests = OpenQueue(to, O_WRONLY | O_CREAT);
    const mqd_t replies = OpenQueue(from, O_RDONLY | O_CREAT);
    char bytes[kMessage];
    Require(mq_send(requests_, "n", 1, 0) == 0 &&
            mq_send(requests, kRequest, sizeof kRequest, 0) == 0 &&
            mq_receive(replies, bytes, sizeof bytes, nullptr) > 0);
    mq_close(requests);
    mq_close(replies);
    mq_unlink(to.c_str());
    mq_unlink(from.c_str());
}

SequencedPackets::SequencedPackets(int processor)
    : ends_(OpenPair()), partner_(processor, [this] {
          char bytes[kMessage];
          while (recv(ends_.partner, bytes, sizeof bytes, 0) > 0)
              send(ends_.partner, kReply, sizeof kReply, 0);
      }) {}

SequencedPackets::Ends SequencedPackets::OpenPair() {
    int ends[2];
    Require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0);
    return {ends[0], ends[1]};
}

SequencedPackets::~SequencedPackets() {
    close(ends_.own);
    close(ends_.partner);
}

void SequencedPackets::Exchange() {
    char bytes[kMessage];
    Require(send(ends_.own, kRequest, sizeof kRequest, 0) > 0 &&
            recv(ends_.own, bytes, sizeof bytes, 0) > 0);
}

}  // namespace zelto::bench
