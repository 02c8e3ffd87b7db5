// Who is connected to the store: the process slots, and the tokens that name their users.
//
// A slot is taken under the lock on the store's file and freed by its own process or by whoever
// finds it dead, without that lock: every change of its `use` is an exchange against what was
// judged, so it fails when the slot has changed hands meanwhile.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_PROCESS_TABLE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_PROCESS_TABLE_H

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// This process's token, nobody while it is not connected. Any thread.
ProcessToken MyToken();

// Takes a free slot for this process, or that of a dead one: its token is then no longer current,
// so a repair frees what it held. Nobody when all are taken. The store's file is locked.
ProcessToken TakeProcessSlot(Store& store);

// Gives this process's slot back: free, when the caller repairs before it lets the lock go, else
// unswept, for the next sweep to repair.
void LeaveProcessSlot(Store& store, SlotPhase left);

// Forgets the slot in a child made by fork: it is the parent's. Touches this process alone.
void ForgetProcessSlot();

// Whether a token's slot is still taken by that very process, dead or alive.
bool TokenIsCurrent(const Store& store, ProcessToken token);

// Whether the process behind a token lives and still has its slot. Needs no lock.
bool TokenLives(const Store& store, ProcessToken token);

// Frees the slots of dead processes, each for the use that was found dead; the caller repairs when
// there was one, or one that had been taken from a dead process and not been swept. Lock held.
bool FreeDeadSlots(Store& store);

// The process behind a token; null for what is no token.
ProcessSlot* ProcessOf(Store& store, ProcessToken token);
const ProcessSlot* ProcessOf(const Store& store, ProcessToken token);

// The token of the slot's user; nobody while it has none.
ProcessToken UserOf(const Store& store, uint32_t slot);

}  // namespace zelto::coredll

#endif
