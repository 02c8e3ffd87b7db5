#include "tools/zelto-navigator/navigator.h"

#include <fmt/core.h>

namespace zelto::navigator {

namespace {

// Adds the fix, a valid one. Sentences of one time make one point.
void ExtendTrack(Navigator& navigator) {
    const Fix& fix = navigator.fix;
    std::deque<TrackPoint>& track = navigator.track;
    if (track.empty() || fix.time.empty() || track.back().time != fix.time)
        track.emplace_back();
    track.back() = {fix.place, fix.altitude, fix.date, fix.time};
    if (track.size() > kMaxTrack)
        track.pop_front();
}

}  // namespace

Sentence TakeSentence(Navigator& navigator, std::string_view sentence) {
    const Sentence kind = ReadSentence(sentence, navigator.fix);
    if (kind == Sentence::kPosition)
        ExtendTrack(navigator);
    if (kind != Sentence::kBadChecksum && kind != Sentence::kUnreadable)
        ++navigator.sentences;
    return kind;
}

const std::pair<const std::string, Waypoint>* NearestWaypoint(const Navigator& navigator,
                                                              const Place& place) {
    const std::pair<const std::string, Waypoint>* nearest = nullptr;
    double least = 0;
    for (const auto& waypoint : navigator.waypoints) {
        const double distance = Distance(place, waypoint.second.place);
        if (nearest != nullptr && distance >= least)
            continue;
        nearest = &waypoint;
        least = distance;
    }
    return nearest;
}

std::string DescribePosition(const Navigator& navigator) {
    if (!navigator.fix.valid)
        return "";
    const Place& here = navigator.fix.place;
    std::string words = fmt::format("{:.6f},{:.6f}", here.latitude, here.longitude);
    const auto* nearest = NearestWaypoint(navigator, here);
    if (nearest == nullptr)
        return words + ",no street known";
    return words +
           fmt::format(",{:.0f} m from {}", Distance(here, nearest->second.place), nearest->first);
}

}  // namespace zelto::navigator
