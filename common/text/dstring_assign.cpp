// Assigning and appending texts.

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

#include "common/text/dstring.h"

namespace zelto {
namespace {

constexpr int kMostBytes = std::numeric_limits<int>::max();

// A sum beyond any block becomes one that no block can be made for.
int Sum(int a, int b) {
    return a <= kMostBytes - b ? a + b : kMostBytes;
}

bool IsEmpty(const char* text) {
    return text == nullptr || *text == 0;
}

// The bytes in front of the first NUL, n at most.
int BoundedLength(const char* text, int n) {
    if (text == nullptr || n <= 0)
        return 0;
    const void* end = std::memchr(text, 0, static_cast<size_t>(n));
    return end != nullptr ? static_cast<int>(static_cast<const char*>(end) - text) : n;
}

}  // namespace

DString::DString(const char* text) {
    if (!IsEmpty(text))
        append(text, Length(text), 0);
}

DString::DString(const DString& other, TextOnly /*tag*/) : DString(other.c_str()) {}

DString::DString(const DString& other) : DString(other, TextOnly()) {
    if (text_ != nullptr)
        set_codepage(other.codepage());
}

void DString::put(int start, const char* bytes, int n, int room, bool slack) {
    const std::less<const char*> before;
    const bool own = text_ != nullptr && !before(bytes, text_) && before(bytes, text_ + capacity());
    const ptrdiff_t offset = own ? bytes - text_ : 0;
    reserve(room, slack);
    if (own)
        bytes = text_ + offset;
    std::memmove(text_ + start, bytes, static_cast<size_t>(n));
    end_at(start + n);
}

DString& DString::append_slowly(const char* bytes, int n, int extra) {
    const int start = length();
    put(start, bytes, n, Sum(start, Sum(n, extra)), true);
    return *this;
}

void DString::adopt_codepage(int32_t codepage) {
    if (is_empty())
        set_codepage(codepage);
}

DString* DString::operator=(const char* text) {
    if (IsEmpty(text)) {
        if (is_empty())
            return nullptr;
        clear();
    } else {
        const int n = Length(text);
        put(0, text, n, Sum(n, 1), false);
    }
    return this;
}

DString& DString::operator=(const DString& other) {
    const int32_t codepage = other.codepage();
    assign_text(other);
    set_codepage(codepage);
    return *this;
}

DString& DString::assign_text(const DString& other) {
    if (other.is_empty())
        clear();
    else
        *this = other.c_str();
    return *this;
}

DString& DString::assign(const char* text, int n) {
    const int room = std::max(n, 0);
    const int copied = BoundedLength(text, n);
    put(0, copied > 0 ? text : "", copied, room, true);
    std::memset(text_ + copied, 0, static_cast<size_t>(room - copied) + 1);
    return *this;
}

DString& DString::fill(char c, int n) {
    reserve(n, true);
    if (n > 0) {
        std::memset(text_, c, static_cast<size_t>(n));
        header().length = kUnknown;
    }
    return *this;
}

void DString::clear() {
    if (text_ != nullptr)
        end_at(0);
}

void DString::move_to(DString& other) {
    other = *this;
    reserve(1, true);
    clear();
}

DString& DString::operator+=(const DString& other) {
    adopt_codepage(other.codepage());
    return append(other.c_str(), other.length(), 0);
}

}  // namespace zelto
