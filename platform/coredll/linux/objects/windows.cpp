#include "platform/coredll/api/windows.h"

#include <algorithm>
#include <cstring>

#include "platform/coredll/api/clock.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/objects/names.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_guard.h"
#include "platform/coredll/linux/objects/waiting.h"
#include "platform/coredll/linux/objects/witness_ring.h"

namespace zelto::coredll {
namespace {

constexpr DWORD kOtherProcessWindow = ERROR_ACCESS_DENIED;

// A handle: serial, slot + 1, and a clear bit 0 for SetForegroundWindow's use.
constexpr uint32_t kSlotShift = 1;
constexpr uint32_t kSerialShift = 9;
constexpr uint32_t kSerialMask = (1u << 20) - 1;
static_assert(kMaxWindows < 1u << (kSerialShift - kSlotShift));

HWND HandleOf(const Store& store, const WindowSlot& window) {
    const auto index = static_cast<uint32_t>(&window - store.windows);
    const uint32_t value =
        ((window.serial & kSerialMask) << kSerialShift) | ((index + 1) << kSlotShift);
    return reinterpret_cast<HWND>(uintptr_t{value});
}

uint32_t Number(HWND handle) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle));
}

// The window of a handle, dead owner or not; null when there is none. Lock held.
WindowSlot* WindowOf(Store& store, HWND handle) {
    const auto value = reinterpret_cast<uintptr_t>(handle) & ~uintptr_t{1};
    const uint32_t index = (static_cast<uint32_t>(value >> kSlotShift) & 0xFF) - 1;
    if (index >= kMaxWindows)
        return nullptr;
    WindowSlot& window = store.windows[index];
    const bool same = window.state.load() == kLive &&
                      reinterpret_cast<uintptr_t>(HandleOf(store, window)) == value;
    return same ? &window : nullptr;
}

// The owner of a window, nobody when there is no such window.
ProcessToken OwnerOf(Store& store, HWND handle) {
    const StoreLock lock(store);
    const WindowSlot* window = lock.IsHeld() ? WindowOf(store, handle) : nullptr;
    return window == nullptr ? ProcessToken() : window->owner;
}

// Whether the window is there and its process alive; a dead one's remains are freed. The question
// to the host is asked without the lock.
bool WindowLives(Store& store, HWND handle) {
    const ProcessToken owner = OwnerOf(store, handle);
    if (!owner)
        return false;
    if (TokenLives(store, owner))
        return true;
    SweepDeadProcesses(store);
    return false;
}

// Messages in the window's ring. Lock held.
uint32_t Waiting(const WindowSlot& window) {
    const uint32_t waiting = window.posted.load() - window.taken.load();
    return std::min(waiting, kMaxPostedMessages);
}

void WitnessWindow(Store& store, const WindowSlot& window, WitnessKind kind) {
    Witness(store,
            {.kind = kind, .name = window.class_name, .window = Number(HandleOf(store, window))});
}

void WitnessPosted(Store& store, HWND handle, WitnessKind kind, const PostedMessage& posted,
                   DWORD error = ERROR_SUCCESS) {
    Witness(store, {.kind = kind, .code = error, .window = Number(handle), .posted = posted});
}

// Appends to the ring; false when it is full. Lock held.
bool Post(Store& store, WindowSlot& window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (Waiting(window) >= kMaxPostedMessages)
        return false;
    const uint32_t place = window.posted.load();
    WindowRing& ring = store.rings[&window - store.windows];
    ring.messages[place % kMaxPostedMessages] = {message, wparam, static_cast<uint32_t>(lparam),
                                                 GetTickCount()};
    // Release: the message is whole when it counts as posted, so a kill loses it or keeps it.
    window.posted.store(place + 1, std::memory_order_release);
    return true;
}

void AnnounceTo(Store& store, ProcessToken owner) {
    if (ProcessSlot* process = ProcessOf(store, owner))
        AnnounceChange(process->messages);
}

