// The commands: arguments in, one request line out, the navigator's result back.

#include <charconv>
#include <cmath>
#include <iterator>

#include "common/text/dstring.h"
#include "plugins/zelto_port_dll/exports.h"
#include "plugins/zelto_port_dll/replies.h"
#include "plugins/zelto_port_dll/zelto_port.h"

namespace zelto {

namespace {

constexpr int kGotoDecimals = 7;
constexpr int kGotoRoom = 64;  // for coordinates and a short text

int32_t Send(const char* command, const DString& arguments) {
    return DecodeStatus(command, arguments.c_str(), kReplySize);
}

// As "%f", but with "." as the decimal point whatever the locale.
void AppendSixDecimals(DString& text, double value) {
    char digits[320];  // the longest double takes 317
    *std::to_chars(digits, std::end(digits) - 1, value, std::chars_format::fixed, 6).ptr = '\0';
    text += digits;
}

int32_t SendWaypoint(const char* first, const char* second, double x, double y, double z,
                     const char* third) {
    DString arguments(first);
    arguments += ",";
    arguments += second;
    for (const double value : {x, y, z}) {
        arguments += ",";
        AppendSixDecimals(arguments, value);
    }
    arguments += ",";
    arguments += third;
    return Send("M", arguments);
}

// Seven decimals; what is no number stays none, so that no place is made of it.
void AppendCoordinate(DString& text, double value) {
    if (std::isnan(value))
        AppendSixDecimals(text, value);
    else
        text += value;
}

DString GotoArguments(double x, double y) {
    DString arguments;
    arguments.reserve(kGotoRoom, true);
    arguments.set_decimals(kGotoDecimals);
    AppendCoordinate(arguments, x);
    arguments += ",";
    AppendCoordinate(arguments, y);
    arguments += ",,,";
    return arguments;
}

}  // namespace

}  // namespace zelto

using zelto::DecodeStatus;
using zelto::DString;
using zelto::Guarded;
using zelto::kReplySize;
using zelto::Send;

int32_t ZeltoNavPort_OpenFile(const ZeltoNavPort_Wide* path) {
    return Guarded([&] { return Send("D", DString(path)); });
}

int32_t ZeltoNavPort_OpenFile(const char* path) {
    return Guarded([&] {
        DString recoded(path);
        zelto::RecodeSystemText(recoded);
        return Send("D", recoded);
    });
}

int32_t ZeltoNavPort_New_Waypoint(const ZeltoNavPort_Wide* first, const ZeltoNavPort_Wide* second,
                                  double x, double y, double z, const ZeltoNavPort_Wide* third) {
    return Guarded([&] {
        return zelto::SendWaypoint(DString(first).c_str(), DString(second).c_str(), x, y, z,
                                   DString(third).c_str());
    });
}

int32_t ZeltoNavPort_New_WaypointA(const char* first, const char* second, double x, double y,
                                   double z, const char* third) {
    return Guarded([&] { return zelto::SendWaypoint(first, second, x, y, z, third); });
}

int32_t ZeltoNavPort_Delete_Waypoint(const ZeltoNavPort_Wide* name) {
    return Guarded([&] { return Send("N", DString(name)); });
}

int32_t ZeltoNavPort_Delete_WaypointA(const char* name) {
    return Guarded([&] { return DecodeStatus("N", name, kReplySize); });
}

int32_t ZeltoNavPort_CenterCoordinate(double x, double y, double z) {
    return Guarded([&] {
        DString arguments;
        zelto::AppendSixDecimals(arguments, x);
        arguments += ",";
        zelto::AppendSixDecimals(arguments, y);
        arguments += ",";
        zelto::AppendSixDecimals(arguments, z);
        return Send("O", arguments);
    });
}

int32_t ZeltoNavPort_ExecCommand(int32_t number) {
    return Guarded([&] {
        DString arguments;
        arguments += number;
        return Send("I", arguments);
    });
}

int32_t ZeltoNavPort_Goto(double x, double y, const ZeltoNavPort_Wide* text) {
    return Guarded([&] {
        DString arguments = zelto::GotoArguments(x, y);
        arguments += static_cast<unsigned char>(text != nullptr);
        return Send("S", arguments);
    });
}

int32_t ZeltoNavPort_GotoA(double x, double y, const char* text) {
    return Guarded([&] {
        DString arguments = zelto::GotoArguments(x, y);
        arguments += text;
        return Send("S", arguments);
    });
}

int32_t ZeltoNavPort_NewPoint_nmea(const ZeltoNavPort_Wide* sentence, const ZeltoNavPort_Wide*) {
    return Guarded([&] { return Send("E", DString(sentence)); });
}

int32_t ZeltoNavPort_NewPoint_nmeaA(const char* sentence) {
    return Guarded([&] { return DecodeStatus("E", sentence, kReplySize); });
}

int32_t ZeltoNavPort_GotoRuta(const ZeltoNavPort_Wide* route) {
    return Guarded([&] { return Send("f", DString(route)); });
}

int32_t ZeltoNavPort_GotoRutaA(const char* route) {
    return Guarded([&] { return DecodeStatus("f", route, kReplySize); });
}
