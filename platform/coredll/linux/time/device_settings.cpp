#include "platform/coredll/linux/time/device_settings.h"

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/small_file.h"

namespace zelto::coredll {
namespace {

constexpr const char* kName = "clock";
constexpr size_t kMaxSettingsFile = 8u << 10;

ClockSettings ReadFrom(const UniqueFd& device) {
    ClockSettings settings;
    std::string text;
    if (device.IsOpen() && ReadSmallFile(device, kName, kMaxSettingsFile, text) == 0)
        ParseClockSettings(text, settings);
    return settings;
}

}  // namespace

ClockSettings ReadClockSettings() {
    return ReadFrom(OpenDevice(nullptr));
}

bool ChangeClockSettings(const std::function<void(ClockSettings& settings)>& change) {
    const UniqueFd device = OpenDevice(nullptr);
    if (!device.IsOpen())
        return false;
    const FileLock lock(device, kName);
    if (!lock.IsHeld())
        return false;
    ClockSettings settings = ReadFrom(device);
    change(settings);
    return ReplaceSmallFile(device, kName, FormatClockSettings(settings)) == 0;
}

}  // namespace zelto::coredll
