#include "plugins/zelto_port_dll/wide_text.h"

#include <algorithm>
#include <cstring>

#include "common/text/codepage.h"

namespace zelto {

WideText::WideText(const char* text) {
    const int count = static_cast<int>(std::strlen(text));
    if (count == 0)
        return;
    CodepageRegistry* registry = GlobalCodepageRegistry();
    const int32_t codepage = CurrentCodepage();
    const int measured = std::max(0, NarrowToWide(registry, codepage, text, count, nullptr, 0));
    units_.resize(static_cast<size_t>(measured) + 1);
    NarrowToWide(registry, codepage, text, count, units_.data(), measured + 1);
    units_.resize(wcslen(units_.c_str()));
}

}  // namespace zelto
