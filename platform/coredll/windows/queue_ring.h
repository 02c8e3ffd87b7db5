// A message queue's numbers and bytes, in memory that several processes map: a ring of messages and
// one place more for the alert. No system objects, so that it is tested anywhere.
//
// A process may be killed between any two instructions while it changes the queue: each change
// comes into being by the store of one word, after all that it needs has been written.

#ifndef ZELTO_PLATFORM_COREDLL_WINDOWS_QUEUE_RING_H
#define ZELTO_PLATFORM_COREDLL_WINDOWS_QUEUE_RING_H

#include <atomic>
#include <cstdint>

#include "platform/coredll/coredll.h"

namespace zelto::coredll {

enum class Side : uint32_t { kReader, kWriter };

// What stands before the messages. Zeroed memory holds no queue.
struct QueueHeader {
    std::atomic<uint32_t> made;  // kQueueMade once the numbers below stand
    uint32_t incarnation;        // stepped when a broken queue is made anew in its memory
    uint32_t flags;              // the queue options
    uint32_t max_messages;       // 0: as many as the memory takes
    uint32_t capacity;           // messages that the ring takes
    uint32_t message_bytes;      // the largest message
    uint32_t had[2];             // a Side that somebody has held
    // Places in a round of twice the capacity, so that a full ring and an empty one differ.
    std::atomic<uint32_t> next_write;
    std::atomic<uint32_t> next_read;
    std::atomic<uint32_t> alert;   // 1: the alert's place is taken
    std::atomic<uint32_t> broken;  // 1: a side has left a queue that does not allow it
};

// Thread safety: none; call everything but BytesFor with the queue's mutex held.
class QueueRing {
  public:
    // Memory that a queue of these options takes.
    static uint64_t BytesFor(const MSGQUEUEOPTIONS& options);

    // Binds to mapped memory, which the caller owns: zeroed, or used as a queue before. Numbers
    // there that lead out of it count as no queue.
    void Bind(void* memory, uint64_t bytes);

    bool IsBound() const { return header_ != nullptr && stride_ != 0; }

    // Makes an empty queue in the bound memory; false when that is too small.
    bool Make(const MSGQUEUEOPTIONS& options);

    uint32_t Incarnation() const { return header_->incarnation; }
    uint32_t MessageBytes() const { return message_bytes_; }
    bool IsUnlimited() const { return header_->max_messages == 0; }
    bool AllowsBroken() const { return (header_->flags & MSGQUEUE_ALLOW_BROKEN) != 0; }
    bool IsBroken() const { return header_->broken.load() != 0; }
    bool IsEmpty() const { return Count() == 0 && !HasAlert(); }
    bool IsFull() const { return Count() >= capacity_; }
    bool HasAlert() const { return header_->alert.load() != 0; }

    bool Had(Side side) const { return header_->had[static_cast<uint32_t>(side)] != 0; }
    void SetHad(Side side) { header_->had[static_cast<uint32_t>(side)] = 1; }

    // Drops all messages; the queue is of no use until it is made anew.
    void Break();

    // Appends a message of at most MessageBytes() to a ring that is not full, or stores the alert
    // when its place is free.
    void Push(const void* bytes, uint32_t size, bool alert);

    // Takes the alert or the first message, at most `size` bytes of it, and gives its full size;
    // the queue is not empty. `alert` tells which it was.
    uint32_t Pop(void* bytes, uint32_t size, bool& alert);

  private:
    void SetGeometry(uint32_t capacity, uint32_t message_bytes);
    uint32_t Round() const { return 2 * capacity_; }
    uint32_t Count() const;
    char* Place(uint32_t index) const;

    QueueHeader* header_ = nullptr;
    uint64_t bytes_ = 0;
    // Copies, so that nobody moves a bound queue's bounds.
    uint32_t capacity_ = 0;
    uint32_t message_bytes_ = 0;
    uint64_t stride_ = 0;  // bytes from message to message; 0: no queue
};

}  // namespace zelto::coredll

#endif
