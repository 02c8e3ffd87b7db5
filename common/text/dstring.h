// DString, the library's growable 8-bit text.
//
// Conventions:
//  1. A string is one pointer, null until it needs storage. The text then stands in one heap block
//     behind a header of capacity, codepage tag and decimals. The block belongs to the string
//     alone, grows by about half and is kept until destruction.
//  2. Counts and indexes are bytes. A text is read up to its NUL.
//  3. Pointer arguments may be null, and may point into the string itself: s += s.c_str() is fine.
//     Pointers that the string gave out are void once it has grown.
//  4. "The tag" is the codepage of the bytes. 0 is no tag: the current codepage (codepage.h). A
//     block takes the current codepage as its tag when it is made; only what says so changes it.
//  5. Nothing is reported but by at(). A size that no block can have is std::bad_alloc.

#ifndef ZELTO_COMMON_TEXT_DSTRING_H
#define ZELTO_COMMON_TEXT_DSTRING_H

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <cstring>

#include "platform/coredll/coredll.h"

namespace zelto {

// Thread safety: none; a string is used by one thread at a time. Strings of several threads share
// the memory counter, which is exact only while one thread makes and grows them.
class DString {
  public:
    // Selects the copy that takes the text without its tag.
    struct TextOnly {};

    DString() = default;
    DString(const char* text);
    DString(const WCHAR* text);
    DString(const DString& other);  // with its codepage; of an empty string, nothing at all
    DString(const DString& other, TextOnly);
    ~DString();

    const char* c_str() const { return text_ != nullptr ? text_ : kNoText; }  // never null
    int length() const;
    bool is_empty() const { return text_ == nullptr || *text_ == 0; }
    char operator[](int index) const;  // 0 outside the text
    signed char last_char() const;     // 0 in an empty text
    int capacity() const;              // bytes that the block was sized for; 0 without one
    int32_t codepage() const;          // the tag; without one, the current codepage
    int decimals() const;              // digits behind the point of an appended double; at first 1

    // The two from plain text return null when there was nothing to change, a null or empty text
    // for an empty string, else the string.
    DString* operator=(const char* text);
    DString* operator=(const WCHAR* text);
    DString& operator=(const DString& other);  // with its codepage, so the string gets a block
    DString& operator=(std::integral auto value) {
        clear();
        return *this += value;
    }
    DString& assign_text(const DString& other);  // without its codepage
    DString& assign(const char* text, int n);    // at most n bytes, up to the NUL
    // Converts `count` units, or up to the NUL when it is negative, to the string's codepage. The
    // result is WideToNarrow's, 0 for no text. What does not convert at all becomes "utf16 error!"
    // (result 0).
    int assign_wide(const WCHAR* text, int count);
    // Writes n times c and no terminator, which is the caller's to write.
    DString& fill(char c, int n);
    void clear();                  // keeps the block
    void move_to(DString& other);  // other = *this, then *at(0) = 0

    // An empty string takes over the codepage of a DString that is appended to it. A wide text, a
    // 64-bit integer or a floating-point number comes as one, in the current codepage.
    DString& operator+=(const char* text) {
        return text != nullptr ? append(text, Length(text), 0) : *this;
    }
    DString& operator+=(const WCHAR* text);
    DString& operator+=(const DString& other);
    DString& operator+=(char c) {  // NUL appends nothing
        return append(&c, c != 0 ? 1 : 0, c != 0 ? 1 : 2);
    }
    // Appending takes time by what is appended, not by what is there; but for a text to which at(),
    // buffer() or fill() gave out a pointer that is still good.

    // Decimal digits. Up to 32 bits the value is written as the signed type of its size, but for
    // unsigned char (0 to 255): 2147483648u comes out as -2147483648. 64 bits are written as signed
    // 64 bits; a long is what its size makes it.
    DString& operator+=(unsigned char value) { return append_int32(value); }
    DString& operator+=(short value) { return append_int32(value); }
    DString& operator+=(unsigned short value) { return append_int32(static_cast<int16_t>(value)); }
    DString& operator+=(int value) { return append_int32(value); }
    DString& operator+=(unsigned value) { return append_int32(static_cast<int32_t>(value)); }
    DString& operator+=(long value) { return append_by_size(value); }
    DString& operator+=(unsigned long value) { return append_by_size(value); }
    DString& operator+=(long long value) { return append_int64(value); }
    DString& operator+=(unsigned long long value) {
        return append_int64(static_cast<int64_t>(value));
    }

