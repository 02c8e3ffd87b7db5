#include "platform/coredll/linux/time/device_settings.h"

#include <cstring>
#include <mutex>
#include <string>
#include <type_traits>

#include "platform/coredll/api/registry.h"
#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/objects/registry_changes.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/registry/kept_registry.h"
#include "platform/coredll/linux/registry/registry_file.h"
#include "platform/coredll/linux/time/zone_rule.h"

namespace zelto::coredll {
namespace {

constexpr std::u16string_view kKey = u"HKEY_LOCAL_MACHINE\\Time";
constexpr std::u16string_view kOffset = u"HostOffset";
constexpr std::u16string_view kZone = u"TimeZoneInformation";

static_assert(std::is_trivially_copyable_v<TIME_ZONE_INFORMATION> &&
              sizeof(TIME_ZONE_INFORMATION) == 172);

// The value's bytes as the record they are; false when they are not.
template <class Record>
bool Read(const RegistryKey& key, std::u16string_view name, Record& record) {
    const auto found = key.values.find(FoldRegistryName(name));
    if (found == key.values.end() || found->second.type != REG_BINARY ||
        found->second.data.size() != sizeof record)
        return false;
    std::memcpy(&record, found->second.data.data(), sizeof record);
    return true;
}

template <class Record>
DWORD StoreValue(std::u16string_view name, const Record& record) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&record);
    return UpdateRegistry([&](Registry& registry, bool& changed) {
        bool made = false;
        RegistryValue& value = registry.Add(kKey, made).values[FoldRegistryName(name)];
        value = {std::u16string(name), REG_BINARY, {bytes, bytes + sizeof record}};
        changed = true;
        return DWORD{ERROR_SUCCESS};
    });
}

ClockSettings FromRegistry() {
    ClockSettings settings;
    std::shared_ptr<const Registry> registry;
    const RegistryKey* key =
        ReadRegistry(registry) == ERROR_SUCCESS ? registry->Find(kKey) : nullptr;
    if (key == nullptr)
        return settings;
    Read(*key, kOffset, settings.offset);
    TIME_ZONE_INFORMATION zone{};
    if (Read(*key, kZone, zone) && IsValidZone(zone))
        settings.zone = zone;
    return settings;
}

// The settings as they were read last. A clock is read far more often than it is set, so it does
// without a system call: the device's store tells of a change by a process at once, and what
// people edit by hand is seen at the next tick of the host's clock (some milliseconds).
class KeptSettings {
  public:
    ClockSettings Read() {
        const std::lock_guard lock(mutex_);
        Refresh();
        return settings_;
    }

    int64_t ReadOffset() {
        const std::lock_guard lock(mutex_);
        Refresh();
        return settings_.offset;
    }

  private:
    void Refresh() {
        const bool same_device = IsDevicePath(device_);
        if (!same_device)
            device_ = DevicePath();
        const std::optional<uint32_t> changes = Changes();
        const int64_t tick = CoarseNanoseconds();
        if (same_device && changes && changes == changes_ && tick == looked_)
            return;
        settings_ = FromRegistry();
        changes_ = changes;
        looked_ = tick;
    }

    // To connect takes as long as some hundred looks at the file: who reads the clock that often is
    // worth it.
    std::optional<uint32_t> Changes() {
        constexpr uint32_t kLooksBeforeConnecting = 256;
        std::optional<uint32_t> changes = RegistryChanges(device_);
        if (!changes && ++looks_ == kLooksBeforeConnecting && OpenStore() != nullptr)
            changes = RegistryChanges(device_);
        return changes;
    }

    std::mutex mutex_;
    ClockSettings settings_;  // guarded by mutex_, as all below
    std::optional<uint32_t> changes_;
    int64_t looked_ = 0;  // coarse clock
    std::string device_;
    uint32_t looks_ = 0;  // without the store
};

KeptSettings g_settings;

}  // namespace

ClockSettings ReadClockSettings() {
    return g_settings.Read();
}

int64_t ReadClockOffset() {
    return g_settings.ReadOffset();
}

DWORD StoreClockOffset(int64_t ticks) {
    return StoreValue(kOffset, ticks);
}

DWORD StoreZone(const TIME_ZONE_INFORMATION& zone) {
    return StoreValue(kZone, zone);
}

}  // namespace zelto::coredll
