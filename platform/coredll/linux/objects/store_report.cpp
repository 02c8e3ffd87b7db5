#include "platform/coredll/linux/objects/store_report.h"

#include <algorithm>

#include "platform/coredll/linux/objects/process_life.h"
#include "platform/coredll/linux/objects/store.h"

namespace zelto::coredll {
namespace {

std::u16string TextOf(const ObjectName& name) {
    return {name.text, std::min<uint32_t>(name.length, MAX_PATH - 1)};
}

std::u16string TextOf(const WCHAR (&text)[kMaxWindowText + 1]) {
    return {text, std::find(text, text + kMaxWindowText, u'\0')};
}

void ReportProcesses(const Store& store, StoreReport& report) {
    for (uint32_t i = 0; i < kMaxProcesses; ++i) {
        const ProcessToken user = UserOf(store, i);
        if (user)
            report.processes.push_back({store.processes[i].pid, user == MyToken(),
                                        ProcessIsStopped(store.processes[i].pid)});
    }
}

void ReportWindows(const Store& store, StoreReport& report) {
    for (const WindowSlot& window : store.windows) {
        if (window.state.load() != kLive)
            continue;
        const ProcessSlot* owner = ProcessOf(store, window.owner);
        report.windows.push_back({TextOf(window.class_name), TextOf(window.title),
                                  owner == nullptr ? 0 : owner->pid, window.visible != 0,
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
    if (!lock.IsHeld()) {
        if (why != nullptr)
            *why = LockHolderInWords(*store);
        return false;
    }
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
