#include "platform/coredll/linux/time/device_settings.h"

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/small_file.h"

namespace zelto::coredll {
namespace {

constexpr size_t kMaxSettingsFile = 8u << 10;

ClockSettings ReadFrom(const std::string& path) {
    ClockSettings settings;
    std::string text;
    if (!path.empty() && ReadSmallFile(path, kMaxSettingsFile, Links::kRefused, text) == 0)
        ParseClockSettings(text, settings);
    return settings;
}

std::string SettingsPath() {
    return DeviceFile("clock");
}

}  // namespace

ClockSettings ReadClockSettings() {
    return ReadFrom(SettingsPath());
}

bool ChangeClockSettings(const std::function<void(ClockSettings& settings)>& change) {
    const std::string path = SettingsPath();
    if (path.empty())
        return false;
    const FileLock lock(path);
    if (!lock.IsHeld())
        return false;
    ClockSettings settings = ReadFrom(path);
    change(settings);
    return ReplaceSmallFile(path, FormatClockSettings(settings)) == 0;
}

}  // namespace zelto::coredll
