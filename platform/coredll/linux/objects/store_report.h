// What is in the object store now, for tools that show it.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_REPORT_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_REPORT_H

#include <cstdint>
#include <string>
#include <vector>

namespace zelto::coredll {

struct ProcessReport {
    uint32_t pid;
    bool own;      // the asking process
    bool stopped;  // by a signal; it does not go on by itself
};

struct WindowReport {
    std::u16string class_name;
    std::u16string title;
    uint32_t pid;
    bool visible;
    bool minimized;
    uint32_t waiting;  // messages not yet taken
};

struct QueueReport {
    std::u16string name;  // empty for a queue without one
    uint32_t readers;
    uint32_t writers;
    uint32_t messages;  // waiting, but for an alert
    uint32_t max_messages;
    uint32_t message_bytes;
};

struct EventReport {
    std::u16string name;
    bool manual_reset;
    bool signalled;
};

struct StoreReport {
    std::vector<ProcessReport> processes;
    std::vector<WindowReport> windows;
    std::vector<QueueReport> queues;
    std::vector<EventReport> events;
    uint64_t message_memory;            // bytes in all
    uint64_t committed_message_memory;  // bytes promised to queues
};

// Frees what dead processes left, then fills the report. False when the store cannot be used: then
// `why` (may be null) says what to do.
bool DescribeStore(StoreReport& report, std::string* why);

}  // namespace zelto::coredll

#endif
