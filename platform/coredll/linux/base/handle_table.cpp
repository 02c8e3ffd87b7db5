#include "platform/coredll/linux/base/handle_table.h"

#include <mutex>

#include "platform/coredll/linux/base/last_error.h"

namespace zelto::coredll {
namespace {

struct Slot {
    uintptr_t word;
    uint32_t generation;  // of the handle now or last in this slot
    HandleKind kind;
    uint32_t next_free;  // index + 1 of the next free slot, 0 at the end
};

constexpr uint32_t kSlotBits = 12;
static_assert(kMaxHandles == 1u << kSlotBits);
// A handle is generation, slot + 1 and two clear bits, positive in 32 bits: never null, never -1.
constexpr uint32_t kGenerationMask = (1u << 16) - 1;

class HandleTable {
  public:
    HANDLE Make(HandleKind kind, uintptr_t word) {
        const std::lock_guard lock(mutex_);
        const uint32_t index = TakeFreeSlot();
        if (index == kMaxHandles)
            return nullptr;
        Slot& slot = slots_[index];
        slot.generation = (slot.generation + 1) & kGenerationMask;
        slot.kind = kind;
        slot.word = word;
        const uintptr_t value =
            (uintptr_t{slot.generation} << (kSlotBits + 3)) | (uintptr_t{index + 1} << 2);
        return reinterpret_cast<HANDLE>(value);
    }

    bool LookUp(HANDLE handle, HandleKind kind, uintptr_t& word, bool take) {
        const std::lock_guard lock(mutex_);
        Slot* slot = Find(handle);
        if (slot == nullptr || slot->kind != kind)
            return false;
        word = slot->word;
        if (take)
            Release(*slot);
        return true;
    }

    HandleKind KindOf(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        const Slot* slot = Find(handle);
        return slot == nullptr ? HandleKind::kNone : slot->kind;
    }

  private:
    uint32_t TakeFreeSlot() {
        if (first_free_ != 0) {
            const uint32_t index = first_free_ - 1;
            first_free_ = slots_[index].next_free;
            return index;
        }
        return fresh_ < kMaxHandles ? fresh_++ : kMaxHandles;
    }

    Slot* Find(HANDLE handle) {
        const auto value = reinterpret_cast<uintptr_t>(handle);
        const uintptr_t number = (value >> 2) & ((1u << (kSlotBits + 1)) - 1);
        if ((value & 3) != 0 || number == 0 || number > fresh_)
            return nullptr;
        Slot& slot = slots_[number - 1];
        const bool current = (value >> (kSlotBits + 3)) == slot.generation;
        return current && slot.kind != HandleKind::kNone ? &slot : nullptr;
    }

    void Release(Slot& slot) {
        slot.kind = HandleKind::kNone;
        slot.next_free = first_free_;
        first_free_ = static_cast<uint32_t>(&slot - slots_) + 1;
    }

    std::mutex mutex_;
    Slot slots_[kMaxHandles]{};  // guarded by mutex_, as all below
    uint32_t first_free_ = 0;    // index + 1
    uint32_t fresh_ = 0;         // slots from here on were never used
};

// Zero-initialised and never destroyed, so that handles work while other globals go.
constinit HandleTable g_handles{};

}  // namespace

HANDLE MakeHandle(HandleKind kind, uintptr_t word) {
    return g_handles.Make(kind, word);
}

bool LookUpHandle(HANDLE handle, HandleKind kind, uintptr_t& word) {
    return g_handles.LookUp(handle, kind, word, false);
}

bool TakeHandle(HANDLE handle, HandleKind kind, uintptr_t& word) {
    return g_handles.LookUp(handle, kind, word, true);
}

HandleKind KindOfHandle(HANDLE handle) {
    return g_handles.KindOf(handle);
}

}  // namespace zelto::coredll

BOOL CloseHandle(HANDLE handle) {
    using namespace zelto::coredll;
    struct Closer {
        HandleKind kind;
        void (*close)(uintptr_t word);
    };
    static constexpr Closer kClosers[] = {
        {HandleKind::kQueue, CloseQueueWord},
        {HandleKind::kEvent, CloseEventWord},
        {HandleKind::kThread, CloseThreadWord},
        {HandleKind::kFile, CloseFileWord},
    };
    const HandleKind kind = KindOfHandle(handle);
    for (const Closer& closer : kClosers) {
        uintptr_t word = 0;
        if (closer.kind == kind && TakeHandle(handle, kind, word)) {
            closer.close(word);
            return TRUE;
        }
    }
    return Fail(ERROR_INVALID_HANDLE);
}
