// Any bytes as the device's clock settings: what is accepted is written and read back the same.

#include <cstdint>
#include <cstdlib>

#include "platform/coredll/linux/time/clock_settings.h"
#include "platform/coredll/linux/time/zone_rule.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace zelto::coredll;
    ClockSettings settings;
    if (!ParseClockSettings({reinterpret_cast<const char*>(data), size}, settings))
        return 0;
    const std::string text = FormatClockSettings(settings);
    ClockSettings again;
    if (!ParseClockSettings(text, again) || FormatClockSettings(again) != text)
        std::abort();
    if (settings.zone)
        ZoneStateAt(*settings.zone, settings.offset < 0 ? 0 : settings.offset);
    return 0;
}
