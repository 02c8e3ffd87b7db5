// The process's one handle table: small numbers with a type, so that a stale handle or one of the
// wrong type is told apart from a good one. What a handle stands for is a word that its family
// chooses: a pointer it owns, or a place in the store.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_HANDLE_TABLE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_HANDLE_TABLE_H

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

enum class HandleKind : uint8_t { kNone, kQueue, kEvent, kThread, kFile, kSearch, kRegistryKey };

constexpr uint32_t kMaxHandles = 4096;  // open at a time in one process

// A new handle, or null when the table is full (the caller still owns what the word stands for).
// Never allocates.
HANDLE MakeHandle(HandleKind kind, uintptr_t word);

// Whether the handle is open and of that kind; then its word is stored.
bool LookUpHandle(HANDLE handle, HandleKind kind, uintptr_t& word);

// The same, and the handle is closed: the caller now owns what the word stands for.
bool TakeHandle(HANDLE handle, HandleKind kind, uintptr_t& word);

// kNone for a handle that is not open.
HandleKind KindOfHandle(HANDLE handle);

// What CloseHandle does with a word of each kind that it may close; each in its family's file.
void CloseQueueWord(uintptr_t word);
void CloseEventWord(uintptr_t word);
void CloseThreadWord(uintptr_t word);
void CloseFileWord(uintptr_t word);

}  // namespace zelto::coredll

#endif
