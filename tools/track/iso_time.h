// Times as GPX writes them, "2010-05-15T09:30:00.125Z".

#ifndef ZELTO_TOOLS_TRACK_ISO_TIME_H
#define ZELTO_TOOLS_TRACK_ISO_TIME_H

#include <cstdint>
#include <optional>
#include <string>

namespace zelto::track {

// Ms since 1970, universal time, or nothing. Digits behind the millisecond are dropped. The zone
// is "Z" or "+hh:mm"; without one the time counts as universal.
std::optional<int64_t> ReadIsoTime(const std::string& text);

std::string WriteIsoTime(int64_t milliseconds);

}  // namespace zelto::track

#endif
