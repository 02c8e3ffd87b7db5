// The floor under any exchange between two processes that sleep: one wake-up there, one back.

#ifndef ZELTO_BENCH_REQUEST_FUTEX_PING_PONG_H
#define ZELTO_BENCH_REQUEST_FUTEX_PING_PONG_H

#include <atomic>
#include <cstdint>
#include <sys/types.h>

namespace zelto::bench {

// Keeps the calling process on one of the processors it may use, counted from 0; does nothing when
// there are not as many. Both sides of what is compared are placed alike, one processor each.
void UseProcessor(int number);

// A second process, on processor 1, that answers each ping; ends with the object.
class FutexPingPong {
  public:
    FutexPingPong();
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
