#include "tools/wire/results.h"

#include <algorithm>
#include <fmt/core.h>
#include <iterator>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/zelto-navigator/refusal.h"

namespace zelto::wire {

namespace {

using namespace zelto::navigator;

constexpr const char* kNoPacketFiles = "nothing in the library selects the channel of packet files";
constexpr int32_t kWriteTimedOutTwice = -int32_t{ERROR_TIMEOUT};

// Exit statuses of zeltoport: 1 refused or another result, 4 no navigator, 5 time-out, 6 transport.
constexpr Result kResults[] = {
    {kWriteTimedOutTwice,
     6,
     "system error 1460: the request could not be written twice",
     {"the request queue took no message for 4 s, and again 3 s later"},
     nullptr,
     "each request has a fresh queue, which takes its message at once"},
    {ZELTO_NAV_PORT_OK,
     0,
     "success",
     {"the navigator did what was asked"},
     "zeltoport run -- zeltoport is-open"},
    {ZELTO_NAV_PORT_NO_NAVIGATOR,
     4,
     "the navigator is not running and could not be started",
     {"the registered program is not there or cannot be run",
      "it ended, or showed no window, within 10 s",
      "ZeltoNavPort_PositionStreetA: the 8-bit form of this query is not supported"},
     "zeltoport run --fault absent -- zeltoport init"},
    {ZELTO_NAV_PORT_SHORT_REPLY,
     1,
     "the navigator's reply is shorter than two bytes",
     {"the navigator sent one byte"},
     "zeltoport run --fault truncated --fault-for S -- zeltoport goto 1 2"},
    {ZELTO_NAV_PORT_EMPTY_REPLY,
     1,
     "the navigator's reply is empty",
     {"ZeltoNavPort_GetString: a reply of no bytes"},
     nullptr,
     "a queue takes no message of no bytes"},
    {ZELTO_NAV_PORT_NOT_INSTALLED,
     4,
     "no navigator, or one with too long a path, is registered; \"zeltoport device init\" does it",
     {"the registry has no such key or value", "the path takes more than 200 bytes",
      "the device is not there, or is another user's", "the device's path is not absolute",
      "the registry is damaged"},
     "rm \"$ZELTO_DEVICE/registry\" && zeltoport init"},
    {ZELTO_NAV_PORT_REQUEST_FILE,
     6,
     "the request file could not be created",
     {"the navigator's folder cannot be written"},
     nullptr,
     kNoPacketFiles},
    {ZELTO_NAV_PORT_NO_WINDOW,
     4,
     "no navigator window is known",
     {"no navigator runs", "it has been closed", "no call has looked for its window",
      "the request file, or a queue that could not be made, was not written"},
     "zeltoport is-open"},
    {ZELTO_NAV_PORT_SHORT_STREET_REPLY,
     1,
     "the navigator's reply is shorter than two bytes",
     {"ZeltoNavPort_PositionStreet: the navigator sent one byte"},
     "zeltoport run --fault truncated --fault-for e -- zeltoport street"},
    {ZELTO_NAV_PORT_BAD_REPLY,
     1,
     "the navigator's reply is of no known kind",
     {"a status reply begins neither with \"A\" nor with \"B\" and a number",
      "ZeltoNavPort_GetString: the reply does not begin with \"G\"; it may be \"B\", a refusal",
      "the reply file could not be read"},
     "zeltoport run --fault wrong-kind --fault-for S -- zeltoport goto 1 2"},
    {ZELTO_NAV_PORT_READ_FAILED,
     6,
     "the navigator's reply could not be read",
     {"the reply is longer than 1000 bytes, or than the size that ZeltoNavPort_GetString was given",
      "ZeltoNavPort_GetString: the reply has no \"|\"", "the reply queue could not be made"},
     "zeltoport run --fault too-long --fault-for S -- zeltoport goto 1 2"},
    {ZELTO_NAV_PORT_DISCONNECTED,
     6,
     "the navigator's end of the queue is gone",
     {"the system reports a reply queue whose writer has closed it"},
     nullptr,
     "the queues are made so that a closed end is a silence: 1007"},
    {ZELTO_NAV_PORT_NOT_ANNOUNCED,
     6,
     "the navigator's window is gone or takes no more messages",
     {"the navigator ended after its window was found", "its message queue is full",
      "no call has looked for its window"},
     "zeltoport --connect none goto 1 2"},
    {ERROR_OUTOFMEMORY,
     6,
     "out of memory",
     {"this process has no memory left"},
     nullptr,
     "it takes a process that has used up its memory"},
    {ZELTO_NAV_PORT_NO_REPLY_FILE,
     6,
     "the reply file could not be opened",
     {"the navigator signalled and wrote no file"},
     nullptr,
     kNoPacketFiles},
    {ERROR_INSUFFICIENT_BUFFER,
     6,
     "system error 122: the request is longer than 1024 bytes",
     {"letter, separator, texts and line feed take more than 1024 bytes"},
     "zeltoport run -- zeltoport route $(printf %01100d 0)"},
    {kUnknownRequest,
     1,
     "the request letter is not known",
     {"a client of another version, or none of this library"},
     "zeltoport run --fault refuse=301 --fault-for S -- zeltoport goto 1 2"},
    {kMalformed,
     1,
     "the request's arguments do not have the stated form",
     {"a text that must not be empty is", "a number is not one", "a field is missing"},
     "zeltoport run -- zeltoport route ''"},
    {kOutsideWorld,
     1,
     "a latitude beyond 90 or a longitude beyond 180 degrees",
     {"latitude and longitude were exchanged", "minutes were taken for degrees"},
     "zeltoport run -- zeltoport goto 91 0"},
    {kUnknownName,
     1,
     "no waypoint, or no query, of that name",
     {"it was never added, or has been deleted",
      "ZeltoNavPort_GetString returns 9 in its place: it takes no refusals"},
     "zeltoport run -- zeltoport waypoint delete nobody"},
    {kNoSuchFile,
     1,
     "the file to open does not exist",
     {"the path is wrong, or names a folder", "it was meant from the client's current folder"},
     "zeltoport run -- zeltoport open nothing.itv"},
    {kBadChecksum,
     1,
     "the sentence's checksum is wrong or missing",
     {"the sentence was damaged"},
     "echo '$GPRMC*00' | zeltoport run -- zeltoport nmea -"},
    {kBadSentence,
     1,
     "not an NMEA sentence, or its fields cannot be read",
     {"the line does not begin with \"$\"", "an RMC or GGA without its fields"},
     "echo hello | zeltoport run -- zeltoport nmea -"},
    {kNoPosition,
     1,
     "there is no valid position at present",
     {"no sentence gave one yet", "the last one was void"},
     "zeltoport run -- zeltoport coverage"},
    {kFull,
     1,
     "no room for another waypoint",
     {"the navigator has 10000 of them"},
     "zeltoport run --fault refuse=309 --fault-for M -- zeltoport waypoint add a 1 2"},
    {kNoSuchCommand,
     1,
     "there is no command of that number",
     {"the number is below 0"},
     "zeltoport run -- zeltoport exec -1"},
    {ZELTO_NAV_PORT_TIMEOUT,
     5,
     "the navigator did not reply in time",
     {"the navigator is stopped, busy or silent", "its reply took more than 0.5 s",
      "it ended before it replied", "its reply was longer than a queue takes",
      "another client took the reply"},
     "zeltoport run --fault silent --fault-for S -- zeltoport goto 1 2"},
    {ZELTO_NAV_PORT_EVENT_TIMEOUT,
     5,
     "the navigator did not signal its reply in time",
     {"it does not take packet files"},
     nullptr,
     kNoPacketFiles},
};

// What a number means with one export alone.
struct Special {
    const char* export_name;
    int32_t result;
    int exit_status;
    const char* meaning;
};

constexpr Special kSpecial[] = {
    {"ZeltoNavPort_PositionStreetA", ZELTO_NAV_PORT_NO_NAVIGATOR, 1,
     "the 8-bit form of this query is not supported"},
    {"ZeltoNavPort_GetString", ZELTO_NAV_PORT_READ_FAILED, 6,
     "the navigator's reply is too long, or holds no text"},
};

const Special* FindSpecial(std::string_view export_name, int32_t result) {
    for (const Special& special : kSpecial) {
        if (special.export_name == export_name && special.result == result)
            return &special;
    }
    return nullptr;
}

}  // namespace

std::span<const char* const> Result::Causes() const {
    return {causes.begin(), std::find(causes.begin(), causes.end(), nullptr)};
}

std::span<const Result> Results() {
    return kResults;
}

const Result* FindResult(int32_t code) {
    const auto* found = std::find_if(std::begin(kResults), std::end(kResults),
                                     [code](const Result& each) { return each.code == code; });
    return found == std::end(kResults) ? nullptr : found;
}

std::string DescribeResult(std::string_view export_name, int32_t result) {
    if (const Special* special = FindSpecial(export_name, result); special != nullptr)
        return special->meaning;
    if (const Result* known = FindResult(result); known != nullptr)
        return known->code >= kFirstRefusal && known->code <= kLastRefusal
                   ? fmt::format("the navigator refuses: {}", known->meaning)
                   : known->meaning;
    if (result < 0)
        return fmt::format(
            "the navigator's number, or system error {}: the request could not be written twice",
            -int64_t{result});
    return fmt::format("error {} of the navigator or the system", result);
}

int ExitStatusOf(std::string_view export_name, int32_t result) {
    if (const Special* special = FindSpecial(export_name, result); special != nullptr)
        return special->exit_status;
    const Result* known = FindResult(result);
    return known != nullptr ? known->exit_status : 1;
}

bool ContactLost(int32_t result) {
    constexpr int32_t kLost[] = {ZELTO_NAV_PORT_NO_WINDOW, ZELTO_NAV_PORT_DISCONNECTED,
                                 ZELTO_NAV_PORT_NOT_ANNOUNCED, ZELTO_NAV_PORT_TIMEOUT,
                                 ZELTO_NAV_PORT_EVENT_TIMEOUT};
    return std::find(std::begin(kLost), std::end(kLost), result) != std::end(kLost);
}

}  // namespace zelto::wire
