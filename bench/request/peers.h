// What a request is held against: other ways to send some bytes to another process and wait for its
// answer. Each has a process of its own that answers, and ends with the object.

#ifndef ZELTO_BENCH_REQUEST_PEERS_H
#define ZELTO_BENCH_REQUEST_PEERS_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <mqueue.h>
#include <string>
#include <sys/types.h>

namespace zelto::bench {

// Keeps the calling process on one of the processors it may use, counted from 0; where there are
// not as many, and for kAnyProcessor, it stays free.
constexpr int kAnyProcessor = -1;
void UseProcessor(int number);

// A process that runs `body`, for ever, on a processor.
class Partner {
  public:
    Partner(int processor, const std::function<void()>& body);
    ~Partner();
    Partner(const Partner&) = delete;
    Partner& operator=(const Partner&) = delete;
    void Pause();
    void Resume();

  private:
    pid_t id_;
};

// The floor: two words in shared memory, which each side waits for in turn.
class PingPong {
  public:
    enum class Wait {
        kSleep,  // on a futex
        kSpin,   // looks at the word without end
        kYield,  // looks at it and gives the processor away now and then, as the library's waits do
    };

    PingPong(Wait wait, int processor);
    ~PingPong();
    void Exchange();
    void Pause() { partner_.Pause(); }
    void Resume() { partner_.Resume(); }

  private:
    struct Words {
        alignas(64) std::atomic<uint32_t> ping;
        alignas(64) std::atomic<uint32_t> pong;
    };

    static Words* Map();

    Wait wait_;
    Words* words_;
    Partner partner_;
};

// POSIX message queues: a pair that is kept open, or one for each exchange that the kept pair
// announces.
class PosixQueues {
  public:
    PosixQueues(bool fresh, int processor);
    ~PosixQueues();
    void Exchange();

  private:
    void ExchangeFresh();

    std::string name_;
    bool fresh_;
    uint32_t number_ = 0;
    mqd_t requests_;
    mqd_t replies_;
    Partner partner_;
};

// A pair of sockets that keep messages apart.
class SequencedPackets {
  public:
    explicit SequencedPackets(int processor);
    ~SequencedPackets();
    void Exchange();

  private:
    struct Ends {
        int own;
        int partner;
    };

    static Ends OpenPair();

    Ends ends_;
    Partner partner_;
};

}  // namespace zelto::bench

#endif
