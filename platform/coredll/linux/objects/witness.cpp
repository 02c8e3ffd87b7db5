#include "platform/coredll/linux/objects/witness.h"

#include <algorithm>
#include <cstring>
#include <time.h>

#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/objects/process_life.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/witness_ring.h"

namespace zelto::coredll {
namespace {

int64_t WallNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

uint32_t MyProcess(const Store& store) {
    const ProcessSlot* me = ProcessOf(store, MyToken());
    return me == nullptr ? 0 : me->pid;
}

WitnessEvent EventOf(const WitnessSlot& slot, uint32_t number, int64_t wall_offset) {
    WitnessEvent event;
    event.number = number;
    event.monotonic_ns = static_cast<int64_t>(slot.time[0] | uint64_t{slot.time[1]} << 32);
    event.wall_ns = event.monotonic_ns + wall_offset;
    event.kind = slot.kind;
    event.process = slot.process;
    event.code = slot.code;
    event.window = slot.window;
    event.message = slot.message;
    event.wparam = slot.wparam;
    event.lparam = slot.lparam;
    event.size = slot.size;
    event.name.assign(slot.name, std::min(slot.name_length, kWitnessName));
    event.bytes.assign(reinterpret_cast<const char*>(slot.bytes),
                       std::min(slot.size, kWitnessBytes));
    return event;
}

// Copies the event of that number; false when it was lost: overwritten, or never finished.
bool CopyEvent(const Store& store, uint32_t number, int64_t wall_offset, WitnessEvent& event) {
    const WitnessSlot& slot = store.witness.slots[number % kWitnessEvents];
    // Acquire: the event's fields are read after its stamp was found whole.
    if (slot.stamp.load(std::memory_order_acquire) != number + 1)
        return false;
    event = EventOf(slot, number, wall_offset);
    // The fence keeps the reads above before the second look: an event that a writer began to
    // overwrite meanwhile is not taken.
    std::atomic_thread_fence(std::memory_order_acquire);
    return slot.stamp.load(std::memory_order_relaxed) == number + 1;
}

// The ring is larger than the caches near the processor: the next slot is called for before it is
// written.
void Prefetch(const WitnessSlot& slot) {
    constexpr size_t kCacheLine = 64;
    const auto* const bytes = reinterpret_cast<const char*>(&slot);
    for (size_t line = 0; line < sizeof slot; line += kCacheLine)
        __builtin_prefetch(bytes + line, 1);
}

}  // namespace

void AppendWitness(Store& store, const WitnessNote& note) {
    const uint32_t number = store.witness.next.load(std::memory_order_relaxed);
    WitnessSlot& slot = store.witness.slots[number % kWitnessEvents];
    slot.stamp.store(0, std::memory_order_relaxed);
    // The fence keeps the writes below behind the stamp's: no reader takes a mixture of two.
    std::atomic_thread_fence(std::memory_order_release);
    const auto now = static_cast<uint64_t>(MonotonicNanoseconds());
    slot.time[0] = static_cast<uint32_t>(now);
    slot.time[1] = static_cast<uint32_t>(now >> 32);
    slot.kind = note.kind;
    slot.process = note.process != 0 ? note.process : MyProcess(store);
    slot.code = note.code;
    slot.window = note.window;
    slot.message = note.posted.message;
    slot.wparam = note.posted.wparam;
    slot.lparam = note.posted.lparam;
    slot.size = note.size;
    slot.name_length = static_cast<uint32_t>(note.name.copy(slot.name, kWitnessName));
    if (note.bytes != nullptr)
        std::memcpy(slot.bytes, note.bytes, std::min(note.size, kWitnessBytes));
    // Release, both: an event is whole when its stamp says so, and counts when it is whole.
    slot.stamp.store(number + 1, std::memory_order_release);
    store.witness.next.store(number + 1, std::memory_order_release);
    Prefetch(store.witness.slots[(number + 1) % kWitnessEvents]);
}

void WitnessStopped(Store& store) {
    for (uint32_t i = 0; i < kMaxProcesses; ++i) {
        const uint32_t process = store.processes[i].pid;
        if (UserOf(store, i) && ProcessIsStopped(process))
            Witness(store, {.kind = WitnessKind::kProcessStopped, .process = process});
    }
}

void WitnessProgram(const std::string& path, DWORD error) {
    Store* store = OpenStore();
    if (store == nullptr || !IsWitnessed(*store))
        return;
    const StoreLock lock(*store);
    if (lock.IsHeld())
        Witness(*store, {.kind = WitnessKind::kProcessStarted,
                         .code = error,
                         .name = WideName(path.substr(path.rfind('/') + 1))});
}

bool ReadWitness(WitnessReport& report, uint32_t from) {
    report = {};
    const Store* store = OpenStore();
    if (store == nullptr)
        return false;
    const int64_t wall_offset = WallNanoseconds() - MonotonicNanoseconds();
    report.on = IsWitnessed(*store);
    report.next = store->witness.next.load(std::memory_order_acquire);
    const uint32_t wanted = report.next - from;
    const uint32_t there = std::min(wanted, kWitnessEvents);
    for (uint32_t number = report.next - there; number != report.next; ++number) {
        WitnessEvent event;
        if (CopyEvent(*store, number, wall_offset, event))
            report.events.push_back(std::move(event));
    }
    report.lost = wanted - static_cast<uint32_t>(report.events.size());
    return true;
}

bool RecordWitness(bool on) {
    Store* store = OpenStore();
    if (store == nullptr)
        return false;
    store->witness.recording.store(on ? 1 : 0);
    return true;
}

}  // namespace zelto::coredll
