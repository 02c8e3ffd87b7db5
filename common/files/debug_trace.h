// Lines for whoever debugs the library. They go nowhere until a sink is set.

#ifndef ZELTO_COMMON_FILES_DEBUG_TRACE_H
#define ZELTO_COMMON_FILES_DEBUG_TRACE_H

#include <atomic>

namespace zelto {

// Receives one line without its end. May be called from any thread.
using DebugTraceSink = void (*)(const char* line);

inline std::atomic<DebugTraceSink> g_debug_trace_sink = nullptr;

// Thread safety: both from any thread.
inline void SetDebugTrace(DebugTraceSink sink) {  // null: nowhere
    g_debug_trace_sink = sink;
}

inline void DebugTrace(const char* line) {
    if (const DebugTraceSink sink = g_debug_trace_sink)
        sink(line);
}

}  // namespace zelto

#endif
