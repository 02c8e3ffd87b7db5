// A file's bytes in memory, with a position of their own.

#ifndef ZELTO_COMMON_FILES_MEMORY_BUFFER_H
#define ZELTO_COMMON_FILES_MEMORY_BUFFER_H

#include <cstdint>
#include <memory>
#include <string_view>

#include "common/files/fichero_stream.h"

namespace zelto {

// Empty and not loaded at first.
// Thread safety: none; used by the thread of its container.
class MemoryBuffer {
  public:
    // Reads `length` bytes from the stream's position on. False, and not loaded, when there is no
    // memory for them or the stream has fewer.
    bool Load(TFicheroStream& stream, int64_t length);
    void Free();

    bool IsLoaded() const { return bytes_ != nullptr; }
    int64_t Length() const { return length_; }
    std::string_view Rest() const;                                // from the position to the end
    std::shared_ptr<const void> Owner() const { return bytes_; }  // who has it keeps the bytes

    // True only when exactly `size` bytes were there; those that were are copied.
    bool Read(void* buffer, int32_t size);
    // Any position; one outside the bytes has nothing to read.
    void SetPos(int64_t position);
    int64_t GetPos() const { return position_; }
    bool IsEof() const { return end_met_ || position_ >= length_; }

  private:
    std::shared_ptr<char[]> bytes_;
    int64_t position_ = 0;
    int64_t length_ = 0;
    bool end_met_ = false;  // a read asked for more than there was
};

}  // namespace zelto

#endif
