// zeltoport crc: stamping files with their CRC-32, and checking them against it.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "common/files/file_crc32.h"
#include "common/text/codepage.h"
#include "platform/coredll/linux/device_admin.h"
#include "tools/text/wide.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/progress_bar.h"

namespace zelto::tools {
namespace {

namespace fs = std::filesystem;

constexpr int32_t kUtf8 = 65001;

class Counter final : public TCrcObserver {
  public:
    void SetTotal(uint32_t /*total*/) override {}
};

// Draws a bar of how far the counter has come, from a thread of its own: the counter only counts.
class Watcher {
  public:
    Watcher(const std::string& label, int64_t size, const Counter& counter)
        : bar_(label, size), counter_(counter) {
        if (coredll::IsTerminal(stderr))
            thread_ = std::jthread([this](const std::stop_token& stop) { Watch(stop); });
    }

  private:
    void Watch(const std::stop_token& stop) {
        std::unique_lock hold(mutex_);
        uint32_t seen = 0;
        int64_t done = 0;
        while (!stop.stop_requested()) {
            stopped_.wait_for(hold, stop, std::chrono::milliseconds(100), [] { return false; });
            const uint32_t now = counter_.done;
            done += now - seen;  // modulo 2^32: files may be longer
            seen = now;
            bar_.Update(done);
        }
    }

    ProgressBar bar_;
    const Counter& counter_;
    std::mutex mutex_;
    std::condition_variable_any stopped_;
    std::jthread thread_;
};

// The library's name of a host's file.
DString DeviceName(const std::string& path) {
    std::string name = fs::absolute(path).string();
    std::replace(name.begin(), name.end(), '/', '\\');
    return name.c_str();
}

int64_t SizeOf(const std::string& path) {
    std::error_code error;
    const auto size = fs::file_size(path, error);
    return error ? -1 : static_cast<int64_t>(size);
}

struct FileOutcome {
    ExitStatus status;
    std::string words;
    nlohmann::json object;
};

bool Run(const std::string& path, int32_t mode, int64_t size, uint32_t& crc) {
    Counter counter;
    const Watcher watcher(Printable(path), size, counter);
    const bool success = FileCrc32(DeviceName(path), crc, mode, &counter);
    // Whether the stamp was written is only to be seen in the file.
    return success && (mode != kCrcAdd || SizeOf(path) == size + 4);
}

FileOutcome Failed(const std::string& path, int32_t mode, bool was_there) {
    const bool damaged = mode == kCrcCheck && was_there;
    const char* why = damaged           ? "not what its stamp says"
                      : mode == kCrcAdd ? "could not be stamped"
                                        : "could not be read";
    return {damaged ? kExitFailure : kExitUsage,
            fmt::format("--------  {}: {}", Printable(path), why),
            {{"path", path}, {"success", false}, {"error", why}}};
}

FileOutcome Process(const std::string& path, int32_t mode) {
    const int64_t size = SizeOf(path);
    uint32_t crc = 0;
    if (size < 0 || !Run(path, mode, size, crc))
        return Failed(path, mode, size >= 0);
    const std::string digits = fmt::format("{:08x}", crc);
    return {kExitSuccess,
            fmt::format("{}  {}", digits, Printable(path)),
            {{"path", path}, {"success", true}, {"crc", digits}}};
}

void ProcessAll(const std::vector<std::string>& paths, int32_t mode, Session& session) {
    SetCurrentCodepage(kUtf8);
    ExitStatus status = kExitSuccess;
    std::string words;
    nlohmann::json files = nlohmann::json::array();
    for (const std::string& path : paths) {
        FileOutcome outcome = Process(path, mode);
        status = std::max(status, outcome.status);
        words += (words.empty() ? "" : "\n") + outcome.words;
        files.push_back(std::move(outcome.object));
    }
    session.Report(status, words, {{"files", std::move(files)}});
}

}  // namespace

void AddCrcCommand(CLI::App& app, Session& session) {
    CLI::App* crc = app.add_subcommand("crc", "Stamp files with their CRC-32 and check them");
    crc->require_subcommand(1);
    const auto add = [crc, &session](const char* name, int32_t mode, const char* description) {
        CLI::App* command = crc->add_subcommand(name, description);
        auto paths = std::make_shared<std::vector<std::string>>();
        command->add_option("file", *paths, "Files of the host")->required();
        command->callback([paths, mode, &session] { ProcessAll(*paths, mode, session); });
    };
    add("add", kCrcAdd, "Append its CRC-32 to each file");
    add("check", kCrcCheck, "Check each file against the CRC-32 at its end");
    add("show", kCrcGenerate, "Print the CRC-32 of each file");
}

}  // namespace zelto::tools
