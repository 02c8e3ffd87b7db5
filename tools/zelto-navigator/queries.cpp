#include "tools/zelto-navigator/queries.h"

#include <fmt/core.h>

#include "tools/zelto-navigator/fields.h"
#include "tools/zelto-navigator/reply.h"

namespace zelto::navigator {

namespace {

std::string Text(const std::string& text) {
    return Told('G', text);
}

std::string TextOfPlace(const Place& place) {
    return fmt::format("{:.6f},{:.6f}", place.latitude, place.longitude);
}

// A query that is answered whatever the state, with "" for what is not known.
std::string Handshake(const Navigator&, std::string_view) {
    return Text("zelto-navigator");
}

std::string Version(const Navigator&, std::string_view) {
    return Text("zelto-navigator " ZELTO_VERSION);
}

std::string Position(const Navigator& navigator, std::string_view) {
    if (!navigator.fix.valid)
        return Text("");
    std::string text = TextOfPlace(navigator.fix.place);
    if (navigator.fix.altitude)
        text += fmt::format(",{:.1f}", *navigator.fix.altitude);
    return Text(text);
}

std::string FixState(const Navigator& navigator, std::string_view) {
    const Fix& fix = navigator.fix;
    if (fix.time.empty())
        return Text("none");
    return Text(fmt::format("{} {} {}", fix.valid ? "valid" : "void", fix.date, fix.time));
}

std::string Sentences(const Navigator& navigator, std::string_view) {
    return Text(std::to_string(navigator.sentences));
}

std::string Centre(const Navigator& navigator, std::string_view) {
    if (!navigator.centre)
        return Text("");
    return Text(
        fmt::format("{},{:.0f}", TextOfPlace(navigator.centre->place), navigator.centre->scale));
}

std::string Waypoints(const Navigator& navigator, std::string_view) {
    return Text(std::to_string(navigator.waypoints.size()));
}

std::string OneWaypoint(const Navigator& navigator, std::string_view name) {
    const auto found = navigator.waypoints.find(name);
    if (found == navigator.waypoints.end())
        return Refused(kUnknownName);
    const Waypoint& waypoint = found->second;
    return Text(fmt::format("{},{:.1f},{},{}", TextOfPlace(waypoint.place), waypoint.altitude,
                            waypoint.icon, waypoint.description));
}

std::string GoalOf(const Navigator& navigator, std::string_view) {
    if (!navigator.destination)
        return Text("");
    return Text(TextOfPlace(navigator.destination->place) + "," + navigator.destination->label);
}

std::string Route(const Navigator& navigator, std::string_view) {
    return Text(navigator.route);
}

std::string File(const Navigator& navigator, std::string_view) {
    return Text(navigator.file);
}

std::string Boxes(const Navigator& navigator, std::string_view) {
    return Text(std::to_string(navigator.boxes));
}

std::string LastBox(const Navigator& navigator, std::string_view) {
    const MessageBox& box = navigator.last_box;
    return Text(navigator.boxes == 0 ? "" : box.title + "|" + box.text);
}

std::string BoxAnswer(const Navigator& navigator, std::string_view) {
    return Text(navigator.box_answer);
}

std::string Commands(const Navigator& navigator, std::string_view) {
    return Text(std::to_string(navigator.commands));
}

std::string LastCommand(const Navigator& navigator, std::string_view) {
    return Text(navigator.commands == 0 ? "" : std::to_string(navigator.last_command));
}

std::string Requests(const Navigator& navigator, std::string_view) {
    return Text(std::to_string(navigator.requests));
}

// As many of the texts from the `from`-th on as a reply holds; a long one alone may be cut.
template <class Texts>
std::string Joined(const Texts& texts, std::string_view from, char separator, auto text_of) {
    const auto first = ReadInteger(from);
    if (!first || *first < 0)
        return Refused(kMalformed);
    if (static_cast<size_t>(*first) >= texts.size())
        return Text("");
    std::string joined;
    for (auto each = std::next(texts.begin(), *first); each != texts.end(); ++each) {
        const std::string text = text_of(*each);
        if (!joined.empty() && joined.size() + text.size() + 1 > kMaxReply - 2)
            break;
        joined += (joined.empty() ? "" : std::string(1, separator)) + text;
    }
    return Text(joined);
}

std::string WaypointNames(const Navigator& navigator, std::string_view from) {
    return Joined(navigator.waypoints, from, ',', [](const auto& each) { return each.first; });
}

std::string Track(const Navigator& navigator, std::string_view from) {
    return Joined(navigator.track, from, ';', [](const TrackPoint& point) {
        return fmt::format("{},{},{},{}", TextOfPlace(point.place),
                           point.altitude ? fmt::format("{:.1f}", *point.altitude) : "", point.date,
                           point.time);
    });
}

constexpr Query kQueries[] = {
    {"0", "the greeting that the library asks for when it connects", Handshake},
    {"version", "name and version", Version},
    {"position", "latitude,longitude[,altitude]; empty without a valid position", Position},
    {"fix", "valid, void or none, then date and time as received", FixState},
    {"sentences", "number of NMEA sentences taken", Sentences},
    {"centre", "latitude,longitude,scale of the map; empty before it was centred", Centre},
    {"waypoints", "number of waypoints", Waypoints},
    {"waypoint NAME", "latitude,longitude,altitude,icon,description of one", OneWaypoint},
    {"waypoint-names N", "names of the waypoints from the N-th on, with commas between; N from 0",
     WaypointNames},
    {"destination", "latitude,longitude,label; empty without one", GoalOf},
    {"route", "the route being followed; empty without one", Route},
    {"track N", "latitude,longitude,altitude,date,time; ... of the track from the N-th on", Track},
    {"file", "the file opened last; empty before", File},
    {"boxes", "number of message boxes shown", Boxes},
    {"box", "title|text of the last message box; empty before", LastBox},
    {"box-answer", "button of the view with which the last box was closed; empty before",
     BoxAnswer},
    {"commands", "number of commands run", Commands},
    {"command", "number of the command run last; empty before", LastCommand},
    {"requests", "number of requests taken, this one included", Requests},
};

}  // namespace

std::span<const Query> Queries() {
    return kQueries;
}

std::string AnswerQuery(const Navigator& navigator, std::string_view line) {
    const std::string_view name = TakeField(line, ' ');
    for (const Query& query : kQueries) {
        std::string_view declared = query.name;
        const bool same = TakeField(declared, ' ') == name;
        // A query takes an argument exactly when its declaration has one.
        if (same && declared.empty() == line.empty())
            return query.answer(navigator, line);
    }
    return Refused(kUnknownName);
}

}  // namespace zelto::navigator
