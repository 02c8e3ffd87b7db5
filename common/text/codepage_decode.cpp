// Bytes to units by a table, with the contextual forms of Arabic letters.

#include <algorithm>
#include <array>
#include <numeric>

#include "common/text/ascii_run.h"
#include "common/text/codepage_table.h"

namespace zelto {
namespace {

constexpr unsigned kFirstArabic = 0x0621;
constexpr unsigned kLastArabic = 0x064A;

constexpr uint8_t kJoinsNext = 1;      // the letter joins the one behind it
constexpr uint8_t kJoinsPrevious = 2;  // and the one in front of it

constexpr std::array<uint8_t, kLastArabic - kFirstArabic + 1> MakeJoining() {
    constexpr unsigned kBothSides[] = {
        0x062C, 0x062D, 0x062E, 0x0647, 0x0639, 0x063A, 0x0641, 0x0642, 0x062B, 0x0635, 0x0636,
        0x0637, 0x0643, 0x0645, 0x0646, 0x062A, 0x0644, 0x0628, 0x064A, 0x0633, 0x0634, 0x0638};
    constexpr unsigned kPreviousOnly[] = {0x0627, 0x0623, 0x0625, 0x0622, 0x062F, 0x0630,
                                          0x0631, 0x0632, 0x0648, 0x0624, 0x0629, 0x0649};
    std::array<uint8_t, kLastArabic - kFirstArabic + 1> joining{};
    for (const unsigned letter : kBothSides)
        joining[letter - kFirstArabic] = kJoinsNext | kJoinsPrevious;
    for (const unsigned letter : kPreviousOnly)
        joining[letter - kFirstArabic] = kJoinsPrevious;
    return joining;
}

constexpr auto kJoining = MakeJoining();

constexpr bool IsArabic(unsigned unit) {
    return unit - kFirstArabic <= kLastArabic - kFirstArabic;
}

constexpr unsigned Joining(unsigned unit) {
    return IsArabic(unit) ? kJoining[unit - kFirstArabic] : 0U;
}

uint16_t Meaning(const CodepageTable& table, unsigned byte) {
    return byte > kTablePageSize ? table.mapping[byte - kTablePageSize]
                                 : static_cast<uint16_t>(byte);
}

// Pages 1 to 4, counted from the letter's byte, by whether it joins the previous and next letter.
constexpr unsigned kForms[2][2] = {{0, 128}, {384, 256}};

// A long text is worth the meanings of all bytes in one table, which is looked up without a
// question.
void DecodeLong(const CodepageTable& table, const unsigned char* text, int count, WCHAR* out) {
    WCHAR meanings[2 * kTablePageSize];
    std::iota(meanings, meanings + kTablePageSize + 1, WCHAR{0});
    std::copy_n(table.mapping + 1, kTablePageSize - 1, meanings + kTablePageSize + 1);
    PatientBlock block;
    for (int i = 0; i < count;) {
        const ptrdiff_t ascii = CopyAsciiBlocks(text + i, count - i, out + i);
        i += static_cast<int>(ascii);
        const int stop = i + static_cast<int>(std::min<ptrdiff_t>(count - i, block.Next(ascii)));
        for (; i < stop; ++i)
            out[i] = meanings[text[i]];
    }
}

void DecodePlain(const CodepageTable& table, const unsigned char* text, int count, WCHAR* out) {
    constexpr int kLong = 128;
    if (count >= kLong)
        return DecodeLong(table, text, count, out);
    const auto ascii = static_cast<int>(CopyAsciiBlocks(text, count, out));
    for (int i = ascii; i < count; ++i)
        out[i] = Meaning(table, text[i]);
}

void DecodeArabic(const CodepageTable& table, const unsigned char* text, int count, WCHAR* out) {
    bool previous_joins = false;
    unsigned unit = Meaning(table, text[0]);
    for (int i = 0; i < count; ++i) {
        const unsigned next = i + 1 < count ? Meaning(table, text[i + 1]) : 0U;
        if (IsArabic(unit)) {
            const bool next_joins = (Joining(next) & kJoinsPrevious) != 0;
            out[i] = table.mapping[text[i] + kForms[previous_joins][next_joins]];
        } else {
            out[i] = static_cast<WCHAR>(unit);
        }
        previous_joins = (Joining(unit) & kJoinsNext) != 0;
        unit = next;
    }
}

}  // namespace

int DecodeByTable(const CodepageTable& table, const char* text, int count, WCHAR* out) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    if (count > 0 && table.page_count == 1)
        DecodePlain(table, bytes, count, out);
    else if (count > 0 && table.page_count == kMaxTablePages)
        DecodeArabic(table, bytes, count, out);
    else
        return 0;
    return count;
}

}  // namespace zelto
