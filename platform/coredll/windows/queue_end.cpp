#include "platform/coredll/windows/queue_end.h"

namespace zelto::coredll {

namespace {

constexpr DWORD kLockPatience = 2000;  // ms
constexpr LONG kOneToken = 1;          // a semaphore says that there is a change, not how many

HANDLE OpenSemaphore(const std::wstring& name) {
    return CreateSemaphoreW(nullptr, 0, kOneToken, name.c_str());
}

void Wake(const UniqueHandle& semaphore) {
    ReleaseSemaphore(semaphore.get(), 1, nullptr);  // fails where a token is waiting already
}

// Bytes of a mapped section, which may be larger or smaller than this process asked for.
uint64_t SizeOfView(const void* view) {
    MEMORY_BASIC_INFORMATION information = {};
    return VirtualQuery(view, &information, sizeof(information)) != 0 ? information.RegionSize : 0;
}

}  // namespace

QueueLock::QueueLock(const UniqueHandle& mutex) : mutex_(mutex.get()) {
    const DWORD result = WaitForSingleObject(mutex_, kLockPatience);
    held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

QueueLock::~QueueLock() {
    if (held_)
        ReleaseMutex(mutex_);
}

std::unique_ptr<QueueEnd> QueueEnd::Open(const std::wstring& name, const MSGQUEUEOPTIONS& options,
                                         DWORD& error) {
    const Side side = options.bReadAccess != FALSE ? Side::kReader : Side::kWriter;
    std::unique_ptr<QueueEnd> end(new QueueEnd(name, side));
    if (!end->OpenObjects()) {
        error = ERROR_NOT_ENOUGH_MEMORY;
        return nullptr;
    }
    if (!end->MapSection(QueueRing::BytesFor(options))) {
        error = ERROR_OUTOFMEMORY;
        return nullptr;
    }
    const QueueLock lock(end->mutex_);
    if (!lock.IsHeld()) {
        error = ERROR_BUSY;
        return nullptr;
    }
    return end->Join(options, error) ? std::move(end) : nullptr;
}

QueueEnd::~QueueEnd() {
    const QueueLock lock(mutex_);
    if (presence_ == nullptr || !lock.IsHeld())
        return;
    presence_.reset();
    IsBroken();
    AnnounceChange();
}

bool QueueEnd::OpenObjects() {
    mutex_.reset(CreateMutexW(nullptr, FALSE, (name_ + L".mutex").c_str()));
    readable_.reset(OpenSemaphore(name_ + L".readable"));
    writable_.reset(OpenSemaphore(name_ + L".writable"));
    return mutex_ != nullptr && readable_ != nullptr && writable_ != nullptr;
}

bool QueueEnd::MapSection(uint64_t bytes) {
    section_.reset(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                      static_cast<DWORD>(bytes >> 32), static_cast<DWORD>(bytes),
                                      (name_ + L".section").c_str()));
    if (section_ == nullptr)
        return false;
    view_.reset(MapViewOfFile(section_.get(), FILE_MAP_ALL_ACCESS, 0, 0, 0));
    return view_ != nullptr;
}

bool QueueEnd::Join(const MSGQUEUEOPTIONS& options, DWORD& error) {
    ring_.Bind(view_.get(), SizeOfView(view_.get()));
    incarnation_ = ring_.IsBound() ? ring_.Incarnation() : 0;
    const bool existing = ring_.IsBound() && !IsBroken();
    if (!existing && !ring_.Make(options)) {
        error = ERROR_OUTOFMEMORY;
        return false;
    }
    incarnation_ = ring_.Incarnation();
    presence_.reset(CreateEventW(nullptr, TRUE, FALSE, PresenceName(side_).c_str()));
    if (presence_ == nullptr) {
        error = ERROR_NOT_ENOUGH_MEMORY;
        return false;
    }
    ring_.SetHad(side_);
    error = existing ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
    return true;
}

bool QueueEnd::IsBroken() {
    if (ring_.Incarnation() != incarnation_)
        return true;
    if (ring_.AllowsBroken() || ring_.IsBroken())
        return ring_.IsBroken();
    for (const Side side : {Side::kReader, Side::kWriter}) {
        if (ring_.Had(side) && !IsThere(side)) {
            ring_.Break();
            return true;
        }
    }
    return false;
}

bool QueueEnd::IsThere(Side side) const {
    return UniqueHandle(OpenEventW(SYNCHRONIZE, FALSE, PresenceName(side).c_str())) != nullptr;
}

void QueueEnd::AnnounceChange() const {
    if (!ring_.IsEmpty() || ring_.IsBroken())
        Wake(readable_);
    if (!ring_.IsFull() || ring_.IsBroken())
        Wake(writable_);
}

void QueueEnd::AwaitChange(DWORD timeout) const {
    WaitForSingleObject(side_ == Side::kReader ? readable_.get() : writable_.get(), timeout);
}

std::wstring QueueEnd::PresenceName(Side side) const {
    return name_ + (side == Side::kReader ? L".reader." : L".writer.") +
           std::to_wstring(incarnation_);
}

}  // namespace zelto::coredll
