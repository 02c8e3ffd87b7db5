#include "platform/coredll/linux/time/host_zone.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/coredll/linux/time/posix_zone.h"

namespace zelto::coredll {
namespace {

constexpr size_t kMaxZoneFile = 256u << 10;

// A zone file's header: the counts that tell how long the data after it are. Numbers are
// big-endian.
constexpr size_t kHeaderSize = 44;
constexpr size_t kVersionAt = 4;
constexpr size_t kCountsAt = 20;

uint64_t CountAt(std::string_view header, size_t index) {
    uint64_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(header[kCountsAt + 4 * index + i]);
    return value;
}

// Takes one header and its data, whose times have `time_size` bytes, from the front.
bool SkipBlock(std::string_view& file, uint64_t time_size) {
    if (file.size() < kHeaderSize || !file.starts_with("TZif"))
        return false;
    const uint64_t universal = CountAt(file, 0);
    const uint64_t standard = CountAt(file, 1);
    const uint64_t leaps = CountAt(file, 2);
    const uint64_t times = CountAt(file, 3);
    const uint64_t types = CountAt(file, 4);
    const uint64_t characters = CountAt(file, 5);
    const uint64_t size = times * (time_size + 1) + types * 6 + characters +
                          leaps * (time_size + 4) + standard + universal;
    if (size > file.size() - kHeaderSize)
        return false;
    file.remove_prefix(kHeaderSize + static_cast<size_t>(size));
    return true;
}

const char* Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// A file of the host, whole; "" when it is no ordinary file, or a long one.
std::string ReadHostFile(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) ||
        std::filesystem::file_size(path, error) > kMaxZoneFile)
        return "";
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The zone of a compiled file.
bool ReadZoneFile(const std::string& path, int year, TIME_ZONE_INFORMATION& zone) {
    const std::string file = ReadHostFile(path);
    return ParsePosixZone(ZoneFileRule(file), year, zone);
}

// The zone of a name such as "Europe/Madrid" or of a full path.
bool ReadNamedZone(const std::string& name, int year, TIME_ZONE_INFORMATION& zone) {
    if (name.empty() || name.find("..") != std::string::npos)
        return false;
    if (name.front() == '/')
        return ReadZoneFile(name, year, zone);
    const std::string folder = Variable("TZDIR");
    return ReadZoneFile((folder.empty() ? "/usr/share/zoneinfo" : folder) + "/" + name, year, zone);
}

bool ReadSystemZone(int year, TIME_ZONE_INFORMATION& zone) {
    if (ReadZoneFile("/etc/localtime", year, zone))
        return true;
    const std::string name = ReadHostFile("/etc/timezone");
    return ReadNamedZone(name.substr(0, name.find('\n')), year, zone);
}

}  // namespace

std::string_view ZoneFileRule(std::string_view file) {
    // The first block is for readers of 32-bit times; version 1 has no other, and no rule.
    if (file.size() < kHeaderSize || file[kVersionAt] < '2')
        return {};
    if (!SkipBlock(file, 4) || !SkipBlock(file, 8) || !file.starts_with('\n'))
        return {};
    file.remove_prefix(1);
    const size_t end = file.find('\n');
    return end == std::string_view::npos ? std::string_view() : file.substr(0, end);
}

TIME_ZONE_INFORMATION HostZone(int year) {
    TIME_ZONE_INFORMATION zone{};
    const char* set = std::getenv("TZ");
    if (set == nullptr) {
        if (ReadSystemZone(year, zone))
            return zone;
    } else {
        const std::string name = *set == ':' ? set + 1 : set;
        if (ReadNamedZone(name, year, zone) || ParsePosixZone(name, year, zone))
            return zone;
    }
    ParsePosixZone("UTC0", year, zone);
    return zone;
}

}  // namespace zelto::coredll
