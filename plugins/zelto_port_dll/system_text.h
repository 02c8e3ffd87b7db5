// 8-bit texts of callers that write in the system's own code page.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_SYSTEM_TEXT_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_SYSTEM_TEXT_H

#include "common/text/dstring.h"

namespace zelto {

// Converts a text from the system's code page to the current codepage. Only the 8-bit OpenFile
// and MessageBoxA do so; the other 8-bit exports send what they are given.
inline void RecodeSystemText(DString& text) {
    constexpr int kSystemCodepage = 1;
    constexpr int kCurrent = -1;
    text.set_codepage(kSystemCodepage);
    text.recode(kCurrent);
}

}  // namespace zelto

#endif
