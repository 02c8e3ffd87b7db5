#include "platform/coredll/linux/objects/process_table.h"

#include <unistd.h>
#include <utility>

#include "platform/coredll/linux/objects/process_life.h"
#include "platform/coredll/linux/objects/witness_ring.h"

namespace zelto::coredll {
namespace {

// Read and written without order: it tells a thread about its own process only.
std::atomic<uint32_t> g_token{0};

SlotPhase PhaseOf(uint32_t use) {
    return static_cast<SlotPhase>(use % kSlotPhases);
}

bool SlotLives(uint32_t index, const ProcessSlot& slot) {
    return ProcessLives(index, slot.pid, slot.start_time[0] | uint64_t{slot.start_time[1]} << 32);
}

// Makes the slot this process's, from the use that was judged free or dead. The claim comes before
// the process id is written and the life after it, so nobody judges this process by a mixture of
// two; a claim whose maker died is taken by the next one, since one process connects at a time.
bool Claim(ProcessSlot& slot, uint32_t judged) {
    const bool remains = PhaseOf(judged) == kSlotLive || PhaseOf(judged) == kSlotUnswept;
    const uint32_t use = (judged / kSlotPhases + 1) * kSlotPhases;
    if (!slot.use.compare_exchange_strong(judged, use + (remains ? kSlotUnswept : kSlotClaimed)))
        return false;
    const uint64_t start = ProcessStartTime(static_cast<uint32_t>(getpid())).value_or(0);
    slot.pid = static_cast<uint32_t>(getpid());
    slot.start_time[0] = static_cast<uint32_t>(start);
    slot.start_time[1] = static_cast<uint32_t>(start >> 32);
    // Release: whoever sees the slot alive sees the id and the start time, too.
    slot.use.store(use + kSlotLive, std::memory_order_release);
    return true;
}

// Frees a slot whose user was found dead; false when it has changed hands meanwhile.
bool FreeDead(Store& store, ProcessSlot& slot, uint32_t judged) {
    const uint32_t process = slot.pid;
    if (!slot.use.compare_exchange_strong(judged, judged - kSlotLive + kSlotFree))
        return false;
    Witness(store, {.kind = WitnessKind::kProcessDied, .process = process});
    return true;
}

}  // namespace

ProcessToken MyToken() {
    return ProcessToken::FromWord(g_token.load(std::memory_order_relaxed));
}

ProcessToken TakeProcessSlot(Store& store) {
    for (uint32_t i = 0; i < kMaxProcesses; ++i) {
        ProcessSlot& slot = store.processes[i];
        const uint32_t use = slot.use.load(std::memory_order_acquire);
        if ((PhaseOf(use) == kSlotLive && SlotLives(i, slot)) || !Claim(slot, use))
            continue;
        const ProcessToken token = UserOf(store, i);
        g_token.store(token.Word(), std::memory_order_relaxed);
        return token;
    }
    return {};
}

void LeaveProcessSlot(Store& store, SlotPhase left) {
    if (ProcessSlot* slot = ProcessOf(store, MyToken())) {
        const uint32_t use = slot->use.load();
        slot->use.store(use - use % kSlotPhases + left);
    }
    ForgetProcessSlot();
}

void ForgetProcessSlot() {
    g_token.store(0, std::memory_order_relaxed);
}

ProcessToken UserOf(const Store& store, uint32_t slot) {
    const uint32_t use = store.processes[slot].use.load(std::memory_order_acquire);
    return PhaseOf(use) == kSlotLive ? ProcessToken(slot, use / kSlotPhases) : ProcessToken();
}

bool TokenIsCurrent(const Store& store, ProcessToken token) {
    return token.Slot() < kMaxProcesses && UserOf(store, token.Slot()) == token;
}

bool TokenLives(const Store& store, ProcessToken token) {
    if (token == MyToken())
        return static_cast<bool>(token);
    return TokenIsCurrent(store, token) && SlotLives(token.Slot(), store.processes[token.Slot()]);
}

bool FreeDeadSlots(Store& store) {
    bool found = false;
    for (uint32_t i = 0; i < kMaxProcesses; ++i) {
        ProcessSlot& slot = store.processes[i];
        // Acquire: the id and the start time that are read next belong to this use, or the
        // exchange below fails.
        uint32_t use = slot.use.load(std::memory_order_acquire);
        const uint32_t users = use - use % kSlotPhases;
        if (PhaseOf(use) == kSlotUnswept)
            found |= slot.use.compare_exchange_strong(use, users + kSlotClaimed);
        else if (PhaseOf(use) == kSlotLive && i != MyToken().Slot() && !SlotLives(i, slot))
            found |= FreeDead(store, slot, use);
    }
    return found;
}

const ProcessSlot* ProcessOf(const Store& store, ProcessToken token) {
    return token.Slot() < kMaxProcesses ? &store.processes[token.Slot()] : nullptr;
}

ProcessSlot* ProcessOf(Store& store, ProcessToken token) {
    return const_cast<ProcessSlot*>(ProcessOf(std::as_const(store), token));
}

}  // namespace zelto::coredll
