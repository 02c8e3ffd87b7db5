#include "tools/wire/recording.h"

#include <chrono>
#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "tools/text/wide.h"

namespace zelto::wire {

namespace {

using coredll::WitnessEvent;
using coredll::WitnessKind;
using nlohmann::json;

constexpr int kSchema = 1;

// From kProcessJoined on.
constexpr const char* kKinds[] = {"joined",  "left",        "died",         "stopped",
                                  "started", "window-made", "window-gone",  "announced",
                                  "taken",   "queue-made",  "queue-opened", "queue-closed",
                                  "written", "read",        "refused",      "timed-out"};

WitnessKind KindOf(const std::string& name) {
    for (size_t i = 0; i < std::size(kKinds); ++i) {
        if (name == kKinds[i])
            return static_cast<WitnessKind>(i + 1);
    }
    throw std::runtime_error(fmt::format("\"{}\" is no event", tools::Printable(name)));
}

std::string Hex(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes)
        text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    return text;
}

std::string FromHex(const std::string& text) {
    std::string bytes;
    if (text.size() % 2 != 0 || text.find_first_not_of("0123456789abcdefABCDEF") != text.npos)
        throw std::runtime_error("\"hex\" holds no pairs of hexadecimal digits");
    for (size_t i = 0; i < text.size(); i += 2)
        bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
    return bytes;
}

void AddNumber(json& object, const char* name, uint32_t value) {
    if (value != 0)
        object[name] = value;
}

json ToJson(const WitnessEvent& event) {
    json object = {{"number", event.number},
                   {"ns", event.monotonic_ns},
                   {"wall_ns", event.wall_ns},
                   {"what", NameOf(event.kind)},
                   {"process", event.process}};
    AddNumber(object, "code", event.code);
    AddNumber(object, "window", event.window);
    AddNumber(object, "message", event.message);
    AddNumber(object, "wparam", event.wparam);
    AddNumber(object, "lparam", event.lparam);
    AddNumber(object, "size", event.size);
    if (!event.name.empty())
        object["name"] = tools::Utf8FromWide(event.name);
    // What was cut in the middle of a character is UTF-8 all the same.
    if (tools::IsUtf8(event.bytes))
        object["bytes"] = event.bytes;
    else
        object["hex"] = Hex(event.bytes);
    if (event.bytes.empty())
        object.erase("bytes");
    return object;
}

uint32_t Number(const json& object, const char* name) {
    const int64_t value = object.value(name, int64_t{0});
    if (value < 0 || value > int64_t{UINT32_MAX})
        throw std::runtime_error(fmt::format("\"{}\" is outside its range", name));
    return static_cast<uint32_t>(value);
}

WitnessEvent EventOf(const json& object) {
    WitnessEvent event;
    event.number = Number(object, "number");
    event.monotonic_ns = object.at("ns").get<int64_t>();
    event.wall_ns = object.value("wall_ns", event.monotonic_ns);
    event.kind = KindOf(object.at("what").get<std::string>());
    event.process = Number(object, "process");
    event.code = Number(object, "code");
    event.window = Number(object, "window");
    event.message = Number(object, "message");
    event.wparam = Number(object, "wparam");
    event.lparam = Number(object, "lparam");
    event.bytes = object.contains("hex") ? FromHex(object.at("hex").get<std::string>())
                                         : object.value("bytes", "");
    event.size = Number(object, "size");
    tools::WideFromUtf8(object.value("name", ""), event.name);
    return event;
}

void ReadHead(const json& object, Recording& recording) {
    if (object.value("recording", "") != "zeltoport")
        throw std::runtime_error("no recording; \"zeltoport record save\" writes one");
    if (object.value("schema", 0) != kSchema)
        throw std::runtime_error("a recording of another version");
    recording.device = object.value("device", "");
    recording.lost = Number(object, "lost");
}

void ReadLine(const std::string& line, bool first, Recording& recording) {
    const json object = json::parse(line);
    if (!object.is_object())
        throw std::runtime_error("no JSON object");
    if (first)
        ReadHead(object, recording);
    else
        recording.events.push_back(EventOf(object));
}

}  // namespace

const char* NameOf(WitnessKind kind) {
    const auto index = static_cast<size_t>(kind) - 1;
    return index < std::size(kKinds) ? kKinds[index] : "";
}

bool ReadDevice(Recording& recording, std::string& why) {
    coredll::WitnessReport report;
    if (!coredll::ReadWitness(report)) {
        why = coredll::DeviceProblem();
        return false;
    }
    recording = {coredll::DevicePath(), report.lost, std::move(report.events)};
    return true;
}

void Write(const Recording& recording, std::ostream& to) {
    const json head = {{"recording", "zeltoport"},
                       {"schema", kSchema},
                       {"device", recording.device},
                       {"lost", recording.lost}};
    to << head.dump(-1, ' ', false, json::error_handler_t::replace) << '\n';
    for (const WitnessEvent& event : recording.events)
        to << ToJson(event).dump(-1, ' ', false, json::error_handler_t::replace) << '\n';
}

bool Save(const Recording& recording, const std::string& path, std::string& why) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const std::string unfinished = path + fmt::format(".{}.part", now.count());
    std::ofstream file(unfinished);
    Write(recording, file);
    file.close();
    std::error_code error = std::make_error_code(std::errc::io_error);
    if (file)
        std::filesystem::rename(unfinished, path, error);
    if (!error)
        return true;
    why = fmt::format("The recording {} cannot be written.", path);
    std::filesystem::remove(unfinished, error);
    return false;
}

bool Load(const std::string& path, Recording& recording, std::string& why) {
    recording = {};
    std::ifstream file(path);
    int number = 0;
    try {
        for (std::string line; std::getline(file, line);) {
            ++number;
            ReadLine(line, number == 1, recording);
        }
    } catch (const json::exception&) {
        why = fmt::format("{}, line {}: no line of a recording.", path, number);
        return false;
    } catch (const std::runtime_error& error) {
        why = fmt::format("{}, line {}: {}.", path, number, error.what());
        return false;
    }
    if (number == 0)
        why = fmt::format("{} cannot be read, or is empty.", path);
    return number != 0;
}

}  // namespace zelto::wire
