#include "platform/coredll/linux/objects/store_report.h"

#include "platform/coredll/linux/objects/store.h"

namespace zelto::coredll {
namespace {

std::u16string TextOf(const ObjectName& name) {
    return {name.text, name.length};
}

void ReportProcesses(const Store& store, StoreReport& report) {
    for (uint32_t i = 0; i < kMaxProcesses; ++i) {
        const ProcessSlot& process = store.processes[i];
        if (process.state.load() != kLive)
            continue;
        report.processes.push_back({process.pid, i + 1 == (MyToken() & 0xFF)});
    }
}

void ReportWindows(const Store& store, StoreReport& report) {
    for (const WindowSlot& window : store.windows) {
        if (window.state.load() != kLive)
            continue;
        const ProcessSlot& owner = store.processes[(window.owner & 0xFF) - 1];
        report.windows.push_back({window.class_name, window.title, owner.pid, window.visible != 0,
                                  window.minimized != 0,
                                  window.posted.load() - window.taken.load()});
    }
}

void ReportQueues(const Store& store, StoreReport& report) {
    for (const QueueSlot& queue : store.queues) {
        if (queue.state.load() != kLive)
            continue;
        report.queues.push_back({queue.named != 0 ? TextOf(queue.name) : u"", queue.readers,
                                 queue.writers, queue.count, queue.max_messages,
                                 queue.message_bytes});
    }
}

void ReportEvents(const Store& store, StoreReport& report) {
    for (const EventSlot& slot : store.events) {
        if (slot.state.load() != kLive)
            continue;
        report.events.push_back(
            {TextOf(slot.name), slot.event.manual_reset != 0, slot.event.signalled.load() != 0});
    }
}

}  // namespace

bool DescribeStore(StoreReport& report, std::string* why) {
    Store* store = OpenStore();
    if (store == nullptr) {
        if (why != nullptr)
            *why = StoreProblem();
        return false;
    }
    SweepDeadProcesses(*store);
    const StoreLock lock(*store);
    report = StoreReport{};
    ReportProcesses(*store, report);
    ReportWindows(*store, report);
    ReportQueues(*store, report);
    ReportEvents(*store, report);
    report.message_memory = sizeof store->blocks;
    report.committed_message_memory = uint64_t{store->committed_blocks} * sizeof(Block);
    return true;
}

}  // namespace zelto::coredll
