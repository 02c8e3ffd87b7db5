// What a program that looks after devices may use of this side: making one, checking it, telling
// what is in it. Everything else goes through the documented calls.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_DEVICE_ADMIN_H
#define ZELTO_PLATFORM_COREDLL_LINUX_DEVICE_ADMIN_H

#include <cstdio>
#include <string>

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/small_file.h"
#include "platform/coredll/linux/base/time_scale.h"
#include "platform/coredll/linux/objects/store_report.h"
#include "platform/coredll/linux/objects/witness.h"
#include "platform/coredll/linux/process/child.h"

namespace zelto::coredll {

// What is wrong with the device: its directory, its registry or its object store, whichever comes
// first; a sentence that says what to do, "" when nothing is. Connects to the store where it can.
std::string DeviceProblem();

// Ends this process's connection to the store, as the end of the process does. Nothing else of it
// may be in a call, and its handles mean nothing any more.
void Disconnect();

// Whether the stream is shown to someone rather than kept in a file or piped on.
bool IsTerminal(std::FILE* stream);

// Whether what is written to the stream goes nowhere: to the null device.
bool IsNowhere(std::FILE* stream);

// Lets the stream write to the end of a file of the device from now on. False, the stream being as
// before, when the file cannot be had.
bool AppendToDeviceFile(std::FILE* stream, const char* name);

// The right to use the device among programs that ask for it so, while the object lives; it ends
// with its process. Waits at most `patience` ns; without the right, or a device, it is not held.
class DeviceTurn {
  public:
    explicit DeviceTurn(int64_t patience);
    bool IsHeld() const { return lock_.IsHeld(); }

  private:
    FileLock lock_;
};

}  // namespace zelto::coredll

#endif
