#include "platform/coredll/linux/objects/object_name.h"

#include <cstring>

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
    return a.hash == b.hash && a.length == b.length &&
           std::memcmp(a.text, b.text, a.length * sizeof(WCHAR)) == 0;
}

void CopyName(ObjectName& to, const ObjectName& from) {
    to.hash = from.hash;
    to.length = from.length;
    std::memcpy(to.text, from.text, (size_t{from.length} + 1) * sizeof(WCHAR));
}

}  // namespace zelto::coredll
