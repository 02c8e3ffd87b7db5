#include "common/files/debug_trace.h"

#include <atomic>

namespace zelto {
namespace {

std::atomic<DebugTraceSink> g_sink = nullptr;

}  // namespace

void SetDebugTrace(DebugTraceSink sink) {
    g_sink = sink;
}

void DebugTrace(const char* line) {
    if (const DebugTraceSink sink = g_sink)
        sink(line);
}

}  // namespace zelto
