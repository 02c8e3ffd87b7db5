// Wide texts in, and other codepages.

#include <algorithm>

#include "common/text/codepage.h"
#include "common/text/dstring.h"

namespace zelto {
namespace {

constexpr int kMargin = 10;

// Codepage 1 asks the system for its default one.
int32_t OrDefault(int32_t codepage) {
    return codepage == 1 ? 0 : codepage;
}

}  // namespace

DString::DString(const WCHAR* text) {
    if (text != nullptr)
        assign_wide(text, -1);
}

DString* DString::operator=(const WCHAR* text) {
    if (text == nullptr)
        return *this = "";
    reserve(1, true);
    clear();
    assign_wide(text, -1);
    return this;
}

DString& DString::operator+=(const WCHAR* text) {
    return text != nullptr ? *this += DString(text) : *this;
}

int DString::assign_wide(const WCHAR* text, int count) {
    const int units = UnitCount(text, count);
    if (units == 0) {
        clear();
        return 0;
    }
    CodepageRegistry* registry = GlobalCodepageRegistry();
    const int32_t target = codepage();
    const int size = WideToNarrow(registry, target, text, units, nullptr, 0);
    if (size <= 0) {
        *this = "utf16 error!";
        return 0;
    }
    reserve(size + 1 + kMargin, true);
    const int result = WideToNarrow(registry, target, text, units, text_, size + 1);
    measure();
    return result;
}

void DString::recode(int32_t target) {
    if (target < 0)
        target = CurrentCodepage();
    const int32_t source = codepage();
    if (source == target)
        return;
    const std::basic_string<WCHAR> wide = ToWide(c_str(), length(), OrDefault(source));
    CodepageRegistry* registry = GlobalCodepageRegistry();
    const int32_t encoding = OrDefault(target);
    const int size = std::max(0, WideToNarrow(registry, encoding, wide.c_str(), -1, nullptr, 0));
    reserve(size + 2 * kMargin, true);
    WideToNarrow(registry, encoding, wide.c_str(), -1, text_, size + kMargin);
    measure();
    set_codepage(target);
}

}  // namespace zelto
