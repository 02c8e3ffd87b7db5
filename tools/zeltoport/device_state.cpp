#include "tools/zeltoport/device_state.h"

#include <algorithm>
#include <fmt/core.h>

#include "plugins/zelto_port_dll/protocol.h"
#include "tools/text/wide.h"
#include "tools/wire/lens.h"

namespace zelto::tools {

namespace {

using coredll::QueueReport;
using coredll::StoreReport;

void AddNavigator(const NavigatorState& navigator, std::vector<std::string>& troubles) {
    const std::string waiting =
        navigator.waiting == 0
            ? ""
            : fmt::format("announced, never taken: {} messages wait for it; ", navigator.waiting);
    if (navigator.stopped)
        troubles.push_back(fmt::format(
            "{0}the navigator (process {1}) is stopped: let it go on (kill -CONT {1}) or end it "
            "(kill -KILL {1}).",
            waiting, navigator.pid));
    else if (navigator.waiting != 0)
        troubles.push_back(
            fmt::format("{}the navigator (process {}) is busy, or does not look at its messages.",
                        waiting, navigator.pid));
}

void AddQueue(const QueueReport& queue, std::vector<std::string>& troubles) {
    const auto name = wire::ParseQueueName(queue.name);
    if (!name)
        return;
    const std::string shown = Utf8FromWide(queue.name);
    // The client writes requests and reads replies, one process each.
    if ((name->requests ? queue.writers : queue.readers) > 1)
        troubles.push_back(fmt::format(
            "Two clients hold queues of the name {}: each may read the other's replies. Let one "
            "client at a time use the device.",
            shown));
    if (queue.messages != 0 && (name->requests || queue.readers == 0))
        troubles.push_back(fmt::format("A {} waits in {}, and nobody reads it.",
                                       name->requests ? "request" : "reply", shown));
}

}  // namespace

std::optional<NavigatorState> FindNavigator(const StoreReport& store) {
    const auto window =
        std::find_if(store.windows.begin(), store.windows.end(),
                     [](const auto& each) { return each.class_name == kWindowClass; });
    if (window == store.windows.end())
        return std::nullopt;
    const auto process = std::find_if(store.processes.begin(), store.processes.end(),
                                      [&](const auto& each) { return each.pid == window->pid; });
    return NavigatorState{window->pid, process != store.processes.end() && process->stopped,
                          window->waiting};
}

std::vector<std::string> TroublesOf(const StoreReport& store) {
    std::vector<std::string> troubles;
    if (const auto navigator = FindNavigator(store))
        AddNavigator(*navigator, troubles);
    for (const QueueReport& queue : store.queues)
        AddQueue(queue, troubles);
    return troubles;
}

}  // namespace zelto::tools
