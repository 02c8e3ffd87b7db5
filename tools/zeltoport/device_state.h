// What the state of a device says about calls that fail on it, without a recording.

#ifndef ZELTO_TOOLS_ZELTOPORT_DEVICE_STATE_H
#define ZELTO_TOOLS_ZELTOPORT_DEVICE_STATE_H

#include <optional>
#include <string>
#include <vector>

#include "platform/coredll/linux/device_admin.h"

namespace zelto::tools {

// The navigator's window with the process behind it.
struct NavigatorState {
    uint32_t pid;
    bool stopped;
    uint32_t waiting;  // messages that it has not taken
};
std::optional<NavigatorState> FindNavigator(const coredll::StoreReport& store);

// Each as a sentence: a stopped or busy navigator, requests that nobody reads, two clients with
// queues of one name. Empty when nothing is wrong.
std::vector<std::string> TroublesOf(const coredll::StoreReport& store);

}  // namespace zelto::tools

#endif
