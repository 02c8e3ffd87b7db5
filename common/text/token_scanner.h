// The one rule by which texts are cut into fields, over views: nothing is copied or allocated.

#ifndef ZELTO_COMMON_TEXT_TOKEN_SCANNER_H
#define ZELTO_COMMON_TEXT_TOKEN_SCANNER_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zelto {

// A set of byte values, asked in constant time.
// Thread safety: a plain value.
class ByteSet {
  public:
    constexpr explicit ByteSet(std::string_view members) {
        for (const char c : members) {
            const auto byte = static_cast<unsigned char>(c);
            bits_[byte / 64] |= uint64_t{1} << (byte % 64);
        }
    }

    constexpr bool Contains(char c) const {
        const auto byte = static_cast<unsigned char>(c);
        return ((bits_[byte / 64] >> (byte % 64)) & 1) != 0;
    }

  private:
    uint64_t bits_[4] = {};
};

// One field as the scanner found it. `rest` is empty but for the last field at the limit: there
// it is the separator that closed the field and everything after it. It follows `body` directly.
struct Token {
    std::string_view body;
    std::string_view rest;
    bool closed = false;  // a separator stands behind the body

    std::string_view Whole() const { return {body.data(), body.size() + rest.size()}; }
};

// Yields the fields of a text one by one; SplitTokens (text_utils.h) states the rule. The text and
// the set must outlive the scanner.
// Thread safety: none; a scanner is used by one thread at a time.
class TokenScanner {
  public:
    TokenScanner(std::string_view text, const ByteSet& separators, int32_t limit, bool keep_empty)
        : text_(text), separators_(separators), left_(limit), keep_empty_(keep_empty) {}

    // False when there are no more fields; the token is then unchanged.
    bool Next(Token& token) {
        if (left_ == 0)
            return false;
        for (; at_ < text_.size(); ++at_) {
            if (!separators_.Contains(text_[at_]) || (at_ == 0 && !keep_empty_))
                continue;
            if (start_ < at_ || keep_empty_) {
                Close(token);
                return true;
            }
            start_ = at_ + 1;
        }
        return TakeLast(token);
    }

  private:
    void Close(Token& token) {
        token = {text_.substr(start_, at_ - start_), {}, true};
        start_ = ++at_;
        if (left_ > 0 && --left_ == 0 && start_ < text_.size())
            token.rest = text_.substr(start_ - 1);
    }

    bool TakeLast(Token& token) {
        if (start_ >= text_.size())
            return false;
        token = {text_.substr(start_), {}, false};
        start_ = text_.size();
        return true;
    }

    std::string_view text_;
    const ByteSet& separators_;
    int32_t left_;  // fields that may still be yielded; negative without a limit
    bool keep_empty_;
    size_t start_ = 0;
    size_t at_ = 0;
};

}  // namespace zelto

#endif
