#include "tools/zeltoport/known_places.h"

#include <fmt/core.h>

#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/track/iso_time.h"
#include "tools/zelto-navigator/fields.h"

namespace zelto::tools {

namespace {

using navigator::TakeField;

constexpr uint32_t kReplySize = 1024;

std::string Ask(const std::string& query) {
    std::string answer(kReplySize + 1, '\0');
    const int32_t result = ZeltoNavPort_GetString(query.c_str(), kReplySize, answer.data());
    if (result != ZELTO_NAV_PORT_OK)
        throw NoAnswer{result};
    answer.resize(answer.find('\0'));
    return answer;
}

// "latitude,longitude[,altitude]" off the front.
track::Point TakePoint(std::string_view& text) {
    track::Point point;
    point.place.latitude = navigator::ReadNumber(TakeField(text, ',')).value_or(0);
    point.place.longitude = navigator::ReadNumber(TakeField(text, ',')).value_or(0);
    point.altitude = navigator::ReadNumber(TakeField(text, ','));
    return point;
}

track::NamedPlace AskWaypoint(const std::string& name) {
    const std::string answer = Ask("waypoint " + name);
    std::string_view rest = answer;
    track::NamedPlace place;
    place.name = name;
    place.point = TakePoint(rest);
    // Of a waypoint's texts only the icon may hold commas.
    const size_t comma = rest.rfind(',');
    place.symbol = rest.substr(0, comma);
    place.description = comma == rest.npos ? "" : rest.substr(comma + 1);
    return place;
}

std::vector<track::NamedPlace> AskWaypoints() {
    std::vector<track::NamedPlace> waypoints;
    for (;;) {
        const std::string names = Ask(fmt::format("waypoint-names {}", waypoints.size()));
        if (names.empty())
            return waypoints;
        for (std::string_view rest = names; !rest.empty();)
            waypoints.push_back(AskWaypoint(std::string(TakeField(rest, ','))));
    }
}

// Of "ddmmyy" and "hhmmss.sss".
std::optional<int64_t> TimeOf(std::string_view date, std::string_view time) {
    if (date.size() != 6 || time.size() < 6)
        return std::nullopt;
    const char* century = date.substr(4) < "80" ? "20" : "19";
    return track::ReadIsoTime(fmt::format("{}{}-{}-{}T{}:{}:{}Z", century, date.substr(4),
                                          date.substr(2, 2), date.substr(0, 2), time.substr(0, 2),
                                          time.substr(2, 2), time.substr(4)));
}

track::Track AskTrack() {
    track::Track track;
    for (;;) {
        const std::string points = Ask(fmt::format("track {}", track.size()));
        if (points.empty())
            return track;
        for (std::string_view rest = points; !rest.empty();) {
            std::string_view fields = TakeField(rest, ';');
            track::Point point = TakePoint(fields);
            const std::string_view date = TakeField(fields, ',');
            point.time = TimeOf(date, fields);
            track.push_back(point);
        }
    }
}

// "latitude,longitude,more"; nothing for "".
std::optional<track::NamedPlace> AskPlace(const std::string& query) {
    const std::string answer = Ask(query);
    if (answer.empty())
        return std::nullopt;
    std::string_view rest = answer;
    track::NamedPlace place;
    place.point.place.latitude = navigator::ReadNumber(TakeField(rest, ',')).value_or(0);
    place.point.place.longitude = navigator::ReadNumber(TakeField(rest, ',')).value_or(0);
    place.description = rest;
    return place;
}

}  // namespace

KnownPlaces AskPlaces() {
    KnownPlaces known;
    known.waypoints = AskWaypoints();
    known.route = Ask("route");
    known.destination = AskPlace("destination");
    if (known.destination) {
        const std::string& label = known.destination->description;
        known.destination->name = label.empty() || label == "0" ? "destination" : label;
        known.destination->description.clear();
    }
    known.position = AskPlace("position");
    known.centre = AskPlace("centre");
    known.track = AskTrack();
    return known;
}

}  // namespace zelto::tools
