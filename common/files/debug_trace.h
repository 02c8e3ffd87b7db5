// Lines for whoever debugs the library. They go nowhere until a sink is set.

#ifndef ZELTO_COMMON_FILES_DEBUG_TRACE_H
#define ZELTO_COMMON_FILES_DEBUG_TRACE_H

namespace zelto {

// Receives one line without its end.
// Thread safety: may be called from any thread.
using DebugTraceSink = void (*)(const char* line);

// Thread safety: both from any thread.
void SetDebugTrace(DebugTraceSink sink);  // null: nowhere
void DebugTrace(const char* line);

}  // namespace zelto

#endif
