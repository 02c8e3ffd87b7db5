// Point-to-point message queues, which the desktop lacks, as api/queues.h describes them.
//
// Names take up to 220 units and no backslash. A queue without a limit fails with 14 when its
// memory, 1 MB, is used up. Handles are closed with CloseMsgQueue, not with CloseHandle.

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "platform/coredll/coredll.h"
#include "platform/coredll/windows/queue_end.h"

namespace zelto::coredll {
namespace {

constexpr size_t kNameUnits = 220;  // of the system's 259, the rest being for its objects' parts
constexpr DWORD kLookAgain = 100;   // ms; a process that was killed wakes nobody

// A look that found nothing to do yet; what it fails with when the time is up.
constexpr DWORD kMustWait = ERROR_TIMEOUT;

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// The open handles of this process. Kept until its very end: queues stay open at unload.
class OpenEnds {
  public:
    HANDLE Add(std::unique_ptr<QueueEnd> end) {
        const std::lock_guard guard(mutex_);
        ends_.push_back(std::move(end));
        return ends_.back().get();
    }

    QueueEnd* Find(HANDLE handle) {
        const std::lock_guard guard(mutex_);
        const auto found = Position(handle);
        return found == ends_.end() ? nullptr : found->get();
    }

    std::unique_ptr<QueueEnd> Take(HANDLE handle) {
        const std::lock_guard guard(mutex_);
        const auto found = Position(handle);
        if (found == ends_.end())
            return nullptr;
        std::unique_ptr<QueueEnd> end = std::move(*found);
        ends_.erase(found);
        return end;
    }

  private:
    std::vector<std::unique_ptr<QueueEnd>>::iterator Position(HANDLE handle) {
        return std::find_if(ends_.begin(), ends_.end(),
                            [&](const auto& end) { return end.get() == handle; });
    }

    std::mutex mutex_;
    std::vector<std::unique_ptr<QueueEnd>> ends_;
};

OpenEnds& Ends() {
    static OpenEnds& ends = *new OpenEnds;
    return ends;
}

bool ValidOptions(const MSGQUEUEOPTIONS* options) {
    constexpr DWORD kKnownFlags = MSGQUEUE_NOPRECOMMIT | MSGQUEUE_ALLOW_BROKEN;
    return options != nullptr && options->dwSize == sizeof(MSGQUEUEOPTIONS) &&
           options->cbMaxMessage != 0 && (options->dwFlags & ~kKnownFlags) == 0;
}

// The first part of the names of a queue's objects; one of its own for a queue without a name.
std::wstring ObjectName(LPCWSTR name) {
    if (name != nullptr)
        return std::wstring(L"MsgQueue.") + name;
    static std::atomic<uint32_t> unnamed{0};
    return L"MsgQueue-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(++unnamed);
}

bool ValidName(LPCWSTR name) {
    return name == nullptr ||
           (wcsnlen(name, kNameUnits + 1) <= kNameUnits && std::wcschr(name, L'\\') == nullptr);
}

class Deadline {
  public:
    explicit Deadline(DWORD timeout) : timeout_(timeout) {}

    DWORD Left() const {
        if (timeout_ == INFINITE)
            return INFINITE;
        const DWORD elapsed = GetTickCount() - start_;
        return elapsed < timeout_ ? timeout_ - elapsed : 0;
    }

