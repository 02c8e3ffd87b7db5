// The numbers that the stand-in navigator sends after "B|". They begin at 301 so that none equals
// a result code of the library or a system error that a request can meet. What they mean is in the
// table of results.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_REFUSAL_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_REFUSAL_H

namespace zelto::navigator {

enum Refusal : int {
    kUnknownRequest = 301,
    kMalformed = 302,
    kOutsideWorld = 303,
    kUnknownName = 304,
    kNoSuchFile = 305,
    kBadChecksum = 306,
    kBadSentence = 307,
    kNoPosition = 308,
    kFull = 309,
    kNoSuchCommand = 310,
};

inline constexpr int kFirstRefusal = kUnknownRequest;
inline constexpr int kLastRefusal = kNoSuchCommand;

}  // namespace zelto::navigator

#endif
