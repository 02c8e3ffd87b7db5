// Bytes of a record file's input that were fetched ahead of its text readers.

#ifndef ZELTO_COMMON_FILES_TEXT_WINDOW_H
#define ZELTO_COMMON_FILES_TEXT_WINDOW_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace zelto {

// The bytes are the window's own or those of a memory buffer that outlives it.
// Thread safety: none; used by the thread of its container.
class TextWindow {
  public:
    static constexpr int32_t kCapacity = 16 * 1024;

    // Room for kCapacity bytes of its own; to be shown by Show.
    char* Room() {
        if (room_ == nullptr)
            room_ = std::make_unique_for_overwrite<char[]>(kCapacity);
        return room_.get();
    }

    // Shows the bytes; the position is that behind the last of them.
    void Show(std::string_view bytes, int64_t end_position) {
        unread_ = bytes;
        end_position_ = end_position;
    }

    std::string_view Unread() const { return unread_; }
    bool IsEmpty() const { return unread_.empty(); }
    void Take(size_t count) { unread_.remove_prefix(count); }
    int64_t Position() const { return end_position_ - static_cast<int64_t>(unread_.size()); }
    void Clear() { unread_ = {}; }
    void Release() {
        Clear();
        room_.reset();
    }

  private:
    std::unique_ptr<char[]> room_;
    std::string_view unread_;
    int64_t end_position_ = 0;
};

}  // namespace zelto

#endif
