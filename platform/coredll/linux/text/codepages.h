// Code pages of one byte a character, which are the layer's own, and of two, which the host has.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TEXT_CODEPAGES_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TEXT_CODEPAGES_H

#include <array>
#include <memory>
#include <vector>

#include "platform/coredll/linux/base/unicode.h"
#include "platform/coredll/linux/text/single_byte_pages.h"

namespace zelto::coredll {

// Bytes below 0x80 are ASCII in every page. Immutable once made, so any thread may use it.
class CodePage {
  public:
    static std::unique_ptr<const CodePage> Make(const SingleBytePage& data);
    // Asks the host; null when it does not have the page.
    static std::unique_ptr<const CodePage> Make(const char* host_name);

    // `left` is at least 1. Of a pair without a meaning, the second byte is left in the text when
    // it is ASCII.
    Taken Take(const unsigned char* bytes, size_t left) const;

    // What is read where there is no character: a private-use unit that keeps the byte, or U+FFFD.
    WCHAR StandIn(unsigned char byte) const { return stand_in_[byte]; }

    // Writes the 1 or 2 bytes of the unit or of its best fit and returns how many; 0 when there is
    // neither.
    size_t Put(WCHAR value, unsigned char* out) const;

    // Whether the byte is the first of two.
    bool IsLead(unsigned char byte) const { return trail_row_[byte] != 0; }

  private:
    static constexpr WCHAR kNone = 0xFFFF;  // no page holds this value
    using TrailRow = std::array<WCHAR, 256>;
    using CodeRow = std::array<uint16_t, 256>;

    CodePage();
    void Assign(uint16_t code, WCHAR value);
    void AssignFits(std::u16string_view pairs);
    void AssignCode(WCHAR value, uint16_t code);
    uint16_t CodeOf(WCHAR value) const;
    friend class HostPageReader;

    std::array<WCHAR, 256> single_;  // kNone: a lead byte or nothing
    std::array<WCHAR, 256> stand_in_;
    std::array<uint8_t, 256> trail_row_{};  // of a lead byte: place in trails_, from 1
    std::vector<TrailRow> trails_;          // by second byte
    std::array<uint16_t, 256> code_row_{};  // of a value's high byte: place in codes_
    std::vector<CodeRow> codes_;            // by low byte; 0: none. The first row is empty
};

inline uint16_t CodePage::CodeOf(WCHAR value) const {
    return codes_[code_row_[value >> 8]][value & 0xFF];
}

inline Taken CodePage::Take(const unsigned char* bytes, size_t left) const {
    const WCHAR value = single_[bytes[0]];
    if (value != kNone)
        return {value, 1};
    if (!IsLead(bytes[0]) || left < 2)
        return {kNoCharacter, 1};
    const WCHAR pair = trails_[trail_row_[bytes[0]] - 1u][bytes[1]];
    if (pair != kNone)
        return {pair, 2};
    return {kNoCharacter, bytes[1] < 0x80 ? size_t{1} : size_t{2}};
}

inline size_t CodePage::Put(WCHAR value, unsigned char* out) const {
    const uint16_t code = CodeOf(value);
    if (code >= 0x100) {
        out[0] = static_cast<unsigned char>(code >> 8);
        out[1] = static_cast<unsigned char>(code);
        return 2;
    }
    out[0] = static_cast<unsigned char>(code);
    return code != 0 || value == 0 ? 1 : 0;
}

// The page of a Windows code page number, made at its first use and then kept; null for one that
// is not to be had. Thread-safe.
const CodePage* FindCodePage(UINT number);

}  // namespace zelto::coredll

#endif
