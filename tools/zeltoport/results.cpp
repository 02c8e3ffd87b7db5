#include "tools/zeltoport/results.h"

#include <algorithm>
#include <fmt/core.h>
#include <iterator>

#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/zelto-navigator/refusal.h"

namespace zelto::tools {

namespace {

struct ResultText {
    int32_t result;
    const char* export_name;  // null: any other export
    const char* words;
};

// The first line that fits is taken.
constexpr ResultText kResults[] = {
    {ZELTO_NAV_PORT_OK, nullptr, "success"},
    {ZELTO_NAV_PORT_NO_NAVIGATOR, "ZeltoNavPort_PositionStreetA",
     "the 8-bit form of this query is not supported"},
    {ZELTO_NAV_PORT_NO_NAVIGATOR, nullptr, "the navigator is not running and could not be started"},
    {ZELTO_NAV_PORT_SHORT_REPLY, nullptr, "the navigator's reply is shorter than two bytes"},
    {ZELTO_NAV_PORT_EMPTY_REPLY, nullptr, "the navigator's reply is empty"},
    {ZELTO_NAV_PORT_NOT_INSTALLED, nullptr,
     "no navigator, or one with too long a path, is registered; \"zeltoport device init\" does it"},
    {ZELTO_NAV_PORT_REQUEST_FILE, nullptr, "the request file could not be created"},
    {ZELTO_NAV_PORT_NO_WINDOW, nullptr, "no navigator window is known"},
    {ZELTO_NAV_PORT_SHORT_STREET_REPLY, nullptr, "the navigator's reply is shorter than two bytes"},
    {ZELTO_NAV_PORT_BAD_REPLY, nullptr, "the navigator's reply is of no known kind"},
    {ZELTO_NAV_PORT_READ_FAILED, "ZeltoNavPort_GetString",
     "the navigator's reply is too long, or holds no text"},
    {ZELTO_NAV_PORT_READ_FAILED, nullptr, "the navigator's reply could not be read"},
    {ZELTO_NAV_PORT_DISCONNECTED, nullptr, "the navigator's end of the queue is gone"},
    {ZELTO_NAV_PORT_NOT_ANNOUNCED, nullptr,
     "the navigator's window is gone or takes no more messages"},
    {ZELTO_NAV_PORT_NO_REPLY_FILE, nullptr, "the reply file could not be opened"},
    {ZELTO_NAV_PORT_TIMEOUT, nullptr, "the navigator did not reply in time"},
    {ZELTO_NAV_PORT_EVENT_TIMEOUT, nullptr, "the navigator did not signal its reply in time"},
    {14, nullptr, "out of memory"},
    {87, nullptr, "system error 87: the request could not be written again"},
    {122, nullptr, "system error 122: the request is longer than 1024 bytes"},
};

const char* NavigatorWords(int32_t result) {
    for (const navigator::RefusalText& refusal : navigator::kRefusals) {
        if (refusal.number == result)
            return refusal.words;
    }
    return nullptr;
}

}  // namespace

std::string DescribeResult(std::string_view export_name, int32_t result) {
    for (const ResultText& text : kResults) {
        if (text.result == result &&
            (text.export_name == nullptr || text.export_name == export_name))
            return text.words;
    }
    if (const char* words = NavigatorWords(result); words != nullptr)
        return fmt::format("the navigator refuses: {}", words);
    if (result < 0)
        return fmt::format("system error {}: the request could not be written twice", -result);
    return fmt::format("error {} of the navigator or the system", result);
}

bool ContactLost(int32_t result) {
    constexpr int32_t kLost[] = {ZELTO_NAV_PORT_NO_WINDOW, ZELTO_NAV_PORT_DISCONNECTED,
                                 ZELTO_NAV_PORT_NOT_ANNOUNCED, ZELTO_NAV_PORT_TIMEOUT,
                                 ZELTO_NAV_PORT_EVENT_TIMEOUT};
    return std::find(std::begin(kLost), std::end(kLost), result) != std::end(kLost);
}

}  // namespace zelto::tools
