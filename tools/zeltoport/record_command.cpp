// zeltoport record: whether the device remembers what happens on it, and a copy of what it does.

#include <fmt/core.h>
#include <memory>

#include "platform/coredll/linux/device_admin.h"
#include "tools/wire/recording.h"
#include "tools/zeltoport/command.h"

namespace zelto::tools {

namespace {

void Switch(Session& session, bool on) {
    RequireWorkingDevice();
    coredll::RecordWitness(on);
    session.Report(kExitSuccess, on ? "recording" : "not recording", {{"recording", on}});
}

void SaveTo(Session& session, const std::string& path) {
    RequireWorkingDevice();
    wire::Recording recording;
    std::string why;
    if (!wire::ReadDevice(recording, why))
        throw CommandError(why, kExitDevice);
    if (!wire::Save(recording, path, why))
        throw CommandError(why, kExitFailure);
    session.Report(kExitSuccess, fmt::format("{} events in {}", recording.events.size(), path),
                   {{"file", path}, {"events", recording.events.size()}, {"lost", recording.lost}});
}

void ShowState(Session& session) {
    RequireWorkingDevice();
    coredll::WitnessReport report;
    coredll::ReadWitness(report);
    session.Report(
        kExitSuccess,
        fmt::format("{}; {} events there, {} overwritten",
                    report.on ? "recording" : "not recording", report.events.size(), report.lost),
        {{"recording", report.on}, {"events", report.events.size()}, {"lost", report.lost}});
}

}  // namespace

void AddRecordCommand(CLI::App& app, Session& session) {
    auto path = std::make_shared<std::string>();
    CLI::App* record = app.add_subcommand(
        "record", "Let the device remember the last events of its queues, windows and processes");
    record->require_subcommand(1);
    record->add_subcommand("on", "From now on, programs that run included")->callback([&session] {
        Switch(session, true);
    });
    record->add_subcommand("off", "No longer; what was recorded stays")->callback([&session] {
        Switch(session, false);
    });
    record->add_subcommand("show", "Whether it does, and how much there is")->callback([&session] {
        ShowState(session);
    });
    CLI::App* save = record->add_subcommand("save", "Copy what the device remembers to a file");
    save->add_option("file", *path, "The file to write")->required();
    save->callback([=, &session] { SaveTo(session, *path); });
}

}  // namespace zelto::tools
