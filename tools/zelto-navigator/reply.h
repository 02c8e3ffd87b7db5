// The one-line replies of the protocol.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_REPLY_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_REPLY_H

#include <string>

#include "tools/text/wide.h"
#include "tools/zelto-navigator/refusal.h"

namespace zelto::navigator {

// Callers read at most 1000 bytes, and one byte more is written after a reply that came by file.
inline constexpr size_t kMaxReply = 999;

// "A" alone is too short for the library: a status reply has at least two bytes.
inline std::string Done() {
    return "A|0";
}

inline std::string Refused(Refusal number) {
    return "B|" + std::to_string(number);
}

// A reply that carries text after `kind` and "|", cut to what callers can take.
inline std::string Told(char kind, const std::string& text) {
    const std::string whole = std::string(1, kind) + "|" + text;
    return std::string(tools::CutUtf8(whole, kMaxReply));
}

}  // namespace zelto::navigator

#endif
