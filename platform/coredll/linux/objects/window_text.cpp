#include "platform/coredll/linux/objects/window_text.h"

#include <string>

#include "platform/coredll/linux/base/ascii.h"

namespace zelto::coredll {

bool ValidWindowText(LPCWSTR text) {
    return text != nullptr && std::char_traits<WCHAR>::length(text) <= kMaxWindowText;
}

void CopyWindowText(WCHAR* to, LPCWSTR text) {
    const size_t length = text == nullptr ? 0 : std::char_traits<WCHAR>::length(text);
    std::char_traits<WCHAR>::copy(to, text, length);
    to[length] = 0;
}

bool SameWindowText(const WCHAR* text, LPCWSTR asked) {
    return asked == nullptr || SameFolded(text, asked);
}

}  // namespace zelto::coredll
