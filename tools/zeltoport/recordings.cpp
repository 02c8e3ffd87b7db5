#include "tools/zeltoport/recordings.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fmt/chrono.h>
#include <fmt/core.h>
#include <nlohmann/json.hpp>
#include <vector>

#include "platform/coredll/linux/device_admin.h"
#include "tools/page/page.h"
#include "tools/wire/explain.h"
#include "tools/zeltoport/output_file.h"
#include "tools/zeltoport/session.h"

namespace zelto::tools {

namespace {

namespace fs = std::filesystem;

// The user's folder for state, or else one in the device.
std::vector<fs::path> Candidates() {
    std::vector<fs::path> folders;
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    if (state != nullptr && *state == '/')
        folders.push_back(fs::path(state) / "zeltoport");
    else if (home != nullptr && *home == '/')
        folders.push_back(fs::path(home) / ".local/state/zeltoport");
    if (coredll::CheckDevice(nullptr))
        folders.push_back(fs::path(coredll::DevicePath()) / "recordings");
    return folders;
}

// Oldest first.
std::vector<fs::path> RecordingsIn(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".jsonl")
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());  // their names begin with the time
    return files;
}

}  // namespace

wire::Recording ReadRecording(const std::string& path) {
    wire::Recording recording;
    std::string why;
    if (!path.empty() && !wire::Load(path, recording, why))
        throw CommandError(why);
    if (path.empty() && !wire::ReadDevice(recording, why))
        throw CommandError(why, kExitDevice);
    return recording;
}

std::string NewRecordingPath(const std::string& words) {
    for (const fs::path& folder : Candidates()) {
        if (!coredll::MakePrivateFolder(folder.string()))
            continue;
        const std::vector<fs::path> files = RecordingsIn(folder);
        std::error_code error;
        for (size_t i = 0; i + kKeptRecordings <= files.size(); ++i)
            for (const char* kind : {".jsonl", ".html"})
                fs::remove(fs::path(files[i]).replace_extension(kind), error);
        const auto now = std::chrono::system_clock::now();
        const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(now);
        return folder / fmt::format("{:%Y%m%dT%H%M%S}{:03}-{}.jsonl",
                                    fmt::gmtime(std::chrono::system_clock::to_time_t(now)),
                                    milliseconds.time_since_epoch().count() % 1000, words);
    }
    throw CommandError("There is no folder to keep a recording in: set XDG_STATE_HOME to one.");
}

std::string KeepRecording(const wire::Recording& recording, const std::string& path,
                          const std::string& words) {
    try {
        const std::string kept = path.empty() ? NewRecordingPath(words) : path;
        const std::string page = fs::path(kept).replace_extension(".html").string();
        std::string why;
        if (!wire::Save(recording, kept, why))
            return why;
        WriteOutput(page, RenderPage(wire::ToJson(recording)));
        return fmt::format("the recording is kept in {}, its page in {}", kept, page);
    } catch (const CommandError& error) {
        return error.what();
    }
}

std::optional<KeptRecording> NewestRecording() {
    for (const fs::path& folder : Candidates()) {
        const std::vector<fs::path> files = RecordingsIn(folder);
        std::error_code error;
        if (files.empty())
            continue;
        const auto written =
            std::chrono::file_clock::to_sys(fs::last_write_time(files.back(), error));
        return KeptRecording{files.back(),
                             std::chrono::nanoseconds(written.time_since_epoch()).count()};
    }
    return std::nullopt;
}

}  // namespace zelto::tools
