// The places that the stand-in navigator knows, asked for by the queries that it has for them.

#ifndef ZELTO_TOOLS_ZELTOPORT_KNOWN_PLACES_H
#define ZELTO_TOOLS_ZELTOPORT_KNOWN_PLACES_H

#include <optional>

#include "tools/track/track.h"

namespace zelto::tools {

struct KnownPlaces {
    std::vector<track::NamedPlace> waypoints;
    std::string route;                             // its text; empty: none
    std::optional<track::NamedPlace> destination;  // its name is the label
    std::optional<track::NamedPlace> position;     // its description is the altitude, or empty
    std::optional<track::NamedPlace> centre;       // its description is the scale, in metres
    track::Track track;
};

// A question that was not answered, with the library's result.
struct NoAnswer {
    int32_t result;
};

// Asks the navigator that the library is connected to. Throws NoAnswer.
KnownPlaces AskPlaces();

}  // namespace zelto::tools

#endif
