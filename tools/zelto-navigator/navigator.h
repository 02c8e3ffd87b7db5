// What the stand-in navigator knows and has been asked to do. It has no map and computes no route:
// it remembers, checks what can be checked, and answers questions about it.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_NAVIGATOR_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_NAVIGATOR_H

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "tools/zelto-navigator/nmea.h"
#include "tools/zelto-navigator/place.h"

namespace zelto::navigator {

inline constexpr size_t kMaxWaypoints = 10000;
inline constexpr size_t kMaxTrack = 100000;  // the oldest go

struct MapCentre {
    Place place;
    double scale = 0;  // metres across the screen; 0: not said yet
};

struct Waypoint {
    std::string description;
    Place place;
    double altitude = 0;  // metres
    std::string icon;
};

struct Destination {
    Place place;
    std::string label;  // what stood in the request's last field
};

struct MessageBox {
    std::string title;
    std::string text;
    int style = 0;
    int seconds = 0;
};

// One second of the way; its parts as in the fix.
struct TrackPoint {
    Place place;
    std::optional<double> altitude;
    std::string date;
    std::string time;
};

struct Navigator {
    std::optional<MapCentre> centre;
    std::map<std::string, Waypoint, std::less<>> waypoints;
    std::optional<Destination> destination;
    std::string route;
    std::string file;
    Fix fix;
    std::deque<TrackPoint> track;
    uint64_t sentences = 0;  // taken, whatever their kind
    MessageBox last_box;
    uint64_t boxes = 0;
    std::string box_answer;  // the button that closed the last one; empty: none yet
    int last_command = 0;
    uint64_t commands = 0;
    uint64_t requests = 0;
    bool closing = false;  // asked to end
};

// Takes a position sentence: fix and track are its, where it can be read.
Sentence TakeSentence(Navigator& navigator, std::string_view sentence);

// The waypoint nearest to a place, or null without any.
const std::pair<const std::string, Waypoint>* NearestWaypoint(const Navigator& navigator,
                                                              const Place& place);

// The valid position and what lies near it, in words; "" without a valid position.
std::string DescribePosition(const Navigator& navigator);

}  // namespace zelto::navigator

#endif