WindowSlot* MakeWindow(Store& store, LPCWSTR class_name, LPCWSTR title, DWORD style) {
    WindowSlot* const end = store.windows + kMaxWindows;
    WindowSlot* window = std::find_if(
        store.windows, end, [](const WindowSlot& slot) { return slot.state.load() == kFree; });
    if (window == end)
        return nullptr;
    ++window->serial;
    window->owner = MyToken();
    window->visible = (style & WS_VISIBLE) != 0 ? 1 : 0;
    window->minimized = 0;
    window->taken.store(0);
    window->posted.store(0);
    CopyWindowText(window->class_name, class_name);
    CopyWindowText(window->title, title);
    // Release: whoever finds the window live, after a kill even, finds it whole.
    window->state.store(kLive, std::memory_order_release);
    WitnessWindow(store, *window, WitnessKind::kWindowMade);
    return window;
}

HWND TryCreateWindow(Store& store, LPCWSTR class_name, LPCWSTR title, DWORD style) {
    const StoreLock lock(store);
    const WindowSlot* window =
        lock.IsHeld() ? MakeWindow(store, class_name, title, style) : nullptr;
    return window == nullptr ? nullptr : HandleOf(store, *window);
}

HWND FindWindowFrom(Store& store, uint32_t& next, LPCWSTR class_name, LPCWSTR title) {
    const StoreLock lock(store);
    for (; lock.IsHeld() && next < kMaxWindows; ++next) {
        const WindowSlot& window = store.windows[next];
        if (window.state.load() == kLive && SameWindowText(window.class_name, class_name) &&
            SameWindowText(window.title, title)) {
            return HandleOf(store, window);
        }
    }
    return nullptr;
}

// What ShowWindow makes of a command.
struct ShowChange {
    bool visible;
    bool minimized;
};

ShowChange ChangeFor(int command, bool minimized) {
    switch (command) {
        case SW_HIDE:
            return {false, minimized};
        case SW_MINIMIZE:
            return {true, true};
        case SW_SHOW:
        case SW_SHOWNA:
            return {true, minimized};
        default:
            return {true, false};
    }
}

// Changes the window and tells its owner; its visibility before. Lock held.
bool ApplyShow(Store& store, WindowSlot& window, int command) {
    const bool was_visible = window.visible != 0;
    const bool was_minimized = window.minimized != 0;
    const ShowChange change = ChangeFor(command, was_minimized);
    window.visible = change.visible ? 1 : 0;
    window.minimized = change.minimized ? 1 : 0;
    if (change.visible != was_visible)
        Post(store, window, WM_SHOWWINDOW, window.visible, 0);
    if (change.minimized != was_minimized) {
        Post(store, window, WM_SIZE, change.minimized ? SIZE_MINIMIZED : SIZE_RESTORED, 0);
    }
    return was_visible;
}

// Runs `change` on a live window under the lock and wakes its owner; FALSE with 1400 without one.
template <class Change>
BOOL ChangeWindow(HWND handle, Change change) {
    Store* store = OpenStore();
    if (store == nullptr || !WindowLives(*store, handle))
        return Fail(ERROR_INVALID_WINDOW_HANDLE);
    ProcessToken owner;
    BOOL result = FALSE;
    {
        const StoreLock lock(*store);
        WindowSlot* window = lock.IsHeld() ? WindowOf(*store, handle) : nullptr;
        if (window == nullptr)
            return Fail(ERROR_INVALID_WINDOW_HANDLE);
        owner = window->owner;
        result = change(*store, *window);
    }
    AnnounceTo(*store, owner);
    return result;
}

enum class Taken { kMessage, kNothing, kNoWindow };

void FillMessage(MSG& message, HWND handle, const PostedMessage& posted) {
    message = MSG{handle,      posted.message, posted.wparam, static_cast<LPARAM>(posted.lparam),
                  posted.time, POINT{0, 0}};
}

// The next message of the window, or of any of this process. `seen` is for the wait after it.
Taken TakeMessage(Store& store, HWND handle, MSG& message, uint32_t& seen) {
    const StoreLock lock(store);
    const ProcessSlot* me = ProcessOf(store, MyToken());
    if (!lock.IsHeld() || me == nullptr)
        return lock.IsHeld() || StoreIsGone() ? Taken::kNoWindow : Taken::kNothing;
    seen = me->messages.sequence.load();
    if (handle != nullptr) {
        const WindowSlot* asked = WindowOf(store, handle);
        if (asked == nullptr || asked->owner != MyToken())
            return Taken::kNoWindow;
    }
    for (WindowSlot& window : store.windows) {
        if (window.state.load() != kLive || window.owner != MyToken())
            continue;
        const HWND own = HandleOf(store, window);
        if ((handle != nullptr && own != handle) || Waiting(window) == 0)
            continue;
        const uint32_t place = window.taken.load();
        const WindowRing& ring = store.rings[&window - store.windows];
        const PostedMessage& posted = ring.messages[place % kMaxPostedMessages];
        FillMessage(message, own, posted);
        WitnessPosted(store, own, WitnessKind::kTaken, posted);
        window.taken.store(place + 1, std::memory_order_release);
        return Taken::kMessage;
    }
    return Taken::kNothing;
}

}  // namespace
}  // namespace zelto::coredll

