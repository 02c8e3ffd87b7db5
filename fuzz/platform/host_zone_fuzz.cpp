// Any bytes as a compiled zone file and as a rule: every zone that comes out is a valid one.

#include <cstdint>
#include <cstdlib>

#include "platform/coredll/linux/time/host_zone.h"
#include "platform/coredll/linux/time/posix_zone.h"
#include "platform/coredll/linux/time/zone_rule.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace zelto::coredll;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const std::string_view rule : {text, ZoneFileRule(text)}) {
        for (const int year : {1601, 2024, 30827}) {
            TIME_ZONE_INFORMATION zone{};
            if (ParsePosixZone(rule, year, zone) && !IsValidZone(zone))
                std::abort();
        }
    }
    return 0;
}
