// A way through the world, as a file or a user gives it.

#ifndef ZELTO_TOOLS_TRACK_TRACK_H
#define ZELTO_TOOLS_TRACK_TRACK_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/zelto-navigator/place.h"

namespace zelto::track {

struct Point {
    navigator::Place place;
    std::optional<double> altitude;  // metres
    std::optional<int64_t> time;     // ms since 1970, universal time
};

using Track = std::vector<Point>;

struct NamedPlace {
    std::string name;
    std::string description;
    std::string symbol;
    Point point;
};

// A text that is no track; what() says where and why.
class TrackError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The places in a text: pairs of degrees, latitude first, with commas, blanks or line breaks
// between the numbers. What stands behind "#" up to the line's end is skipped. Throws TrackError.
Track ReadPlaces(std::string_view text);

}  // namespace zelto::track

#endif
