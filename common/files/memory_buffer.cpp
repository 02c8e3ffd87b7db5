#include "common/files/memory_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace zelto {
namespace {

constexpr int64_t kMostAtOnce = 1 << 30;  // bytes that a stream is asked for

bool ReadAll(TFicheroStream& stream, char* bytes, int64_t length) {
    for (int64_t done = 0; done < length;) {
        const int64_t chunk = std::min(length - done, kMostAtOnce);
        if (!stream.Read(bytes + done, static_cast<int32_t>(chunk)))
            return false;
        done += chunk;
    }
    return true;
}

std::shared_ptr<char[]> Room(size_t size) {
    try {
        return std::make_shared_for_overwrite<char[]>(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

bool MemoryBuffer::Load(TFicheroStream& stream, int64_t length) {
    Free();
    if (length < 0 || static_cast<uint64_t>(length) > SIZE_MAX)
        return false;
    std::shared_ptr<char[]> bytes = Room(static_cast<size_t>(length));
    if (bytes == nullptr || !ReadAll(stream, bytes.get(), length))
        return false;
    bytes_ = std::move(bytes);
    length_ = length;
    return true;
}

void MemoryBuffer::Free() {
    bytes_.reset();
    position_ = 0;
    length_ = 0;
    end_met_ = false;
}

std::string_view MemoryBuffer::Rest() const {
    if (position_ < 0 || position_ >= length_)
        return {};
    return {bytes_.get() + position_, static_cast<size_t>(length_ - position_)};
}

bool MemoryBuffer::Read(void* buffer, int32_t size) {
    const std::string_view rest = Rest();
    const size_t wanted = static_cast<size_t>(size);
    const size_t count = std::min(wanted, rest.size());
    if (count > 0)
        std::memcpy(buffer, rest.data(), count);
    position_ += static_cast<int64_t>(count);
    if (count < wanted)
        end_met_ = true;
    return count == wanted;
}

void MemoryBuffer::SetPos(int64_t position) {
    position_ = position;
    end_met_ = false;
}

}  // namespace zelto
