// GPX 1.1, the format in which programs hand on waypoints, routes and tracks.

#ifndef ZELTO_TOOLS_TRACK_GPX_H
#define ZELTO_TOOLS_TRACK_GPX_H

#include "tools/track/track.h"

namespace zelto::track {

// The track of a GPX file: all its track points, else its route points, else its waypoints.
// Points that say that there was no fix are left out. Throws TrackError for what is no GPX, for a
// file without points, and for one whose points are all void: without a fix, or all at 0,0.
Track ReadGpx(std::string_view text);

struct NamedRoute {
    std::string name;
    std::vector<NamedPlace> places;
};

struct GpxFile {
    std::vector<NamedPlace> waypoints;
    std::vector<NamedRoute> routes;
    Track track;  // without points there is none
};

// The file's text. Bytes that XML cannot hold become U+FFFD.
std::string WriteGpx(const GpxFile& file, const std::string& creator);

}  // namespace zelto::track

#endif
