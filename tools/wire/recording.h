// A recording: what the witness of a device remembers, also kept in a file.
//
// The file is text, one JSON object a line. The first says what it is:
//   {"recording":"zeltoport","schema":1,"device":"/…","lost":0}
// each other line is an event, oldest first:
//   {"number":7,"ns":…,"wall_ns":…,"what":"written","process":…,"code":0,"name":"ZeltoApiMsgQ2_tx",
//    "size":9,"bytes":"S|1,2,,,0"}
// `ns` counts from the host's boot, `wall_ns` from 1970 (UTC). Members that are 0 or empty may be
// left out. Bytes that are not UTF-8 stand as pairs of digits in "hex" in the place of "bytes".

#ifndef ZELTO_TOOLS_WIRE_RECORDING_H
#define ZELTO_TOOLS_WIRE_RECORDING_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "platform/coredll/linux/device_admin.h"

namespace zelto::wire {

struct Recording {
    std::string device;
    uint32_t lost = 0;  // events that were overwritten before the first
    std::vector<coredll::WitnessEvent> events;
};

// "announced", "queue-made"; "" for a kind that is none.
const char* NameOf(coredll::WitnessKind kind);

// What the device in use remembers. False, with the reason, when it cannot be used.
bool ReadDevice(Recording& recording, std::string& why);

void Write(const Recording& recording, std::ostream& to);

// Writes a file beside the one named and puts it in its place when it is whole. False, with the
// reason, when that fails; nothing is left then.
bool Save(const Recording& recording, const std::string& path, std::string& why);

// False, with file, line and what is wrong there, for what is no recording.
bool Load(const std::string& path, Recording& recording, std::string& why);

}  // namespace zelto::wire

#endif
