// Builds one date or time text on the stack.

#ifndef ZELTO_COMMON_TIME_LAYOUT_WRITER_H
#define ZELTO_COMMON_TIME_LAYOUT_WRITER_H

#include <cstdint>

#include "common/text/dstring.h"

namespace zelto {

// Room for kCapacity bytes: the longest layout has seven numbers of at most 11 bytes and fewer
// than 20 bytes between them.
// Thread safety: none; a writer lives within one call.
class LayoutWriter {
  public:
    LayoutWriter& Put(char c) {
        if (c != 0)
            *end_++ = c;
        return *this;
    }
    LayoutWriter& Put(const char* text) {
        for (; *text != 0; ++text)
            *end_++ = *text;
        return *this;
    }

    LayoutWriter& Plain(int32_t value) { return Number(value, 1, '0'); }  // "%d"
    LayoutWriter& TwoDigits(int32_t value) {                              // "%02d"
        if (value < 0 || value > 99)
            return Number(value, 2, '0');
        end_[0] = static_cast<char>('0' + value / 10);
        end_[1] = static_cast<char>('0' + value % 10);
        end_ += 2;
        return *this;
    }
    // "%0<width>d" or "%<width>d", as the padding says.
    LayoutWriter& Number(int32_t value, int width, char padding);

    void StoreIn(DString& out) const {
        const auto count = static_cast<int>(end_ - bytes_);
        if (count == 0)
            out.clear();
        else
            out.assign(bytes_, count);
    }

  private:
    static constexpr int kCapacity = 128;

    char bytes_[kCapacity];
    char* end_ = bytes_;
};

}  // namespace zelto

#endif
