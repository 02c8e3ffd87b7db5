#include "platform/coredll/linux/objects/names.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/coredll/linux/base/ascii.h"

namespace zelto::coredll {

bool MakeName(ObjectName& name, LPCWSTR text) {
    uint32_t hash = 2166136261u;  // FNV-1a over units
    uint32_t length = 0;
    for (; text[length] != 0; ++length) {
        if (length == MAX_PATH - 1)
            return false;
        name.text[length] = text[length];
        hash = (hash ^ text[length]) * 16777619u;
    }
    name.text[length] = 0;
    name.length = length;
    name.hash = hash;
    return true;
}

bool SameName(const ObjectName& a, const ObjectName& b) {
    return a.hash == b.hash && a.length == b.length && IsWholeName(a) &&
           std::memcmp(a.text, b.text, a.length * sizeof(WCHAR)) == 0;
}

void CopyName(ObjectName& to, const ObjectName& from) {
    to.hash = from.hash;
    to.length = from.length;
    std::memcpy(to.text, from.text, (size_t{from.length} + 1) * sizeof(WCHAR));
}

bool IsWholeName(const ObjectName& name) {
    return name.length < MAX_PATH;
}

bool ValidWindowText(LPCWSTR text) {
    return text != nullptr && std::char_traits<WCHAR>::length(text) <= kMaxWindowText;
}

void CopyWindowText(WCHAR* to, LPCWSTR text) {
    const size_t length = text == nullptr ? 0 : std::char_traits<WCHAR>::length(text);
    std::char_traits<WCHAR>::copy(to, text, length);
    to[length] = 0;
}

bool SameWindowText(const WCHAR (&text)[kMaxWindowText + 1], LPCWSTR asked) {
    return asked == nullptr || (text[kMaxWindowText] == 0 && SameFolded(text, asked));
}

}  // namespace zelto::coredll
