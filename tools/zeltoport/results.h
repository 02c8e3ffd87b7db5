// The result codes of the library in words.

#ifndef ZELTO_TOOLS_ZELTOPORT_RESULTS_H
#define ZELTO_TOOLS_ZELTOPORT_RESULTS_H

#include <cstdint>
#include <string>
#include <string_view>

namespace zelto::tools {

// What a result of the named export means. Some numbers mean different things with different
// exports; a number that is none of the library's is the navigator's or the system's.
std::string DescribeResult(std::string_view export_name, int32_t result);

// Whether the result says that the navigator can no longer be reached, so that further calls are
// pointless.
bool ContactLost(int32_t result);

}  // namespace zelto::tools

#endif
