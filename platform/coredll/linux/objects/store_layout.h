// The object store: what the processes of one device share, in one mapped file.
//
// Nothing read from it is trusted: another process may have died, or gone wrong, while it wrote.
// An index, a length or a count is held against its limit where it is used.
//
// The file holds offsets and indices, never pointers, and 32-bit atomics only. Every table entry
// has one field whose store makes the entry exist (its `state`, or the link to a message); all
// else is either written before that, or can be worked out again from it. So a process may die
// between any two instructions: whoever finds its lock rebuilds the rest (store_repair.h).

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_LAYOUT_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_LAYOUT_H

#include <cstdint>

#include "platform/coredll/api/base.h"
#include "platform/coredll/linux/base/futex.h"
#include "platform/coredll/linux/objects/witness.h"

namespace zelto::coredll {

// The limits of one device.
constexpr uint32_t kMaxProcesses = 64;
constexpr uint32_t kMaxWindows = 64;
constexpr uint32_t kMaxPostedMessages = 1024;  // waiting at one window
constexpr uint32_t kMaxQueues = 256;
constexpr uint32_t kMaxEvents = 64;        // named ones
constexpr uint32_t kMaxEnds = 1024;        // open handles to queues and named events, all processes
constexpr uint32_t kBlockCount = 16384;    // message memory, in blocks
constexpr uint32_t kBlockBytes = 240;      // message bytes in one block
constexpr uint32_t kWitnessEvents = 4096;  // that the witness remembers
constexpr uint32_t kMaxWindowText = 63;    // units of a class name or title, without the NUL

constexpr char kStoreMagic[8] = {'Z', 'E', 'L', 'T', 'O', 'O', 'B', 'J'};
constexpr uint32_t kStoreVersion = 4;

enum State : uint32_t { kFree = 0, kLive = 1 };

// Names a process slot and which of its successive users is meant; 0 is nobody. The top bit is
// always clear, so that the lock may use it.
class ProcessToken {
  public:
    constexpr ProcessToken() = default;
    constexpr ProcessToken(uint32_t slot, uint32_t use)
        : word_(((use << kSlotBits) | (slot + 1)) & kMask) {}
    static constexpr ProcessToken FromWord(uint32_t word) {
        ProcessToken token;
        token.word_ = word & kMask;
        return token;
    }

    constexpr uint32_t Word() const { return word_; }
    // Index of the slot; beyond the table for nobody, and for what is no token.
    constexpr uint32_t Slot() const { return (word_ & ((1u << kSlotBits) - 1)) - 1; }
    constexpr explicit operator bool() const { return word_ != 0; }
    friend constexpr bool operator==(ProcessToken, ProcessToken) = default;