  private:
    const DWORD start_ = GetTickCount();
    const DWORD timeout_;
};

struct WriteRequest {
    const void* buffer;
    DWORD size;
    DWORD flags;
};

DWORD LookForRoom(QueueEnd& end, const WriteRequest& request) {
    QueueRing& ring = end.Ring();
    if (end.IsBroken())
        return ERROR_PIPE_NOT_CONNECTED;
    if (request.size > ring.MessageBytes())
        return ERROR_INSUFFICIENT_BUFFER;
    if (!ring.AllowsBroken() && !ring.Had(Side::kReader))
        return ERROR_PIPE_NOT_CONNECTED;
    const bool alert = (request.flags & MSGQUEUE_MSGALERT) != 0;
    if (ring.IsFull() && !(alert && !ring.HasAlert()))
        return ring.IsUnlimited() ? DWORD{ERROR_OUTOFMEMORY} : kMustWait;
    ring.Push(request.buffer, request.size, alert);
    return ERROR_SUCCESS;
}

struct ReadRequest {
    void* buffer;
    DWORD size;
    DWORD* read;
    DWORD* flags;
};

DWORD LookForMessage(QueueEnd& end, const ReadRequest& request) {
    QueueRing& ring = end.Ring();
    if (end.IsBroken())
        return ERROR_PIPE_NOT_CONNECTED;
    if (ring.IsEmpty()) {
        const bool may_come = ring.AllowsBroken() || ring.Had(Side::kWriter);
        return may_come ? kMustWait : DWORD{ERROR_PIPE_NOT_CONNECTED};
    }
    bool alert = false;
    const uint32_t full_size = ring.Pop(request.buffer, request.size, alert);
    *request.read = std::min<DWORD>(full_size, request.size);
    if (request.flags != nullptr)
        *request.flags = alert ? DWORD{MSGQUEUE_MSGALERT} : 0;
    return full_size > request.size ? ERROR_INSUFFICIENT_BUFFER : ERROR_SUCCESS;
}

// Looks until there is a result or the time is up.
template <class LookFunction>
BOOL LookOrWait(QueueEnd& end, DWORD timeout, LookFunction look) {
    const DWORD before = GetLastError();
    const Deadline deadline(timeout);
    for (;;) {
        DWORD error = ERROR_BUSY;
        {
            const QueueLock lock(end.Mutex());
            if (lock.IsHeld()) {
                error = look();
                if (error != kMustWait)
                    end.AnnounceChange();
            }
        }
        const DWORD left = deadline.Left();
        if (error != kMustWait || left == 0) {
            SetLastError(error == ERROR_SUCCESS ? before : error);
            return error == ERROR_SUCCESS;
        }
        end.AwaitChange(std::min(left, kLookAgain));
    }
}

}  // namespace
}  // namespace zelto::coredll

using namespace zelto::coredll;

HANDLE CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) {
    DWORD error = ERROR_INVALID_PARAMETER;
    std::unique_ptr<QueueEnd> end;
    if (ValidOptions(options) && ValidName(name))
        end = QueueEnd::Open(ObjectName(name), *options, error);
    const HANDLE handle = end != nullptr ? Ends().Add(std::move(end)) : nullptr;
    SetLastError(error);
    return handle;
}

BOOL WriteMsgQueue(HANDLE queue, const void* buffer, DWORD size, DWORD timeout, DWORD flags) {
    QueueEnd* end = Ends().Find(queue);
    if (end == nullptr || end->MySide() != Side::kWriter)
        return Fail(ERROR_INVALID_HANDLE);
    const bool known_flags = flags == 0 || flags == MSGQUEUE_MSGALERT;
    if (!known_flags || (buffer != nullptr && size == 0))
        return Fail(ERROR_INVALID_PARAMETER);
    // Nothing to store is no failure: a caller that only announces itself again passes no bytes.
    if (buffer == nullptr)
        return TRUE;
    return LookOrWait(*end, timeout, [&] { return LookForRoom(*end, {buffer, size, flags}); });
}

BOOL ReadMsgQueue(HANDLE queue, void* buffer, DWORD size, DWORD* read, DWORD timeout,
                  DWORD* flags) {
    if (read != nullptr)
        *read = 0;
    QueueEnd* end = Ends().Find(queue);
    if (end == nullptr || end->MySide() != Side::kReader)
        return Fail(ERROR_INVALID_HANDLE);
    if (buffer == nullptr || size == 0 || read == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    return LookOrWait(*end, timeout, [&] {
        return LookForMessage(*end, {buffer, size, read, flags});
    });
}

BOOL CloseMsgQueue(HANDLE queue) {
    return Ends().Take(queue) != nullptr ? TRUE : Fail(ERROR_INVALID_HANDLE);
}
