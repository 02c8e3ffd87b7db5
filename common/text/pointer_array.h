// A growable array of pointers to records, with a base index and strict error reporting.

#ifndef ZELTO_COMMON_TEXT_POINTER_ARRAY_H
#define ZELTO_COMMON_TEXT_POINTER_ARRAY_H

#include <cstdint>
#include <exception>
#include <memory>

namespace zelto {

// What a PointerArray throws. The text is "VDGerr:<code>--<count>,<index>,<capacity>,<increment>".
// Thread safety: a plain value.
class PointerArrayError : public std::exception {
  public:
    enum Code {
        kFixedSize = 6,         // growth of an array without increment
        kOutside = 7,           // no such slot in use
        kEmptySlot = 8,         // the slot holds no record
        kCopyBelowBase = 12,    // InsertCopy at a position below the base index
        kInsertBelowBase = 13,  // InsertNew likewise
        kNullRecord = 16,       // InsertCopy of a null record
    };

    PointerArrayError(Code code, int32_t count, int32_t index, int32_t capacity, int32_t increment);

    Code code() const { return code_; }
    const char* what() const noexcept override { return text_; }

  private:
    Code code_;
    char text_[80];
};

// Records are blocks of the global operator new that need no destructor. An index counts from the
// base index, a slot from 0. Every failed call leaves the array as it was.
// Thread safety: none; an array is used by one thread at a time.
class PointerArray {
  public:
    // With increment 0 the array never outgrows its initial capacity. An owning array deletes the
    // records that it holds when it is destroyed.
    PointerArray(int32_t initial_capacity, int32_t increment, bool owning, int32_t base_index = 0);
    virtual ~PointerArray();
    PointerArray(const PointerArray&) = delete;
    PointerArray& operator=(const PointerArray&) = delete;

    int32_t Count() const { return count_; }
    int32_t Capacity() const { return capacity_; }
    int32_t BaseIndex() const { return base_index_; }
    void* const* Slots() const { return slots_.get(); }  // Capacity() of them; null when 0

    void* Get(int32_t index) const;  // throws kOutside, kEmptySlot
    bool IsPresent(int32_t index) const;

    // Closes the gap. The record, if any, is from now on the caller's. Throws kOutside.
    void Remove(int32_t slot);

    // Adds empty slots at the end. A new block of slots has room for increment + 2 more. Throws
    // kFixedSize.
    void Grow(int32_t slots);

  protected:
    // Opens an empty slot in front of the one at `position`, or at the end when that is negative,
    // and returns its number. Throws `below_base` for a position below the base index, kOutside
    // for one past the end, kFixedSize.
    int32_t OpenSlot(int32_t position, PointerArrayError::Code below_base);
    void SetSlot(int32_t slot, void* record) { slots_[static_cast<size_t>(slot)] = record; }

    [[noreturn]] void Fail(PointerArrayError::Code code, int32_t index) const;

  private:
    bool IsInside(int64_t slot) const { return slot >= 0 && slot < count_; }
    int64_t SlotOf(int32_t index) const { return int64_t{index} - base_index_; }
    void* RecordAt(int64_t slot) const { return slots_[static_cast<size_t>(slot)]; }

    bool owning_;
    int32_t count_ = 0;
    int32_t capacity_;
    int32_t increment_;
    int32_t base_index_;
    std::unique_ptr<void*[]> slots_;
};

}  // namespace zelto

#endif
