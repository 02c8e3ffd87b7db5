// Any text is read or refused; what was read comes back the same after being written.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/coredll/linux/registry/registry_text.h"

using zelto::coredll::FormatRegistry;
using zelto::coredll::ParseRegistry;
using zelto::coredll::Registry;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Registry first;
    std::string problem;
    if (!ParseRegistry({reinterpret_cast<const char*>(data), size}, first, problem)) {
        if (problem.empty())
            std::abort();
        return 0;
    }
    const std::string text = FormatRegistry(first);
    Registry second;
    if (!ParseRegistry(text, second, problem) || FormatRegistry(second) != text)
        std::abort();
    return 0;
}
