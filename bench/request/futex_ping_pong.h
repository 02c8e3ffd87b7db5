// The floor under any exchange between two processes that sleep: one wake-up there, one back.

#ifndef ZELTO_BENCH_REQUEST_FUTEX_PING_PONG_H
#define ZELTO_BENCH_REQUEST_FUTEX_PING_PONG_H

#include <atomic>
#include <cstdint>
#include <sched.h>
#include <sys/types.h>

namespace zelto::bench {

// Keeps the calling process on the first of the processors that it may use, for as long as this
// lives.
class OnFirstProcessor {
  public:
    OnFirstProcessor();
    ~OnFirstProcessor();
    OnFirstProcessor(const OnFirstProcessor&) = delete;
    OnFirstProcessor& operator=(const OnFirstProcessor&) = delete;

  private:
    cpu_set_t allowed_;
};

// A second process that answers each ping; ends with the object.
class FutexPingPong {
  public:
    enum class Partner { kAnywhere, kOnSecondProcessor };

    explicit FutexPingPong(Partner partner);
    ~FutexPingPong();
    FutexPingPong(const FutexPingPong&) = delete;
    FutexPingPong& operator=(const FutexPingPong&) = delete;

    void Ping();

  private:
    struct Words {
        alignas(64) std::atomic<uint32_t> ping;
        alignas(64) std::atomic<uint32_t> pong;
    };

    static void Answer(Words& words);

    Words* words_;
    pid_t partner_;
};

}  // namespace zelto::bench

#endif
