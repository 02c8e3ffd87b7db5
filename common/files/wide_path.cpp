#include "common/files/wide_path.h"

#include "common/text/codepage.h"

namespace zelto {

std::basic_string<WCHAR> WidePath(const DString& path) {
    const int length = path.length();
    if (length == 0)
        return {};
    CodepageRegistry* registry = GlobalCodepageRegistry();
    const int32_t codepage = path.codepage();
    const int units = NarrowToWide(registry, codepage, path.c_str(), length, nullptr, 0);
    if (units <= 0)
        return {};
    // Zeros behind whatever is written: not every way of converting counts or writes the NUL.
    std::basic_string<WCHAR> wide(static_cast<size_t>(units) + 1, 0);
    NarrowToWide(registry, codepage, path.c_str(), length, wide.data(), units + 1);
    wide.resize(wcslen(wide.c_str()));
    return wide;
}

}  // namespace zelto
