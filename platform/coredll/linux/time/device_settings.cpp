#include "platform/coredll/linux/time/device_settings.h"

#include <cstring>
#include <type_traits>

#include "platform/coredll/api/registry.h"
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
DWORD Store(std::u16string_view name, const Record& record) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&record);
    return UpdateRegistry([&](Registry& registry, bool& changed) {
        bool made = false;
        RegistryValue& value = registry.Add(kKey, made).values[FoldRegistryName(name)];
        value = {std::u16string(name), REG_BINARY, {bytes, bytes + sizeof record}};
        changed = true;
        return DWORD{ERROR_SUCCESS};
    });
}

}  // namespace

ClockSettings ReadClockSettings() {
    ClockSettings settings;
    Registry registry;
    const RegistryKey* key =
        LoadRegistry(registry) == ERROR_SUCCESS ? registry.Find(kKey) : nullptr;
    if (key == nullptr)
        return settings;
    Read(*key, kOffset, settings.offset);
    TIME_ZONE_INFORMATION zone{};
    if (Read(*key, kZone, zone) && IsValidZone(zone))
        settings.zone = zone;
    return settings;
}

DWORD StoreClockOffset(int64_t ticks) {
    return Store(kOffset, ticks);
}

DWORD StoreZone(const TIME_ZONE_INFORMATION& zone) {
    return Store(kZone, zone);
}

}  // namespace zelto::coredll
