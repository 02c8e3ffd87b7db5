// What the exported functions share: their edge to callers, and the texts of some of them.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_EXPORTS_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_EXPORTS_H

#include <cstdint>

#include "common/text/dstring.h"
#include "platform/coredll/coredll.h"

namespace zelto {

// Runs an export's body. Callers may be written in C: what is thrown becomes a result, and memory
// that cannot be had is the one thing that fails below.
template <class Body>
int32_t Guarded(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return ERROR_OUTOFMEMORY;
    }
}

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