using namespace zelto::coredll;

HWND CreateWindowExW(DWORD, LPCWSTR class_name, LPCWSTR title, DWORD style, int, int, int, int,
                     HWND, void*, HINSTANCE, void*) {
    if (!ValidWindowText(class_name) || *class_name == 0 ||
        (title != nullptr && !ValidWindowText(title))) {
        return Fail(ERROR_INVALID_PARAMETER, HWND{});
    }
    Store* store = OpenStore();
    if (store == nullptr)
        return Fail(ERROR_ACCESS_DENIED, HWND{});
    HWND window = TryCreateWindow(*store, class_name, title, style);
    if (window == nullptr && SweepDeadProcesses(*store)) {
        window = TryCreateWindow(*store, class_name, title, style);
    }
    return window != nullptr ? window : Fail(ERROR_NOT_ENOUGH_MEMORY, HWND{});
}

BOOL DestroyWindow(HWND handle) {
    return ChangeWindow(handle, [](Store& store, WindowSlot& window) {
        if (window.owner != MyToken())
            return Fail(kOtherProcessWindow);
        WitnessWindow(store, window, WitnessKind::kWindowGone);
        window.state.store(kFree);
        return BOOL{TRUE};
    });
}

HWND FindWindowW(LPCWSTR class_name, LPCWSTR title) {
    Store* store = OpenStore();
    if (store == nullptr)
        return nullptr;
    for (uint32_t next = 0;; ++next) {
        HWND handle = FindWindowFrom(*store, next, class_name, title);
        if (handle == nullptr || WindowLives(*store, handle))
            return handle;
    }
}

BOOL PostMessageW(HWND handle, UINT message, WPARAM wparam, LPARAM lparam) {
    return ChangeWindow(handle, [&](Store& store, WindowSlot& window) {
        const bool room = Post(store, window, message, wparam, lparam);
        WitnessPosted(store, handle, WitnessKind::kAnnounced,
                      {message, wparam, static_cast<uint32_t>(lparam), 0},
                      room ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_NOT_ENOUGH_QUOTA});
        return room ? BOOL{TRUE} : Fail(ERROR_NOT_ENOUGH_QUOTA);
    });
}

BOOL GetMessageW(MSG* message, HWND handle, UINT first, UINT last) {
    if (message == nullptr || first != 0 || last != 0)
        return Fail(ERROR_INVALID_PARAMETER, -1);
    Store* store = OpenStore();
    if (store == nullptr)
        return Fail(ERROR_INVALID_WINDOW_HANDLE, -1);
    const Deadline never(INFINITE);
    for (;;) {
        uint32_t seen = 0;
        const Taken taken = TakeMessage(*store, handle, *message, seen);
        if (taken == Taken::kMessage)
            return message->message == WM_QUIT ? FALSE : TRUE;
        ProcessSlot* me = ProcessOf(*store, MyToken());
        if (taken == Taken::kNoWindow || me == nullptr)
            return Fail(ERROR_INVALID_WINDOW_HANDLE, -1);
        AwaitChange(me->messages, seen, never);
    }
}

BOOL ShowWindow(HWND handle, int command) {
    return ChangeWindow(handle, [&](Store& store, WindowSlot& window) {
        return ApplyShow(store, window, command) ? BOOL{TRUE} : BOOL{FALSE};
    });
}

BOOL SetForegroundWindow(HWND handle) {
    const bool restore = (reinterpret_cast<uintptr_t>(handle) & 1) != 0;
    return ChangeWindow(handle, [&](Store& store, WindowSlot& window) {
        if (restore && window.minimized != 0)
            ApplyShow(store, window, SW_RESTORE);
        Post(store, window, WM_ACTIVATE, 1, 0);
        return BOOL{TRUE};
    });
}
