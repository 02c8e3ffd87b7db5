// The witness: what happened to the queues, windows and processes of a device, as the calls
// themselves saw it, in a ring in the device's store. It tells what became of a request whichever
// client sent it and whichever navigator was to answer, also when both have died.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WITNESS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WITNESS_H

#include <cstdint>
#include <string>
#include <vector>

namespace zelto::coredll {

enum class WitnessKind : uint32_t {
    kProcessJoined = 1,  // connected to the device; name: its program
    kProcessLeft,        // disconnected, or ended in order
    kProcessDied,        // was found dead
    kProcessStopped,     // was found stopped when somebody waited in vain
    kProcessStarted,     // a program was started; name: its file, code: the error or 0
    kWindowMade,         // name: its class
    kWindowGone,
    kAnnounced,    // a message was posted to a window; code: the error or 0
    kTaken,        // a posted message was taken by the window's owner
    kQueueMade,    // name: the queue's; code: whether it is read from (1) or written to (0)
    kQueueOpened,  // the same for a queue that was there already
    kQueueClosed,
    kWritten,   // a message was written
    kRead,      // a message was read; code: 122 when the buffer was too small for it
    kRefused,   // a read or write failed; code: the error
    kTimedOut,  // a read or write gave up; code: its time-out in ms
};

struct WitnessEvent {
    uint32_t number = 0;       // counts up by one, round at the end of its range
    int64_t monotonic_ns = 0;  // of the host's boot
    int64_t wall_ns = 0;       // UTC, since 1970, by the clock at the time of reading
    WitnessKind kind = {};
    uint32_t process = 0;  // the host's number: who called, or whom the event is about
    uint32_t code = 0;
    uint32_t window = 0;   // handle
    uint32_t message = 0;  // of a posted message: number and parameters
    uint32_t wparam = 0;
    uint32_t lparam = 0;
    uint32_t size = 0;    // bytes of a queue's message
    std::u16string name;  // at most kWitnessName units
    std::string bytes;    // the first kWitnessBytes of it
};

constexpr uint32_t kWitnessName = 32;
constexpr uint32_t kWitnessBytes = 144;

struct WitnessReport {
    bool on = false;
    uint32_t next = 0;  // number of the event that comes next
    uint32_t lost = 0;  // asked for, and overwritten since
    std::vector<WitnessEvent> events;
};

// The events from number `from` on that are still there, oldest first. Needs no lock, so a stopped
// process is no obstacle. False without a usable device. Any thread.
bool ReadWitness(WitnessReport& report, uint32_t from = 0);

// Switches the recording for all processes of the device; what was recorded stays. False without a
// usable device. Any thread.
bool RecordWitness(bool on);

}  // namespace zelto::coredll

#endif
