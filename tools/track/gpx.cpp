#include "tools/track/gpx.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <fmt/core.h>
#include <pugixml.hpp>
#include <sstream>

#include "tools/text/wide.h"
#include "tools/track/iso_time.h"
#include "tools/zelto-navigator/fields.h"

namespace zelto::track {

namespace {

constexpr double kSmallestAngle = 1e-7;  // degrees, of seven decimals

struct Reading {
    Track track;
    size_t seen = 0;
    size_t unfixed = 0;  // of them, those without a fix
};

Point ReadPoint(const pugi::xml_node& node, size_t number) {
    const auto latitude = navigator::ReadNumber(node.attribute("lat").value());
    const auto longitude = navigator::ReadNumber(node.attribute("lon").value());
    if (!latitude || !longitude || !navigator::Place{*latitude, *longitude}.InWorld())
        throw TrackError(fmt::format("point {} has no place on earth: lat=\"{}\" lon=\"{}\"",
                                     number, tools::Printable(node.attribute("lat").value()),
                                     tools::Printable(node.attribute("lon").value())));
    const char* time = node.child_value("time");
    const auto when = ReadIsoTime(time);
    if (*time != '\0' && !when)
        throw TrackError(fmt::format("point {} has a time that cannot be read, \"{}\"", number,
                                     tools::Printable(time)));
    return {{*latitude, *longitude}, navigator::ReadNumber(node.child_value("ele")), when};
}

void Take(const pugi::xml_node& node, Reading& reading) {
    ++reading.seen;
    if (std::strcmp(node.child_value("fix"), "none") == 0)
        ++reading.unfixed;
    else
        reading.track.push_back(ReadPoint(node, reading.seen));
}

Reading ReadPoints(const pugi::xml_node& gpx) {
    Reading reading;
    for (const pugi::xml_node& track : gpx.children("trk"))
        for (const pugi::xml_node& segment : track.children("trkseg"))
            for (const pugi::xml_node& point : segment.children("trkpt"))
                Take(point, reading);
    if (reading.seen == 0) {
        for (const pugi::xml_node& route : gpx.children("rte"))
            for (const pugi::xml_node& point : route.children("rtept"))
                Take(point, reading);
    }
    if (reading.seen == 0) {
        for (const pugi::xml_node& point : gpx.children("wpt"))
            Take(point, reading);
    }
    return reading;
}

void RequireMovement(const Reading& reading) {
    if (reading.seen == 0)
        throw TrackError("it has no points: no <trkpt>, <rtept> or <wpt>");
    if (reading.unfixed == reading.seen)
        throw TrackError(
            fmt::format("all of its {} points are void (<fix>none</fix>): the "
                        "program that converted it left the positions out",
                        reading.seen));
    const auto is_nowhere = [](const Point& point) {
        return point.place.latitude == 0 && point.place.longitude == 0;
    };
    if (std::all_of(reading.track.begin(), reading.track.end(), is_nowhere))
        throw TrackError(
            fmt::format("all of its {} points are void (at 0,0): the program that "
                        "converted it left the positions out",
                        reading.seen));
}

// XML holds characters of UTF-8 alone, and of the control characters tab and line breaks.
std::string XmlText(std::string_view text) {
    std::string fit;
    while (!text.empty()) {
        const size_t size = tools::Utf8CharacterSize(text);
        const std::string_view character = text.substr(0, std::max<size_t>(size, 1));
        const bool control = static_cast<unsigned char>(text[0]) < 0x20 &&
                             std::string_view("\t\n\r").find(text[0]) == std::string_view::npos;
        const bool forbidden = character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
        if (size == 0 || control || forbidden)
            fit += "\xEF\xBF\xBD";
        else
            fit += character;
        text.remove_prefix(character.size());
    }
    return fit;
}

void AddText(pugi::xml_node node, const char* name, const std::string& text) {
    if (!text.empty())
        node.append_child(name).text().set(XmlText(text).c_str());
}

// The children stand in the schema's order.
pugi::xml_node AddPoint(pugi::xml_node parent, const char* kind, const Point& point) {
    pugi::xml_node node = parent.append_child(kind);
    // 180 degrees west and east are one place, which the schema writes as west.
    const bool antimeridian = point.place.longitude >= 180 - kSmallestAngle / 2;
    const double longitude = antimeridian ? -180 : point.place.longitude;
    node.append_attribute("lat") = fmt::format("{:.7f}", point.place.latitude).c_str();
    node.append_attribute("lon") = fmt::format("{:.7f}", longitude).c_str();
    if (point.altitude)
        AddText(node, "ele", fmt::format("{:.1f}", *point.altitude));
    if (point.time)
        AddText(node, "time", WriteIsoTime(*point.time));
    return node;
}

void AddNamed(pugi::xml_node parent, const char* kind, const NamedPlace& place) {
    pugi::xml_node node = AddPoint(parent, kind, place.point);
    AddText(node, "name", place.name);
    AddText(node, "desc", place.description);
    AddText(node, "sym", place.symbol);
}

void AddTrack(pugi::xml_node gpx, const Track& track) {
    if (track.empty())
        return;
    pugi::xml_node segment = gpx.append_child("trk").append_child("trkseg");
    for (const Point& point : track)
        AddPoint(segment, "trkpt", point);
}

}  // namespace

Track ReadGpx(std::string_view text) {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(text.data(), text.size());
    if (!parsed)
        throw TrackError(
            fmt::format("it is not XML: {} at byte {}", parsed.description(), parsed.offset));
    const pugi::xml_node gpx = document.child("gpx");
    if (!gpx)
        throw TrackError("it is XML, but no GPX: its outermost element is not <gpx>");
    Reading reading = ReadPoints(gpx);
    RequireMovement(reading);
    return reading.track;
}

std::string WriteGpx(const GpxFile& file, const std::string& creator) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    pugi::xml_node gpx = document.append_child("gpx");
    gpx.append_attribute("version") = "1.1";
    gpx.append_attribute("creator") = creator.c_str();
    gpx.append_attribute("xmlns") = "http://www.topografix.com/GPX/1/1";
    for (const NamedPlace& waypoint : file.waypoints)
        AddNamed(gpx, "wpt", waypoint);
    for (const NamedRoute& route : file.routes) {
        pugi::xml_node node = gpx.append_child("rte");
        AddText(node, "name", route.name);
        for (const NamedPlace& place : route.places)
            AddNamed(node, "rtept", place);
    }
    AddTrack(gpx, file.track);
    std::ostringstream text;
    document.save(text, "  ");
    return text.str();
}

}  // namespace zelto::track
