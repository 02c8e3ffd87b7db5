// Request lines of any bytes: the navigator always has a reply that callers can take.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/text/wide.h"
#include "tools/zelto-navigator/reply.h"
#include "tools/zelto-navigator/requests.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    zelto::navigator::Navigator navigator;
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        const std::string_view line = rest.substr(0, end == rest.npos ? end : end + 1);
        rest.remove_prefix(line.size());
        const std::string reply = zelto::navigator::Answer(navigator, line);
        const bool known_kind = reply[0] == 'A' || reply[0] == 'B' || reply[0] == 'G';
        if (reply.size() < 2 || reply.size() > zelto::navigator::kMaxReply || !known_kind ||
            !zelto::tools::IsUtf8(zelto::tools::Printable(reply)))
            std::abort();
    }
    return 0;
}
