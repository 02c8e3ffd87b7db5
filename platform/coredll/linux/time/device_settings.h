// The clock settings of the device in use, shared by its processes.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_DEVICE_SETTINGS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_DEVICE_SETTINGS_H

#include <functional>

#include "platform/coredll/linux/time/clock_settings.h"

namespace zelto::coredll {

// The defaults where there is no device, or no good file in it.
ClockSettings ReadClockSettings();

// Lets `change` work on the present settings and stores the result; one writer at a time, over all
// processes, so no change is lost. A damaged file is replaced. False: the device cannot be written.
bool ChangeClockSettings(const std::function<void(ClockSettings& settings)>& change);

}  // namespace zelto::coredll

#endif
