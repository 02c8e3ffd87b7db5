#include "tools/zeltoport/turn.h"

#include <algorithm>
#include <fmt/core.h>
#include <set>

#include "plugins/zelto_port_dll/protocol.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/wire/lens.h"
#include "tools/zeltoport/session.h"

namespace zelto::tools {

namespace {

constexpr DWORD kLongTurn = 50;  // ms

// Connecting takes up to six queue pairs, the call that follows one.
constexpr int kPairsOfARun = 8;

constexpr DWORD kLateReplyPatience = 5000;  // ms
constexpr DWORD kLateReplyPause = 10;       // ms

coredll::StoreReport Describe() {
    coredll::StoreReport store;
    std::string why;
    if (!coredll::DescribeStore(store, &why))
        throw CommandError(why, kExitDevice);
    return store;
}

// A queue that the navigator may still write to although its reader is gone.
bool AwaitsALateReply(const coredll::QueueReport& queue) {
    const auto name = wire::ParseQueueName(queue.name);
    return name && !name->requests && queue.writers > 0 && queue.readers == 0;
}

bool AnyLateReply() {
    const coredll::StoreReport store = Describe();
    return std::any_of(store.queues.begin(), store.queues.end(), AwaitsALateReply);
}

}  // namespace

Turn::Turn(double patience) : turn_(static_cast<int64_t>(patience * 1e9)), since_(0) {
    if (!turn_.IsHeld()) {
        RequireDevice();
        throw CommandError(
            fmt::format("Other runs have held the device for {} seconds; --wait sets how long to "
                        "wait.",
                        patience),
            kExitNoTurn);
    }
    since_ = GetTickCount();
}

bool Turn::IsLong() const {
    return GetTickCount() - since_ >= kLongTurn;
}

void PassLeftQueues() {
    std::set<int> taken;
    for (const coredll::QueueReport& queue : Describe().queues) {
        if (const auto name = wire::ParseQueueName(queue.name))
            taken.insert(name->generation);
    }
    int first = 2;  // the generation of a process's first request
    for (const int generation : taken) {
        if (generation >= first && generation < first + kPairsOfARun)
            first = generation + 1;
    }
    // Without a window a request counts, and goes nowhere.
    for (int generation = 2; generation < first; ++generation)
        ZeltoNavPort_Cobertura();
}

void AwaitLateReplies() {
    const DWORD start = GetTickCount();
    bool late = AnyLateReply();
    while (late && GetTickCount() - start < kLateReplyPatience) {
        Sleep(kLateReplyPause);
        late = AnyLateReply();
    }
    coredll::Disconnect();  // the library has a connection of its own
    if (late)
        throw CommandError("The navigator is busy with the request of an earlier run.",
                           kExitTimeOut);
}

}  // namespace zelto::tools
