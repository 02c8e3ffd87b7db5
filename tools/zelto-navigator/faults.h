// Faults to show to a client under test.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_FAULTS_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_FAULTS_H

#include <optional>
#include <string>

#include "platform/coredll/coredll.h"

namespace zelto::navigator {

// The request itself is carried out all the same.
struct Faults {
    std::optional<std::string> reply;  // sent in the place of the right one
    DWORD delay = 0;                   // milliseconds before the reply goes out
    bool silent = false;               // no reply at all
    std::string letters;               // the requests concerned; empty: all

    bool Concern(const std::string& request) const;
};

}  // namespace zelto::navigator

#endif
