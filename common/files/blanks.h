// Blanks between the tokens of a line.

#ifndef ZELTO_COMMON_FILES_BLANKS_H
#define ZELTO_COMMON_FILES_BLANKS_H

#include <cstddef>
#include <string_view>

namespace zelto {

inline bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// How many of them stand at the front.
inline size_t CountBlanks(std::string_view text) {
    size_t count = 0;
    while (count < text.size() && IsBlank(text[count]))
        ++count;
    return count;
}

}  // namespace zelto

#endif