  private:
    static constexpr uint32_t kSlotBits = 8;
    static constexpr uint32_t kMask = 0x7FFFFFFF;
    uint32_t word_ = 0;
};
static_assert(sizeof(ProcessToken) == 4 && kMaxProcesses < 255);

// A slot's users are counted, and the count stands in one word with what became of the last one:
// whoever frees a slot exchanges the very word by which it judged, so a new user cannot lose it.
// Unswept is claimed (or left) while what the user before held is still in the tables: should the
// claim's maker die too, the next sweep knows that a repair is due.
enum SlotPhase : uint32_t {
    kSlotFree = 0,
    kSlotClaimed = 1,
    kSlotLive = 2,
    kSlotUnswept = 3,
    kSlotPhases = 4
};

struct alignas(64) ProcessSlot {
    Word use;  // users so far * kSlotPhases + SlotPhase
    uint32_t pid;
    uint32_t start_time[2];  // clock ticks since boot, low and high; tells a reused pid apart
    WaitWord messages;       // a message was posted to one of its windows
};

struct PostedMessage {
    uint32_t message;
    uint32_t wparam;
    uint32_t lparam;
    uint32_t time;
};

struct alignas(64) WindowSlot {
    Word state;
    uint32_t serial;  // of the window now or last in this slot
    ProcessToken owner;
    uint32_t visible;
    uint32_t minimized;
    Word taken;   // messages taken and posted since the window was made; their difference
    Word posted;  // is what waits in the ring
    WCHAR class_name[kMaxWindowText + 1];
    WCHAR title[kMaxWindowText + 1];
};

struct WindowRing {
    PostedMessage messages[kMaxPostedMessages];
};

// A name with its length and hash, so that a look-up seldom reads the text.
struct ObjectName {
    uint32_t hash;
    uint32_t length;
    WCHAR text[MAX_PATH];
};

struct alignas(64) QueueSlot {
    Word state;
    uint32_t flags;
    uint32_t max_messages;   // 0 = no limit
    uint32_t message_bytes;  // largest message
    Word head;               // first message: block + 1, 0 none
    Word alert;              // the alert message: block + 1, 0 none
    uint32_t tail;           // derived: last message
    uint32_t count;          // derived: messages but the alert
    uint32_t readers;        // derived from the ends
    uint32_t writers;
    uint32_t had_readers;  // a side had somebody once
    uint32_t had_writers;
    uint32_t broken;  // a side has nobody left (without ALLOW_BROKEN): every call fails with 233
    WaitWord changed;
    uint32_t named;
    ObjectName name;
};

struct EventState {
    Word signalled;
    uint32_t manual_reset;
    WaitWord changed;
};

struct alignas(64) EventSlot {
    Word state;
    EventState event;
    ObjectName name;
};

enum class EndKind : uint32_t { kReader, kWriter, kEvent };

// One open handle to a shared object.
struct EndSlot {
    Word state;
    ProcessToken owner;
    EndKind kind;
    uint32_t object;  // index of its queue or event
};

struct Block {
    uint32_t next;      // next block of the message, or of the free list: block + 1, 0 at the end
    Word next_message;  // in a message's first block: block + 1, 0 at the end
    uint32_t size;      // in a message's first block: bytes of the message
    uint32_t reserved;
    unsigned char bytes[kBlockBytes];
};
static_assert(sizeof(Block) == 256);

struct alignas(64) WitnessSlot {
    Word stamp;  // number of the event + 1 when all below is written; 0 meanwhile
    WitnessKind kind;
    uint32_t process;
    uint32_t code;
    uint32_t time[2];  // ns, low and high
    uint32_t window;
    uint32_t message;
    uint32_t wparam;
    uint32_t lparam;
    uint32_t size;
    uint32_t name_length;
    WCHAR name[kWitnessName];
    unsigned char bytes[kWitnessBytes];
};
static_assert(sizeof(WitnessSlot) == 256);

struct Witnessed {
    Word recording;
    Word next;  // number of the next event
    WitnessSlot slots[kWitnessEvents];
};

struct Store {
    // Checked before anything else is looked at.
    Word magic[2];  // the bytes of kStoreMagic; the first word is written last of all
    uint32_t version;
    uint32_t size;
    char boot_id[40];           // of the host's boot in which the processes below lived
    uint32_t pid_namespace[2];  // in which their ids count, low and high

    alignas(64) Word lock;  // token of the owner, top bit: somebody sleeps for it; 0 free

    // Counts the changes of the device's registry. Written through the file (registry_changes.h).
    alignas(64) Word registry_changes;

    // Derived marks: table entries from here on were never used or are free.
    alignas(64) uint32_t queue_top;
    uint32_t end_top;
    uint32_t free_block;  // first of the free list: block + 1
    uint32_t fresh_block;
    uint32_t committed_blocks;  // promised to queues or holding a message of a NOPRECOMMIT one

    ProcessSlot processes[kMaxProcesses];
    WindowSlot windows[kMaxWindows];
    EndSlot ends[kMaxEnds];
    QueueSlot queues[kMaxQueues];
    EventSlot events[kMaxEvents];
    alignas(4096) WindowRing rings[kMaxWindows];
    alignas(4096) Block blocks[kBlockCount];
    alignas(4096) Witnessed witness;
};
static_assert(sizeof(Store) < 8u << 20);

}  // namespace zelto::coredll

#endif
