// What a device keeps about its clock: the offset to the host's, and its time zone.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_CLOCK_SETTINGS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_CLOCK_SETTINGS_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/coredll/api/clock.h"

namespace zelto::coredll {

struct ClockSettings {
    int64_t offset = 0;                         // ticks: device = host + offset
    std::optional<TIME_ZONE_INFORMATION> zone;  // valid; none: the host's
};

// The settings as text: the format that docs/clock-settings.md describes. A zone's fields without
// meaning come back as 0, and a dated transition's weekday as the date has it.
std::string FormatClockSettings(const ClockSettings& settings);

// False, with the settings untouched, when the text is damaged or another version's.
bool ParseClockSettings(std::string_view text, ClockSettings& settings);

}  // namespace zelto::coredll

#endif
