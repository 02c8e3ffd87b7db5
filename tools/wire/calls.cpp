#include "tools/wire/calls.h"

#include <algorithm>

namespace zelto::wire {

namespace {

constexpr const char* kStatus = "A|... done, B|<number> refused";
constexpr const char* kText = "G|<text>";

constexpr Argument Double(const char* name, const char* written) {
    return {name, Type::kDouble, written};
}

constexpr Argument Integer(const char* name) {
    return {name, Type::kInteger, "%d"};
}

constexpr Argument Text(const char* name, Type type) {
    return {name, type, "%s"};
}

constexpr const char* kSix = "%.6f";
constexpr const char* kSeven = "%.7f, cut and not rounded; nan as it is";

constexpr const char* kBox = "1|title|text|style|seconds";
constexpr const char* kWaypoint = "name,description,latitude,longitude,altitude,icon";
constexpr const char* kPlace = "latitude,longitude,,,label";

constexpr std::array<Argument, 6> Box(Type type) {
    return {Text("title", type), Text("text", type), Integer("style"), Integer("seconds")};
}

constexpr std::array<Argument, 6> Waypoint(Type type) {
    return {Text("name", type),        Text("description", type), Double("latitude", kSix),
            Double("longitude", kSix), Double("altitude", kSix),  Text("icon", type)};
}

constexpr Call kCalls[] = {
    {"ZeltoNavPort_Init", "ZeltoNavPort_Init", 'F', "0", 0, kText, "init",
     "Finds or starts the navigator and makes the first exchange"},
    {"ZeltoNavPort_IsOpen", "ZeltoNavPort_IsOpen", 0, "", 0, "", "is-open",
     "Tells whether the navigator's window is there"},
    {"ZeltoNavPort_Version", "ZeltoNavPort_Version", 0, "", 0, "", "version",
     "The version of the library's interface, 4"},
    {"ZeltoNavPort_Show", "ZeltoNavPort_Show", 0, "", 0, "", "show",
     "Shows the navigator's window and brings it to the front"},
    {"ZeltoNavPort_Minimize", "ZeltoNavPort_Minimize", 0, "", 0, "", "minimize",
     "Minimises the navigator's window"},
    {"ZeltoNavPort_CloseZeltoNav", "ZeltoNavPort_CloseZeltoNav", 'R', "0", 0, kStatus, "close",
     "Asks the navigator to end"},
    {"ZeltoNavPort_GetString",
     "ZeltoNavPort_GetString",
     'F',
     "query",
     0,
     kText,
     "get",
     "Asks the navigator for a text",
     {Text("query", Type::kBytes), {"size", Type::kSize}, {"destination", Type::kBytesOut}}},
    {"ZeltoNavPort_PositionStreet",
     "ZeltoNavPort_PositionStreet",
     'e',
     "0",
     0,
     kStatus,
     "street",
     "Asks for the position and its street",
     {Argument{"destination", Type::kWideOut}}},
    {"ZeltoNavPort_MessageBox", "ZeltoNavPort_MessageBox", 'T', kBox, '|', kStatus, "message-box",
     "Shows a message box in the navigator", Box(Type::kWide)},
    {"ZeltoNavPort_MessageBoxA", "ZeltoNavPort_MessageBoxA", 'T', kBox, '|', kStatus,
     "message-box --narrow", "The same with 8-bit texts", Box(Type::kSystemBytes)},
    {"ZeltoNavPort_Cobertura", "ZeltoNavPort_Cobertura", 'a', "0", 0, kStatus, "coverage",
     "Asks whether there is coverage"},
    {"ZeltoNavPort_OpenFile",
     "ZeltoNavPort_OpenFile",
     'D',
     "path",
     0,
     kStatus,
     "open",
     "Opens a file in the navigator",
     {Text("path", Type::kWide)}},
    {"ZeltoNavPort_New_Waypoint", "ZeltoNavPort_New_Waypoint", 'M', kWaypoint, ',', kStatus,
     "waypoint add", "Adds a waypoint, or replaces it", Waypoint(Type::kWide)},
    {"ZeltoNavPort_New_WaypointA", "ZeltoNavPort_New_WaypointA", 'M', kWaypoint, ',', kStatus,
     "waypoint add --narrow", "The same with 8-bit texts", Waypoint(Type::kBytes)},
    {"ZeltoNavPort_Delete_Waypoint",
     "ZeltoNavPort_Delete_Waypoint",
     'N',
     "name",
     0,
     kStatus,
     "waypoint delete",
     "Deletes a waypoint",
     {Text("name", Type::kWide)}},
    {"ZeltoNavPort_Delete_WaypointA",
     "ZeltoNavPort_Delete_WaypointA",
     'N',
     "name",
     0,
     kStatus,
     "waypoint delete --narrow",
     "The same with an 8-bit text",
     {Text("name", Type::kBytes)}},
    {"ZeltoNavPort_CenterCoordinate",
     "ZeltoNavPort_CenterCoordinate",
     'O',
     "latitude,longitude,scale",
     ',',
     kStatus,
     "center",
     "Centres the map",
     {Double("latitude", kSix), Double("longitude", kSix), Double("scale", kSix)}},
    {"ZeltoNavPort_ExecCommand",
     "ZeltoNavPort_ExecCommand",
     'I',
     "number",
     0,
     kStatus,
     "exec",
     "Runs one of the navigator's commands",
     {Integer("number")}},
    {"ZeltoNavPort_Goto",
     "ZeltoNavPort_Goto",
     'S',
     kPlace,
     ',',
     kStatus,
     "goto",
     "Navigates to a place; of the label only whether there is one",
     {Double("latitude", kSeven), Double("longitude", kSeven),
      Argument{"label", Type::kWide, "1, or 0 for a null text"}}},
    {"ZeltoNavPort_GotoA",
     "ZeltoNavPort_GotoA",
     'S',
     kPlace,
     ',',
     kStatus,
     "goto --narrow",
     "The same, with the 8-bit label",
     {Double("latitude", kSeven), Double("longitude", kSeven), Text("label", Type::kBytes)}},
    {"ZeltoNavPort_NewPoint_nmea",
     "ZeltoNavPort_NewPoint_nmea",
     'E',
     "sentence",
     0,
     kStatus,
     "nmea",
     "Feeds a position sentence",
     {Text("sentence", Type::kWide), Argument{"unused", Type::kWide}}},
    {"ZeltoNavPort_NewPoint_nmeaA",
     "ZeltoNavPort_NewPoint_nmeaA",
     'E',
     "sentence",
     0,
     kStatus,
     "nmea --narrow",
     "The same with one 8-bit text",
     {Text("sentence", Type::kBytes)}},
    {"ZeltoNavPort_GotoRuta",
     "ZeltoNavPort_GotoRuta",
     'f',
     "route",
     0,
     kStatus,
     "route",
     "Navigates along a route",
     {Text("route", Type::kWide)}},
    {"ZeltoNavPort_GotoRutaA",
     "ZeltoNavPort_GotoRutaA",
     'f',
     "route",
     0,
     kStatus,
     "route --narrow",
     "The same with an 8-bit text",
     {Text("route", Type::kBytes)}},
    {"ZeltoNavPort_OpenFile",
     "_Z21ZeltoNavPort_OpenFilePKc",
     'D',
     "path",
     0,
     kStatus,
     "open --narrow",
     "The same with an 8-bit text",
     {Text("path", Type::kSystemBytes)}},
    {"ZeltoNavPort_PositionStreetA", "_Z28ZeltoNavPort_PositionStreetAv", 0, "", 0, "",
     "street --narrow", "Not supported: always 1"},
};

constexpr std::string_view kPrefix = "ZeltoNavPort_";

}  // namespace

const char* Name(Type type) {
    constexpr const char* kNames[] = {
        "UTF-16 text",   "8-bit text",     "8-bit text in the system's code page",
        "double",        "32-bit integer", "unsigned 32-bit integer",
        "UTF-16 buffer", "8-bit buffer"};
    return kNames[static_cast<int>(type)];
}

std::string_view Call::ShortName() const {
    return std::string_view(export_name).substr(kPrefix.size());
}

std::span<const Argument> Call::Arguments() const {
    const auto end = std::find_if(taken.begin(), taken.end(),
                                  [](const Argument& each) { return each.name == nullptr; });
    return {taken.begin(), end};
}

std::span<const Call> Calls() {
    return kCalls;
}

const Call* FindCall(std::string_view name) {
    for (const Call& call : kCalls) {
        if (name == call.export_name || name == call.command || name == call.ShortName())
            return &call;
    }
    return nullptr;
}

const Call* FindCall(char letter) {
    if (letter == 'F')
        return FindCall("ZeltoNavPort_GetString");
    for (const Call& call : kCalls) {
        if (letter != 0 && call.letter == letter)
            return &call;
    }
    return nullptr;
}

}  // namespace zelto::wire
