// The edge between the exported functions and code that may throw.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_GUARDED_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_GUARDED_H

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

}  // namespace zelto

#endif
