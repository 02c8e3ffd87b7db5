// Comparing, finding and cutting.

#include <algorithm>
#include <cstring>

#include "common/text/dstring.h"

namespace zelto {

int DString::compare(const char* text) const {
    if (text == nullptr || *text == 0)
        return is_empty() ? 0 : 1;
    return is_empty() ? -1 : std::strcmp(text_, text);
}

int DString::compare(const char* text, int n) const {
    if (text == nullptr)
        return is_empty() ? 0 : 1;
    if (is_empty())
        return 1;
    return n < 0 ? std::strcmp(text_, text) : std::strncmp(text_, text, static_cast<size_t>(n));
}

int DString::compare_no_case(const char* text) const {
    if (text == nullptr)
        return is_empty() ? 0 : 1;
    if (is_empty())
        return *text != 0 ? 1 : 0;
    return _stricmp(text_, text);
}

int DString::compare_no_case(const WCHAR* text) const {
    return compare_no_case(DString(text).c_str());
}

int DString::find(char c) const {
    const char* begin = c_str();
    const char* found = std::strchr(begin, c);
    return found != nullptr ? static_cast<int>(found - begin) : -1;
}

void DString::drop_first(int n) {
    if (n <= 0)
        return;
    const int count = length();
    if (n >= count)
        clear();
    else
        put(0, text_ + n, count - n, 0, false);
}

DString DString::substring(int start, int count) const {
    const int end = length();
    const int first = std::clamp(start, 0, end);
    const int n = std::clamp(count, 0, end - first);
    DString part;
    if (n > 0)
        part.append(text_ + first, n, 0);
    return part;
}

void DString::take_first_word(DString& out) {
    if (is_empty())
        return;
    const int end = length();
    const int blank = find(' ');
    const int cut = blank < 0 ? end : blank;
    end_at(cut);
    out = *this;
    if (cut == 0 || cut == end)
        clear();
    else
        put(0, text_ + cut + 1, end - cut - 1, 0, false);
}

}  // namespace zelto
