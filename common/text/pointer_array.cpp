#include "common/text/pointer_array.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <new>

namespace zelto {
namespace {

std::unique_ptr<void* []> MakeSlots(int32_t count) {
    return count > 0 ? std::make_unique<void*[]>(static_cast<size_t>(count)) : nullptr;
}

}  // namespace

PointerArrayError::PointerArrayError(Code code, int32_t count, int32_t index, int32_t capacity,
                                     int32_t increment)
    : code_(code) {
    std::snprintf(text_, sizeof text_, "VDGerr:%d-%s-%d,%d,%d,%d", static_cast<int>(code), "",
                  static_cast<int>(count), static_cast<int>(index), static_cast<int>(capacity),
                  static_cast<int>(increment));
}

PointerArray::PointerArray(int32_t initial_capacity, int32_t increment, bool owning,
                           int32_t base_index)
    : owning_(owning),
      capacity_(std::max(initial_capacity, 0)),
      increment_(std::max(increment, 0)),
      base_index_(base_index),
      slots_(MakeSlots(capacity_)) {}

PointerArray::~PointerArray() {
    if (!owning_)
        return;
    for (int32_t slot = 0; slot < count_; ++slot)
        ::operator delete(RecordAt(slot));
}

void* PointerArray::Get(int32_t index) const {
    const int64_t slot = SlotOf(index);
    if (!IsInside(slot))
        Fail(PointerArrayError::kOutside, index);
    if (RecordAt(slot) == nullptr)
        Fail(PointerArrayError::kEmptySlot, index);
    return RecordAt(slot);
}

bool PointerArray::IsPresent(int32_t index) const {
    const int64_t slot = SlotOf(index);
    return IsInside(slot) && RecordAt(slot) != nullptr;
}

void PointerArray::Remove(int32_t slot) {
    if (!IsInside(slot))
        Fail(PointerArrayError::kOutside, slot);
    void** begin = slots_.get();
    std::move(begin + slot + 1, begin + count_, begin + slot);
    SetSlot(--count_, nullptr);
}

void PointerArray::Grow(int32_t slots) {
    const int64_t count = int64_t{count_} + std::max(slots, 0);
    if (count > capacity_) {
        if (increment_ == 0)
            Fail(PointerArrayError::kFixedSize, base_index_ + count_);
        const int64_t capacity = count + 2 + increment_;
        if (capacity > std::numeric_limits<int32_t>::max())
            throw std::bad_alloc();
        auto grown = MakeSlots(static_cast<int32_t>(capacity));
        std::copy_n(slots_.get(), count_, grown.get());
        slots_ = std::move(grown);
        capacity_ = static_cast<int32_t>(capacity);
    }
    count_ = static_cast<int32_t>(count);
}

int32_t PointerArray::OpenSlot(int32_t position, PointerArrayError::Code below_base) {
    const int64_t slot = position < 0 ? count_ : SlotOf(position);
    if (slot < 0)
        Fail(below_base, position);
    if (slot > count_)
        Fail(PointerArrayError::kOutside, position);
    Grow(1);
    void** begin = slots_.get();
    std::move_backward(begin + slot, begin + count_ - 1, begin + count_);
    SetSlot(static_cast<int32_t>(slot), nullptr);
    return static_cast<int32_t>(slot);
}

void PointerArray::Fail(PointerArrayError::Code code, int32_t index) const {
    throw PointerArrayError(code, count_, index, capacity_, increment_);
}

}  // namespace zelto
