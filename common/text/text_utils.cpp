#include "common/text/text_utils.h"

#include <cstring>

#include "platform/coredll/coredll.h"

namespace zelto {
namespace {

bool IsLineBreak(char c) {
    return c == '\r' || c == '\n';
}

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

// Keeps `count` bytes from `begin`, which points into the text's own bytes.
void KeepPart(char* text, const char* begin, size_t count) {
    std::memmove(text, begin, count);
    text[count] = 0;
}

}  // namespace

bool ExtractBody(DString& text) {
    constexpr char kOpening[] = "<BODY>";
    const char* opening = std::strstr(text.c_str(), kOpening);
    if (opening == nullptr)
        return false;
    const char* body = opening + sizeof kOpening - 1;
    const char* closing = std::strstr(body, "</BODY>");
    if (closing == nullptr)
        return false;
    const auto begin = body - text.c_str();
    const auto count = static_cast<size_t>(closing - body);
    char* bytes = text.at(0);
    KeepPart(bytes, bytes + begin, count);
    TrimLineBreaks(text);
    return true;
}

void TrimLineBreaks(DString& text) {
    if (text.is_empty())
        return;
    char* begin = text.at(0);
    char* first = begin;
    char* end = begin + text.length();
    while (first < end && IsLineBreak(*first))
        ++first;
    while (first < end && IsLineBreak(end[-1]))
        --end;
    KeepPart(begin, first, static_cast<size_t>(end - first));
}

int CompareNoCase(const char* a, const char* b) {
    return _stricmp(OrEmpty(a), OrEmpty(b));
}

int CompareNoCase(const char* a, const char* b, int32_t count) {
    return count > 0 ? _strnicmp(OrEmpty(a), OrEmpty(b), static_cast<size_t>(count)) : 0;
}

}  // namespace zelto
