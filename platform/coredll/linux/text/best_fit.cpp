#include "platform/coredll/linux/text/best_fit.h"

#include <string_view>

namespace zelto::coredll {
namespace {

// U+00A0 to U+017F in rows of 32; "?" where nothing fits.
constexpr char32_t kLatinFirst = 0xA0;
constexpr std::string_view kLatin =
    " !c??Y|?\"ca<?-R???23'u?.,1o>????"
    "AAAAAAACEEEEIIIIDNOOOOOxOUUUUY??"
    "aaaaaaaceeeeiiiidnooooo?ouuuuy?y"
    "AaAaAaCcCcCcCcDdDdEeEeEeEeEeGgGg"
    "GgGgHhHhIiIiIiIiIi??JjKk?LlLlLlL"
    "lLlNnNnNn???OoOoOoOoRrRrRrSsSsSs"
    "SsTtTtTtUuUuUuUuUuUuWwYyYZzZzZzs";
static_assert(kLatin.size() == 0x180 - kLatinFirst);

struct Range {
    char32_t first;
    char32_t last;
    char fit;
};

constexpr Range kRanges[] = {
    {0x0192, 0x0192, 'f'},  {0x0218, 0x0218, 'S'},  {0x0219, 0x0219, 's'}, {0x021A, 0x021A, 'T'},
    {0x021B, 0x021B, 't'},  {0x02C6, 0x02C6, '^'},  {0x02DC, 0x02DC, '~'}, {0x2000, 0x200A, ' '},
    {0x2010, 0x2015, '-'},  {0x2018, 0x2019, '\''}, {0x201A, 0x201A, ','}, {0x201B, 0x201B, '\''},
    {0x201C, 0x201F, '"'},  {0x2022, 0x2022, '*'},  {0x2026, 0x2026, '.'}, {0x202F, 0x202F, ' '},
    {0x2032, 0x2032, '\''}, {0x2033, 0x2033, '"'},  {0x2039, 0x2039, '<'}, {0x203A, 0x203A, '>'},
    {0x2044, 0x2044, '/'},  {0x2122, 0x2122, 'T'},  {0x2212, 0x2212, '-'}, {0x3000, 0x3000, ' '},
};

constexpr char32_t kFullWidthFirst = 0xFF01;  // of "!"
constexpr char32_t kFullWidthLast = 0xFF5E;

}  // namespace

char BestFit(char32_t value) {
    if (value >= kLatinFirst && value < kLatinFirst + kLatin.size()) {
        const char fit = kLatin[value - kLatinFirst];
        return fit == '?' ? '\0' : fit;
    }
    if (value >= kFullWidthFirst && value <= kFullWidthLast)
        return static_cast<char>(value - kFullWidthFirst + '!');
    for (const Range& range : kRanges) {
        if (value >= range.first && value <= range.last)
            return range.fit;
    }
    return '\0';
}

}  // namespace zelto::coredll
