// A wide copy of an 8-bit text.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_WIDE_TEXT_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_WIDE_TEXT_H

#include <string>

#include "platform/coredll/coredll.h"

namespace zelto {

// Holds an 8-bit text, read in the current codepage, as wide text.
// Thread safety: none; one thread at a time.
class WideText {
  public:
    explicit WideText(const char* text);

    const WCHAR* Units() const { return units_.c_str(); }  // NUL-terminated, of this object

  private:
    std::basic_string<WCHAR> units_;
};

}  // namespace zelto

#endif
