// A track, driven: what a receiver on board would say on the way.

#ifndef ZELTO_TOOLS_TRACK_DRIVE_H
#define ZELTO_TOOLS_TRACK_DRIVE_H

#include <functional>

#include "tools/track/track.h"
#include "tools/zelto-navigator/nmea_writer.h"

namespace zelto::track {

// Seconds from the start, both included, in which the receiver has no fix.
struct Tunnel {
    double from = 0;
    double to = 0;
};

struct DriveOptions {
    double speed = 1;  // times as fast as the track's times say, more than 0
    double rate = 1;   // fixes a second, more than 0
    std::vector<Tunnel> tunnels = {};
    bool jump = false;  // stand at each point until the next one's time, then be there
    int64_t start = 0;  // of a track without times; ms since 1970
};

// Speed at which a track without times is driven, and most fixes of a drive.
inline constexpr double kUsualSpeed = 50 / 3.6;  // metres a second
inline constexpr double kMaxFixes = 10e6;

// Hands over each fix of the drive, the first at the start, the last at the end or just after it. A
// track of which not every point has a time counts as one without. Throws TrackError, before the
// first fix, for a time that is earlier than the one before it, and for too many fixes.
void Drive(const Track& track, const DriveOptions& options,
           const std::function<void(const navigator::Moment&)>& take);

}  // namespace zelto::track

#endif
