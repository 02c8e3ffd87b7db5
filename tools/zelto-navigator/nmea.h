// Position sentences of satellite receivers (NMEA 0183).

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_NMEA_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_NMEA_H

#include <optional>
#include <string>
#include <string_view>

#include "tools/zelto-navigator/place.h"

namespace zelto::navigator {

// What the receiver said last. A void sentence clears `valid` and keeps the rest as last known.
struct Fix {
    bool valid = false;
    Place place;
    std::optional<double> altitude;  // metres above mean sea level, from GGA
    std::optional<double> speed;     // knots, from RMC
    std::optional<double> course;    // degrees, from RMC
    std::optional<int> satellites;   // from GGA
    std::string time;                // hhmmss or hhmmss.sss, universal time
    std::string date;                // ddmmyy, from RMC
};

enum class Sentence {
    kPosition,     // RMC or GGA with a valid fix
    kVoid,         // RMC or GGA of a receiver that has no fix
    kOther,        // any other kind, its checksum right
    kBadChecksum,  // wrong or missing
    kUnreadable,   // no sentence at all, or an RMC or GGA whose fields make no sense
};

// Reads one sentence, a trailing line break allowed, of any talker. `fix` changes only with
// kPosition and kVoid.
Sentence ReadSentence(std::string_view text, Fix& fix);

}  // namespace zelto::navigator

#endif
