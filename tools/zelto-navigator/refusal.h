// The numbers that the stand-in navigator sends after "B|". They begin at 301 so that none equals
// a result code of the library or a system error that a request can meet.

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

struct RefusalText {
    Refusal number;
    const char* words;
};

inline constexpr RefusalText kRefusals[] = {
    {kUnknownRequest, "the request letter is not known"},
    {kMalformed, "the request's arguments do not have the stated form"},
    {kOutsideWorld, "a latitude beyond 90 or a longitude beyond 180 degrees"},
    {kUnknownName, "no waypoint, or no query, of that name"},
    {kNoSuchFile, "the file to open does not exist"},
    {kBadChecksum, "the sentence's checksum is wrong or missing"},
    {kBadSentence, "not an NMEA sentence, or its fields cannot be read"},
    {kNoPosition, "there is no valid position at present"},
    {kFull, "no room for another waypoint"},
    {kNoSuchCommand, "there is no command of that number"},
};

}  // namespace zelto::navigator

#endif
