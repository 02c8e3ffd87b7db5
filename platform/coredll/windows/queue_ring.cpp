#include "platform/coredll/windows/queue_ring.h"

#include <algorithm>
#include <cstring>

namespace zelto::coredll {

namespace {

constexpr uint32_t kQueueMade = 0x5A51304D;
constexpr uint64_t kUnlimitedBytes = 1 << 20;  // what a queue without a limit takes
constexpr uint64_t kLengthBytes = sizeof(uint32_t);
constexpr uint32_t kMaxCapacity = 0x3FFFFFFF;  // twice that is a round of 31 bits

uint64_t StrideFor(uint32_t message_bytes) {
    return kLengthBytes + (uint64_t{message_bytes} + 3) / 4 * 4;
}

uint32_t CapacityFor(const MSGQUEUEOPTIONS& options) {
    if (options.dwMaxMessages != 0)
        return std::min<uint32_t>(options.dwMaxMessages, kMaxCapacity);
    const uint64_t fitting = kUnlimitedBytes / StrideFor(options.cbMaxMessage);
    return static_cast<uint32_t>(std::max<uint64_t>(fitting, 1));
}

// One place more for the alert.
uint64_t BytesOf(uint32_t capacity, uint64_t stride) {
    return sizeof(QueueHeader) + (uint64_t{capacity} + 1) * stride;
}

}  // namespace

uint64_t QueueRing::BytesFor(const MSGQUEUEOPTIONS& options) {
    return BytesOf(CapacityFor(options), StrideFor(options.cbMaxMessage));
}

void QueueRing::Bind(void* memory, uint64_t bytes) {
    header_ = static_cast<QueueHeader*>(memory);
    bytes_ = bytes;
    stride_ = 0;
    if (bytes < sizeof(QueueHeader) || header_->made.load() != kQueueMade)
        return;
    const uint32_t capacity = header_->capacity;
    const uint32_t message_bytes = header_->message_bytes;
    if (capacity - 1 < kMaxCapacity && BytesOf(capacity, StrideFor(message_bytes)) <= bytes)
        SetGeometry(capacity, message_bytes);
}

bool QueueRing::Make(const MSGQUEUEOPTIONS& options) {
    if (BytesFor(options) > bytes_)
        return false;
    header_->made.store(0);
    ++header_->incarnation;
    header_->flags = options.dwFlags;
    header_->max_messages = options.dwMaxMessages;
    header_->capacity = CapacityFor(options);
    header_->message_bytes = options.cbMaxMessage;
    header_->had[0] = header_->had[1] = 0;
    header_->next_write.store(0);
    header_->next_read.store(0);
    header_->alert.store(0);
    header_->broken.store(0);
    SetGeometry(header_->capacity, header_->message_bytes);
    // Release: whoever finds the queue made, after a kill even, finds it whole.
    header_->made.store(kQueueMade, std::memory_order_release);
    return true;
}

void QueueRing::Break() {
    header_->broken.store(1);
    header_->next_read.store(header_->next_write.load());
    header_->alert.store(0);
}

void QueueRing::Push(const void* bytes, uint32_t size, bool alert) {
    const bool as_alert = alert && !HasAlert();
    const uint32_t next = header_->next_write.load() % Round();
    char* place = Place(as_alert ? capacity_ : next % capacity_);
    std::memcpy(place, &size, kLengthBytes);
    std::memcpy(place + kLengthBytes, bytes, size);
    // Release: a message counts when it is whole, so a kill loses it or keeps all of it.
    if (as_alert)
        header_->alert.store(1, std::memory_order_release);
    else
        header_->next_write.store((next + 1) % Round(), std::memory_order_release);
}

uint32_t QueueRing::Pop(void* bytes, uint32_t size, bool& alert) {
    alert = HasAlert();
    const uint32_t next = header_->next_read.load() % Round();
    const char* place = Place(alert ? capacity_ : next % capacity_);
    uint32_t full_size = 0;
    std::memcpy(&full_size, place, kLengthBytes);
    full_size = std::min(full_size, message_bytes_);
    std::memcpy(bytes, place + kLengthBytes, std::min(full_size, size));
    // Release: its place is not written again before the message has been copied.
    if (alert)
        header_->alert.store(0, std::memory_order_release);
    else
        header_->next_read.store((next + 1) % Round(), std::memory_order_release);
    return full_size;
}

void QueueRing::SetGeometry(uint32_t capacity, uint32_t message_bytes) {
    capacity_ = capacity;
    message_bytes_ = message_bytes;
    stride_ = StrideFor(message_bytes);
}

uint32_t QueueRing::Count() const {
    const uint32_t written = header_->next_write.load() % Round();
    const uint32_t read = header_->next_read.load() % Round();
    return (written + Round() - read) % Round();
}

char* QueueRing::Place(uint32_t index) const {
    return reinterpret_cast<char*>(header_ + 1) + index * stride_;
}

}  // namespace zelto::coredll