    // A minus sign, the whole part, then a point and decimals() digits; no point for 0 digits, one
    // digit for a negative number of them. Digits are cut, never rounded, and show the binary
    // value: 1.15 with two decimals is 1.14. The whole part is exact within 64 bits; values beyond
    // are written as the largest double below 2^63, and what is not a number as 0.
    DString& operator+=(double value);
    DString& operator+=(float value) { return *this += static_cast<double>(value); }

    // Makes room for n bytes, and with `slack` two more. A first block has just that, with `slack`
    // 13 bytes on top; a block too small is replaced by one of half as much again plus 11. Below 0
    // nothing happens. Room for a text includes its NUL only with `slack`.
    void reserve(int n, bool slack);
    char* buffer(int n);  // room for n + 10 bytes and a NUL, to be written by the caller
    // A pointer to byte n, which need not lie in the text: the block grows to hold it. Throws
    // `const char*` "Error DString n<0".
    char* at(int n);
    // As the runtime's vsprintf (crt.h). A result over 999 bytes is cut there. Returns its bytes,
    // or a negative number when it was cut or the format is at fault.
    int format(const char* format, ...);
    void set_codepage(int32_t codepage);  // negative: only makes a block
    void set_decimals(int decimals);      // kept as 16 bits

    // Converts the bytes from the string's codepage to another (negative: the current one), which
    // becomes the tag. On either side 1 means the system's default codepage.
    void recode(int32_t target);

    // Less than, equal to or greater than 0, by unsigned bytes; a null text is an empty one.
    int compare(const char* text) const;
    // At most n bytes (all when negative). For an empty string: 0 for a null text, else 1.
    int compare(const char* text, int n) const;
    int compare_no_case(const char* text) const;   // A-Z as a-z; an empty string: 1 or 0
    int compare_no_case(const WCHAR* text) const;  // the text in the current codepage

    int find(char c) const;  // -1 when absent; NUL finds the end
    void drop_first(int n);
    // The part of the text within start .. start + count - 1, in the current codepage.
    DString substring(int start, int count) const;
    // Assigns what stands before the first blank to `out` and keeps what follows it. Without a
    // blank `out` gets all and this becomes empty; it does also when the blank comes first. An
    // empty string leaves `out` alone.
    void take_first_word(DString& out);

    // Sum of the capacities of all blocks, in bytes.
    static int32_t memory_in_use();

  private:
    struct Header {
        int32_t length;  // of the text; kUnknown where a caller may write it at any time
        int32_t capacity;
        uint16_t codepage;
        int16_t decimals;
    };

    // at(), buffer() and fill() leave a block to its caller, who may end the text anywhere at any
    // later time: from then on it is measured at each use. One that grows is the string's own
    // again.
    static constexpr int32_t kUnknown = -1;
    static constexpr int kSlack = 2;
    // "". Of unknown bound here, so that no compiler takes an offset in a text for one outside it.
    static const char kNoText[];

    Header& header() const { return *reinterpret_cast<Header*>(text_ - sizeof(Header)); }
    void end_at(int n) {  // writes the NUL
        text_[n] = 0;
        if (header().length != kUnknown)
            header().length = n;
    }
    void measure();  // after a conversion has written the text
    void allocate(int64_t capacity);
    void grow(int64_t need);
    // Puts n bytes, which may be the string's own, and a NUL at byte `start`, after reserve(room,
    // slack).
    void put(int start, const char* bytes, int n, int room, bool slack);
    // Puts n bytes at the end with room for `extra` more. Mostly there is room in a block of known
    // length, and then the bytes lie in front of their place, if they are its own.
    DString& append(const char* bytes, int n, int extra) {
        const int64_t start = text_ != nullptr ? header().length : kUnknown;
        if (start == kUnknown || start + n + extra + kSlack > header().capacity)
            return append_slowly(bytes, n, extra);
        std::memcpy(text_ + start, bytes, static_cast<size_t>(n));
        end_at(static_cast<int>(start) + n);
        return *this;
    }
    DString& append_slowly(const char* bytes, int n, int extra);
    // A text beyond any block gets a length that no block can be made for.
    static int Length(const char* text) {
        return static_cast<int>(std::min<size_t>(std::strlen(text), INT32_MAX));
    }
    void adopt_codepage(int32_t codepage);  // if the text is empty

    DString& append_int32(int32_t value);
    DString& append_int64(int64_t value);
    template <std::integral Long>
    DString& append_by_size(Long value) {
        if constexpr (sizeof(Long) > sizeof(int32_t))
            return append_int64(static_cast<int64_t>(value));
        else
            return append_int32(static_cast<int32_t>(value));
    }

    char* text_ = nullptr;
};

static_assert(sizeof(DString) == sizeof(char*));

}  // namespace zelto

#endif
