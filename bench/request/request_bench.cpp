// One request, ZeltoNavPort_Goto to its reply, against other ways to ask another process. What a
// wait of the library does first is decided once a process, so ZELTO_SPIN_US says which rows there
// are: sleeping ones with 0, else spinning ones.

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <sched.h>
#include <string>
#include <vector>

#include "bench/contest.h"
#include "bench/request/peers.h"
#include "bench/request/responder.h"
#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/support/temp_device.h"

namespace zelto::bench {
namespace {

constexpr int kExchanges = 2'000;

template <class Peer>
std::function<void()> Exchanges(Peer& peer) {
    return [&peer] {
        for (int i = 0; i < kExchanges; ++i)
            peer.Exchange();
    };
}

void Requests() {
    for (int i = 0; i < kExchanges; ++i) {
        if (ZeltoNavPort_Goto(42.5, 1.5, nullptr) != 0)
            std::abort();
    }
}

// A device with a responder on the processor, to which this process is connected.
class Navigator {
  public:
    explicit Navigator(int processor) : responder_(processor, RunResponder) {
        while (FindWindowW(TEXT("ZELTOPOCKETMAINW"), nullptr) == nullptr)
            ::Sleep(1);
        if (ZeltoNavPort_Init() != 0)
            std::abort();
    }

  private:
    Partner responder_;
};

class Pinned {
  public:
    explicit Pinned(int processor) {
        sched_getaffinity(0, sizeof allowed_, &allowed_);
        UseProcessor(processor);
    }
    ~Pinned() { sched_setaffinity(0, sizeof allowed_, &allowed_); }
    Pinned(const Pinned&) = delete;
    Pinned& operator=(const Pinned&) = delete;

  private:
    cpu_set_t allowed_{};
};

void Sleeping(benchmark::State& state, int partners, const char* goal) {
    const Navigator navigator(partners);
    PingPong floor(PingPong::Wait::kSleep, partners);
    PosixQueues kept(false, partners);
    PosixQueues fresh(true, partners);
    SequencedPackets packets(partners);
    const Pinned here(0);
    Contest(state, kExchanges, goal,
            {{"ours", Requests},
             {"futex ping-pong", Exchanges(floor)},
             {"POSIX queues kept open", Exchanges(kept)},
             {"POSIX queues, fresh", Exchanges(fresh)},
             {"seqpacket sockets", Exchanges(packets)}},
            Clock::kWall);
}

// Whoever spins holds its processor, so each of these partners stands still while others are timed.
std::function<void()> InTurn(PingPong& peer) {
    return [&peer] {
        peer.Resume();
        for (int i = 0; i < kExchanges; ++i)
            peer.Exchange();
        peer.Pause();
    };
}

void Spinning(benchmark::State& state, bool pinned) {
    const Navigator navigator(pinned ? 1 : kAnyProcessor);
    PingPong bare(PingPong::Wait::kSpin, 1);
    PingPong yielding(PingPong::Wait::kYield, 1);
    bare.Pause();
    yielding.Pause();
    const Pinned here(pinned ? 0 : kAnyProcessor);
    Contest(state, kExchanges, "1200 ns",
            {{"ours", Requests},
             {"spinning ping-pong", InTurn(bare)},
             {"look-and-yield ping-pong", InTurn(yielding)}},
            Clock::kWall);
}

const bool kAdded = [] {
    static const test::TempDevice device;
    RegisterNavigator();
    const char* spin = std::getenv("ZELTO_SPIN_US");
    if (spin != nullptr && std::string(spin) == "0") {
        AddRow("request/one processor",
               [](benchmark::State& state) { Sleeping(state, 0, "1.25 futex ping-pong"); });
        AddRow("request/two processors, sleeping",
               [](benchmark::State& state) { Sleeping(state, 1, "1.15 futex ping-pong"); });
        return true;
    }
    AddRow("request/two processors, spinning",
           [](benchmark::State& state) { Spinning(state, false); });
    AddRow("request/two processors, spinning, pinned",
           [](benchmark::State& state) { Spinning(state, true); });
    return true;
}();

}  // namespace
}  // namespace zelto::bench
