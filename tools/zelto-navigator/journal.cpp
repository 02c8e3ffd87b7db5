#include "tools/zelto-navigator/journal.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "platform/coredll/coredll.h"
#include "tools/text/wide.h"

namespace zelto::navigator {

namespace {

std::string DeviceTime() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", now.wYear, now.wMonth,
                       now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}

std::string Hex(const std::string& bytes) {
    std::string digits;
    for (const char byte : bytes)
        digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    return digits;
}

}  // namespace

bool Journal::Open(const std::string& path) {
    file_.open(path, std::ios::app);
    return file_.is_open();
}

bool Journal::Append(const JournalEntry& entry) {
    if (!file_.is_open())
        return true;
    nlohmann::ordered_json line;
    line["time"] = DeviceTime();
    line["generation"] = entry.generation;
    line["bytes"] = entry.request;
    if (!tools::IsUtf8(entry.request))
        line["hex"] = Hex(entry.request);
    line["reply"] = nullptr;
    if (!entry.reply.empty())
        line["reply"] = entry.reply;
    line["microseconds"] = entry.microseconds;
    file_ << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
          << std::endl;
    return file_.good();
}

}  // namespace zelto::navigator
