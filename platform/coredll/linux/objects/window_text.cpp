#include "platform/coredll/linux/objects/window_text.h"

#include <string>

namespace zelto::coredll {
namespace {

WCHAR Fold(WCHAR unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<WCHAR>(unit + (u'a' - u'A')) : unit;
}

}  // namespace

bool ValidWindowText(LPCWSTR text) {
    return text != nullptr && std::char_traits<WCHAR>::length(text) <= kMaxWindowText;
}

void CopyWindowText(WCHAR* to, LPCWSTR text) {
    const size_t length = text == nullptr ? 0 : std::char_traits<WCHAR>::length(text);
    std::char_traits<WCHAR>::copy(to, text, length);
    to[length] = 0;
}

bool SameWindowText(const WCHAR* text, LPCWSTR asked) {
    if (asked == nullptr)
        return true;
    for (; *text != 0 && Fold(*text) == Fold(*asked); ++text)
        ++asked;
    return Fold(*text) == Fold(*asked);
}

}  // namespace zelto::coredll
