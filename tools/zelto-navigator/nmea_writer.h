// What a receiver would say at one moment.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_NMEA_WRITER_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_NMEA_WRITER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/zelto-navigator/place.h"

namespace zelto::navigator {

struct Moment {
    int64_t time = 0;   // ms since 1970, universal time
    bool valid = true;  // else void: of what follows only the time is told
    Place place;
    std::optional<double> altitude;  // metres above mean sea level
    double speed = 0;                // metres a second
    double course = 0;               // degrees, 0 to 360
};

// RMC, GGA, VTG and GSA of the moment, each with its checksum and without a line break. The place
// is rounded to the hundred-thousandth of a minute, 2 cm.
std::vector<std::string> SentencesOf(const Moment& moment);

}  // namespace zelto::navigator

#endif
