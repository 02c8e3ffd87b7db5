#include "tools/zelto-navigator/requests.h"

#include <optional>

#include "platform/coredll/coredll.h"
#include "tools/text/wide.h"
#include "tools/zelto-navigator/fields.h"
#include "tools/zelto-navigator/queries.h"
#include "tools/zelto-navigator/reply.h"

namespace zelto::navigator {

namespace {

std::string GetString(Navigator& navigator, std::string_view arguments) {
    return AnswerQuery(navigator, arguments);
}

std::string PositionStreet(Navigator& navigator, std::string_view) {
    const std::string words = DescribePosition(navigator);
    return words.empty() ? Refused(kNoPosition) : Told('A', words);
}

std::string Coverage(Navigator& navigator, std::string_view) {
    return navigator.fix.valid ? Done() : Refused(kNoPosition);
}

// Two coordinates off the front of comma-separated arguments.
std::optional<Place> TakePlace(std::string_view& arguments) {
    const auto latitude = ReadNumber(TakeField(arguments, ','));
    const auto longitude = ReadNumber(TakeField(arguments, ','));
    if (!latitude || !longitude)
        return std::nullopt;
    return Place{*latitude, *longitude};
}

std::string ShowMessageBox(Navigator& navigator, std::string_view arguments) {
    if (TakeField(arguments, '|') != "1")
        return Refused(kMalformed);
    MessageBox box;
    box.title = TakeField(arguments, '|');
    // The text may hold separators itself: the two numbers are the last two fields.
    const size_t second = arguments.rfind('|');
    if (second == std::string_view::npos || second == 0)
        return Refused(kMalformed);
    const size_t first = arguments.rfind('|', second - 1);
    if (first == std::string_view::npos)
        return Refused(kMalformed);
    const auto style = ReadInteger(arguments.substr(first + 1, second - first - 1));
    const auto seconds = ReadInteger(arguments.substr(second + 1));
    if (!style || !seconds)
        return Refused(kMalformed);
    box.text = arguments.substr(0, first);
    box.style = *style;
    box.seconds = *seconds;
    navigator.last_box = box;
    navigator.box_answer.clear();
    ++navigator.boxes;
    return Done();
}

std::string OpenFile(Navigator& navigator, std::string_view path) {
    std::u16string wide;
    if (path.empty() || !tools::WideFromUtf8(path, wide))
        return Refused(kMalformed);
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return Refused(kNoSuchFile);
    navigator.file = path;
    return Done();
}

std::string NewWaypoint(Navigator& navigator, std::string_view arguments) {
    const std::string name(TakeField(arguments, ','));
    Waypoint waypoint;
    waypoint.description = TakeField(arguments, ',');
    const auto place = TakePlace(arguments);
    const auto altitude = ReadNumber(TakeField(arguments, ','));
    if (name.empty() || !place || !altitude)
        return Refused(kMalformed);
    if (!place->InWorld())
        return Refused(kOutsideWorld);
    if (navigator.waypoints.size() >= kMaxWaypoints && !navigator.waypoints.contains(name))
        return Refused(kFull);
    waypoint.place = *place;
    waypoint.altitude = *altitude;
    waypoint.icon = arguments;
    navigator.waypoints[name] = waypoint;
    return Done();
}

std::string DeleteWaypoint(Navigator& navigator, std::string_view name) {
    const auto found = navigator.waypoints.find(name);
    if (found == navigator.waypoints.end())
        return Refused(kUnknownName);
    navigator.waypoints.erase(found);
    return Done();
}

std::string CenterCoordinate(Navigator& navigator, std::string_view arguments) {
    const auto place = TakePlace(arguments);
    const auto scale = ReadNumber(arguments);
    if (!place || !scale || *scale < 0)
        return Refused(kMalformed);
    if (!place->InWorld())
        return Refused(kOutsideWorld);
    const double kept = navigator.centre ? navigator.centre->scale : 0;
    navigator.centre = MapCentre{*place, *scale == 0 ? kept : *scale};
    return Done();
}

std::string ExecCommand(Navigator& navigator, std::string_view arguments) {
    const auto number = ReadInteger(arguments);
    if (!number)
        return Refused(kMalformed);
    if (*number < 0)
        return Refused(kNoSuchCommand);
    navigator.last_command = *number;
    ++navigator.commands;
    return Done();
}

std::string Goto(Navigator& navigator, std::string_view arguments) {
    const auto place = TakePlace(arguments);
    if (!place || !arguments.starts_with(",,"))
        return Refused(kMalformed);
    if (!place->InWorld())
        return Refused(kOutsideWorld);
    navigator.destination = Destination{*place, std::string(arguments.substr(2))};
    navigator.route.clear();
    return Done();
}

std::string NewPoint(Navigator& navigator, std::string_view sentence) {
    switch (TakeSentence(navigator, sentence)) {
        case Sentence::kBadChecksum:
            return Refused(kBadChecksum);
        case Sentence::kUnreadable:
            return Refused(kBadSentence);
        default:
            return Done();
    }
}

std::string GotoRuta(Navigator& navigator, std::string_view route) {
    if (route.empty())
        return Refused(kMalformed);
    navigator.route = route;
    navigator.destination.reset();
    return Done();
}

std::string Close(Navigator& navigator, std::string_view) {
    navigator.closing = true;
    return Done();
}

constexpr Request kRequests[] = {
    {'F', GetString},   {'e', PositionStreet}, {'a', Coverage},       {'T', ShowMessageBox},
    {'D', OpenFile},    {'M', NewWaypoint},    {'N', DeleteWaypoint}, {'O', CenterCoordinate},
    {'I', ExecCommand}, {'S', Goto},           {'E', NewPoint},       {'f', GotoRuta},
    {'R', Close},
};

}  // namespace

std::span<const Request> Requests() {
    return kRequests;
}

const Request* FindRequest(std::string_view line) {
    if (line.size() < 3 || line[1] != '|' || line.back() != '\n')
        return nullptr;
    for (const Request& request : kRequests) {
        if (request.letter == line[0])
            return &request;
    }
    return nullptr;
}

std::string Answer(Navigator& navigator, std::string_view line) {
    ++navigator.requests;
    const Request* request = FindRequest(line);
    if (request == nullptr)
        return Refused(kUnknownRequest);
    return request->handle(navigator, line.substr(2, line.size() - 3));
}

}  // namespace zelto::navigator
