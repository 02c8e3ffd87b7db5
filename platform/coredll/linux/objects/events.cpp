#include "platform/coredll/linux/objects/events.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/coredll/api/events.h"
#include "platform/coredll/linux/base/handle_table.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/objects/ends.h"
#include "platform/coredll/linux/objects/names.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_guard.h"
#include "platform/coredll/linux/objects/waiting.h"

namespace zelto::coredll {
namespace {

// A handle's word: the address of an event of this process alone, or an end of a named one with
// the low bit set.
constexpr uintptr_t kNamedBit = 1;
static_assert(alignof(EventState) > kNamedBit);

uintptr_t WordOfEnd(uint32_t end) {
    return (uintptr_t{end} << 1) | kNamedBit;
}

uint32_t FindOrMakeEvent(Store& store, const ObjectName& name, bool manual_reset, bool initial,
                         bool& existing) {
    uint32_t free = kMaxEvents;
    for (uint32_t i = kMaxEvents; i-- > 0;) {
        EventSlot& slot = store.events[i];
        existing = slot.state.load() == kLive && SameName(slot.name, name);
        if (existing)
            return i;
        if (slot.state.load() == kFree)
            free = i;
    }
    if (free == kMaxEvents)
        return free;
    EventSlot& slot = store.events[free];
    CopyName(slot.name, name);
    slot.event.manual_reset = manual_reset ? 1 : 0;
    slot.event.signalled.store(initial ? 1 : 0);
    // Release: whoever finds the event live, after a kill even, finds it whole.
    slot.state.store(kLive, std::memory_order_release);
    return free;
}

// An end on the named event, kNoEnd when a table is full or the lock not to be had.
uint32_t TryOpenEvent(Store& store, const ObjectName& name, bool manual_reset, bool initial,
                      bool& existing) {
    const StoreLock lock(store);
    if (!lock.IsHeld())
        return kNoEnd;
    const uint32_t index = FindOrMakeEvent(store, name, manual_reset, initial, existing);
    if (index == kMaxEvents)
        return kNoEnd;
    const uint32_t end = AddEnd(store, EndKind::kEvent, index);
    if (end == kNoEnd && !existing)
        store.events[index].state.store(kFree);
    return end;
}

void CloseNamedEvent(Store& store, uintptr_t end) {
    const StoreLock lock(store);
    const EndSlot* slot = lock.IsHeld() ? MyEnd(store, end, EndKind::kEvent) : nullptr;
    if (slot == nullptr)
        return;  // without the lock it goes with the process
    const uint32_t event = slot->object;
    DropEnd(store, static_cast<uint32_t>(end));
    const EndSlot* top = store.ends + std::min(store.end_top, kMaxEnds);
    const bool held = std::any_of(std::as_const(store).ends, top, [event](const EndSlot& other) {
        return other.state.load() == kLive && other.kind == EndKind::kEvent &&
               other.object == event;
    });
    if (!held)
        store.events[event].state.store(kFree);
}

EventState* EventOfWord(uintptr_t word) {
    if ((word & kNamedBit) == 0) {
        return reinterpret_cast<EventState*>(word);
    }
    Store* store = OpenStore();
    if (store == nullptr)
        return nullptr;
    const StoreLock lock(*store);
    const EndSlot* slot = lock.IsHeld() ? MyEnd(*store, word >> 1, EndKind::kEvent) : nullptr;
    return slot == nullptr ? nullptr : &store->events[slot->object].event;
}

EventState* EventOfHandle(HANDLE handle) {
    uintptr_t word = 0;
    return LookUpHandle(handle, HandleKind::kEvent, word) ? EventOfWord(word) : nullptr;
}

bool TakeSignal(EventState& event) {
    if (event.manual_reset != 0)
        return event.signalled.load() != 0;
    uint32_t signalled = 1;
    return event.signalled.compare_exchange_strong(signalled, 0);
}

DWORD WaitForEvent(EventState& event, bool named, DWORD timeout) {
    const Deadline deadline(timeout);
    for (;;) {
        if (named && StoreIsGone())
            return Fail(ERROR_INVALID_HANDLE, DWORD{WAIT_FAILED});
        const uint32_t seen = event.changed.sequence.load();
        if (TakeSignal(event))
            return WAIT_OBJECT_0;
        if (deadline.Passed())
            return WAIT_TIMEOUT;
        AwaitChange(event.changed, seen, deadline);
    }
}

HANDLE MakeEventHandle(uintptr_t word, DWORD error) {
    const HANDLE handle = MakeHandle(HandleKind::kEvent, word);
    if (handle == nullptr) {
        CloseEventWord(word);
        return Fail(ERROR_NOT_ENOUGH_MEMORY, handle);
    }
    return Succeed(error, handle);
}

HANDLE CreateLocalEvent(bool manual_reset, bool initial) {
    auto* event = new (std::nothrow) EventState{};
    if (event == nullptr)
        return Fail(ERROR_NOT_ENOUGH_MEMORY, HANDLE{});
    event->manual_reset = manual_reset ? 1 : 0;
    event->signalled.store(initial ? 1 : 0);
    return MakeEventHandle(reinterpret_cast<uintptr_t>(event), ERROR_SUCCESS);
}

bool ValidEventName(LPCWSTR name, ObjectName& object_name) {
    return std::char_traits<WCHAR>::find(name, std::char_traits<WCHAR>::length(name), u'\\') ==
               nullptr &&
           MakeName(object_name, name);
}

}  // namespace

DWORD WaitForEventWord(uintptr_t word, DWORD timeout) {
    EventState* event = EventOfWord(word);
    return event != nullptr ? WaitForEvent(*event, (word & kNamedBit) != 0, timeout)
                            : Fail(ERROR_INVALID_HANDLE, DWORD{WAIT_FAILED});
}

void CloseEventWord(uintptr_t word) {
    if ((word & kNamedBit) == 0) {
        delete reinterpret_cast<EventState*>(word);
    } else if (Store* store = OpenStore()) {
        CloseNamedEvent(*store, word >> 1);
    }
}

}  // namespace zelto::coredll

using namespace zelto::coredll;

HANDLE CreateEventW(SECURITY_ATTRIBUTES*, BOOL manual_reset, BOOL initial, LPCWSTR name) {
    if (name == nullptr)
        return CreateLocalEvent(manual_reset != FALSE, initial != FALSE);
    ObjectName object_name;
    if (!ValidEventName(name, object_name))
        return Fail(ERROR_INVALID_PARAMETER, HANDLE{});
    Store* store = OpenStore();
    if (store == nullptr)
        return Fail(ERROR_ACCESS_DENIED, HANDLE{});
    const auto try_open = [&](bool& existing) {
        return TryOpenEvent(*store, object_name, manual_reset != FALSE, initial != FALSE, existing);
    };
    bool existing = false;
    uint32_t end = try_open(existing);
    if (end == kNoEnd && SweepDeadProcesses(*store))
        end = try_open(existing);
    if (end == kNoEnd)
        return Fail(ERROR_NOT_ENOUGH_MEMORY, HANDLE{});
    return MakeEventHandle(WordOfEnd(end), existing ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
}

BOOL EventModify(HANDLE event, DWORD operation) {
    EventState* state = EventOfHandle(event);
    if (state == nullptr)
        return Fail(ERROR_INVALID_HANDLE);
    switch (operation) {
        case EVENT_SET:
            state->signalled.store(1);
            AnnounceChange(state->changed);
            return TRUE;
        case EVENT_RESET:
            state->signalled.store(0);
            return TRUE;
        default:
            return Fail(ERROR_INVALID_PARAMETER);
    }
}
