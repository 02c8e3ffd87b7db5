#include "tools/zeltoport/turn.h"

#include <algorithm>
#include <charconv>
#include <fmt/core.h>
#include <set>
#include <string_view>

#include "plugins/zelto_port_dll/protocol.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
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

// The generation in a queue's name, or 0.
int GenerationOf(const coredll::QueueReport& queue) {
    const std::string name = Utf8FromWide(queue.name);
    const std::string_view prefix = kQueuePrefix;
    int generation = 0;
    if (name.starts_with(prefix))
        std::from_chars(name.data() + prefix.size(), name.data() + name.size(), generation);
    return generation;
}

// A queue that the navigator may still write to although its reader is gone.
bool AwaitsALateReply(const coredll::QueueReport& queue) {
    return GenerationOf(queue) != 0 && queue.writers > 0 && queue.readers == 0 &&
           queue.name.ends_with(TEXT("_rx"));
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
    for (const coredll::QueueReport& queue : Describe().queues)
        taken.insert(GenerationOf(queue));
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
