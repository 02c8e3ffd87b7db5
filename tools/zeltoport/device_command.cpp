// Setting up a device and looking into it.

#include <fmt/core.h>
#include <memory>

#include "platform/coredll/linux/device_admin.h"
#include "tools/text/wide.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/device_state.h"
#include "tools/zeltoport/registered_navigator.h"

namespace zelto::tools {

namespace {

using coredll::StoreReport;
using nlohmann::json;

void InitDevice(Session& session, const std::string& navigator) {
    std::string why;
    if (!coredll::CreateDevice(&why))
        throw CommandError(why, kExitDevice);
    RequireWorkingDevice();
    const std::string program = navigator.empty() ? NavigatorBeside() : navigator;
    if (program.empty())
        throw CommandError(
            "There is no zelto-navigator beside this program: name the navigator "
            "with --navigator.");
    const std::string registered = RegisterNavigator(program);
    session.Report(kExitSuccess,
                   fmt::format("device {}\nnavigator {}", coredll::DevicePath(), registered),
                   {{"directory", coredll::DevicePath()}, {"navigator", registered}});
}

std::string Name(const std::u16string& text) {
    return text.empty() ? "(no name)" : Printable(Utf8FromWide(text));
}

std::string StoreInWords(const StoreReport& store) {
    std::string words = fmt::format("message memory: {} of {} bytes promised",
                                    store.committed_message_memory, store.message_memory);
    for (const auto& process : store.processes)
        words += fmt::format("\nprocess {}{}{}", process.pid, process.own ? " (this one)" : "",
                             process.stopped ? " (stopped)" : "");
    for (const auto& window : store.windows)
        words += fmt::format("\nwindow {} \"{}\" of process {}: {}{}, {} messages waiting",
                             Name(window.class_name), Name(window.title), window.pid,
                             window.visible ? "visible" : "hidden",
                             window.minimized ? ", minimised" : "", window.waiting);
    for (const auto& queue : store.queues)
        words += fmt::format("\nqueue {}: {} readers, {} writers, {} of {} messages of {} bytes",
                             Name(queue.name), queue.readers, queue.writers, queue.messages,
                             queue.max_messages, queue.message_bytes);
    for (const auto& event : store.events)
        words += fmt::format("\nevent {}: {}, {}", Name(event.name),
                             event.manual_reset ? "manual reset" : "auto reset",
                             event.signalled ? "signalled" : "not signalled");
    for (const std::string& trouble : TroublesOf(store))
        words += "\nwarning: " + trouble;
    return words;
}

json StoreInJson(const StoreReport& store) {
    json object = {{"processes", json::array()},
                   {"windows", json::array()},
                   {"queues", json::array()},
                   {"events", json::array()},
                   {"message_memory", store.message_memory},
                   {"committed_message_memory", store.committed_message_memory}};
    for (const auto& process : store.processes)
        object["processes"].push_back(
            {{"pid", process.pid}, {"own", process.own}, {"stopped", process.stopped}});
    for (const auto& window : store.windows)
        object["windows"].push_back({{"class", Utf8FromWide(window.class_name)},
                                     {"title", Utf8FromWide(window.title)},
                                     {"pid", window.pid},
                                     {"visible", window.visible},
                                     {"minimized", window.minimized},
                                     {"waiting", window.waiting}});
    for (const auto& queue : store.queues)
        object["queues"].push_back({{"name", Utf8FromWide(queue.name)},
                                    {"readers", queue.readers},
                                    {"writers", queue.writers},
                                    {"messages", queue.messages},
                                    {"max_messages", queue.max_messages},
                                    {"message_bytes", queue.message_bytes}});
    for (const auto& event : store.events)
        object["events"].push_back({{"name", Utf8FromWide(event.name)},
                                    {"manual_reset", event.manual_reset},
                                    {"signalled", event.signalled}});
    return object;
}

void ShowDevice(Session& session) {
    RequireWorkingDevice();
    StoreReport store;
    std::string why;
    if (!coredll::DescribeStore(store, &why))
        throw CommandError(why, kExitDevice);
    const std::string navigator = RegisteredNavigator();
    session.Report(
        kExitSuccess,
        fmt::format("device {}\nnavigator {}\n{}", coredll::DevicePath(),
                    navigator.empty() ? "not registered" : navigator, StoreInWords(store)),
        {{"directory", coredll::DevicePath()},
         {"navigator", navigator},
         {"store", StoreInJson(store)}});
}

}  // namespace

void AddDeviceCommand(CLI::App& app, Session& session) {
    auto navigator = std::make_shared<std::string>();
    CLI::App* device = app.add_subcommand("device", "Set up a device and look into it");
    device->require_subcommand(1);
    CLI::App* init =
        device->add_subcommand("init", "Make the device's directory and register the navigator");
    init->add_option("--navigator", *navigator,
                     "The navigator's program; else the zelto-navigator beside this one");
    init->callback([=, &session] { InitDevice(session, *navigator); });
    device->add_subcommand("show", "List windows, queues, events and processes of the device")
        ->callback([&session] { ShowDevice(session); });
}

}  // namespace zelto::tools
