// Reading a short text piece by piece.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_TEXT_SCANNER_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_TEXT_SCANNER_H

#include <cstdint>
#include <string_view>

#include "platform/coredll/linux/base/ascii.h"

namespace zelto::coredll {

// Each call takes its piece from the front and says whether it was there; otherwise the text stays
// as it is. Locale-independent.
// Thread safety: none; a scanner is used by one thread at a time.
class TextScanner {
  public:
    explicit TextScanner(std::string_view text) : rest_(text) {}

    bool AtEnd() const { return rest_.empty(); }
    std::string_view Rest() const { return rest_; }
    char Peek() const { return rest_.empty() ? '\0' : rest_.front(); }
    void Skip(size_t count) { rest_.remove_prefix(count); }

    bool Literal(std::string_view text) {
        if (!rest_.starts_with(text))
            return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    // An unsigned decimal number of `least` to `most` digits; digits beyond stay in the text.
    bool Number(size_t least, size_t most, int64_t& value) {
        size_t count = 0;
        int64_t read = 0;
        while (count < most && count < rest_.size() && IsAsciiDigit(rest_[count]))
            read = read * 10 + (rest_[count++] - '0');
        if (count < least)
            return false;
        value = read;
        rest_.remove_prefix(count);
        return true;
    }

    // As Number, from 1 digit on, and the value at most `limit`.
    bool NumberUpTo(int64_t limit, int64_t& value) {
        const std::string_view start = rest_;
        if (Number(1, kMaxDigits, value) && value <= limit)
            return true;
        rest_ = start;
        return false;
    }

    // One of the words; `index` tells which.
    template <size_t kCount>
    bool OneOf(const std::string_view (&words)[kCount], size_t& index) {
        for (index = 0; index < kCount; ++index) {
            if (Literal(words[index]))
                return true;
        }
        return false;
    }

  private:
    static constexpr size_t kMaxDigits = 18;  // what 64 bits surely hold

    std::string_view rest_;
};

}  // namespace zelto::coredll

#endif
