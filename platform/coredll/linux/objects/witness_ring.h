// Recording for the witness. A process that dies in the middle leaves a slot that no reader takes
// for an event; the ring goes on behind it.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WITNESS_RING_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WITNESS_RING_H

#include <string>
#include <string_view>

#include "platform/coredll/linux/objects/store_layout.h"
#include "platform/coredll/linux/objects/witness.h"

namespace zelto::coredll {

// What the caller knows of an event; the rest is filled in.
struct WitnessNote {
    WitnessKind kind;
    uint32_t code = 0;
    std::u16string_view name = {};
    const void* bytes = nullptr;
    uint32_t size = 0;
    uint32_t window = 0;
    PostedMessage posted = {};
    uint32_t process = 0;  // 0: this one
};

// Appends to the ring. Lock held.
void AppendWitness(Store& store, const WitnessNote& note);

// Relaxed: whoever learns late that the switch was turned records an event more or less.
inline bool IsWitnessed(const Store& store) {
    return store.witness.recording.load(std::memory_order_relaxed) != 0;
}

// The same where recording is on. Lock held.
inline void Witness(Store& store, const WitnessNote& note) {
    if (IsWitnessed(store)) [[unlikely]]
        AppendWitness(store, note);
}

// The processes of the device that are stopped now, each as an event. Lock held.
void WitnessStopped(Store& store);

// A program was started, or not. Takes the lock.
void WitnessProgram(const std::string& path, DWORD error);

inline std::u16string_view NameOf(const ObjectName& name) {
    return {name.text, name.length < MAX_PATH ? name.length : 0};
}

}  // namespace zelto::coredll

#endif
