// Replies of the navigator as result codes.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_REPLIES_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_REPLIES_H

#include <cstdint>

namespace zelto {

inline constexpr uint32_t kReplySize = 1000;  // bytes; what every status request allows its reply

// Sends a request and turns its reply into a result: "A..." is 0, "B|<number>" that number, a reply
// of fewer than 2 bytes 2, anything else 9; results of Transact are passed on. `size` is at most
// kReplySize.
// Thread safety: one thread at a time.
int32_t DecodeStatus(const char* command, const char* arguments, uint32_t size);

// The same into the caller's buffer, which has room for size + 1 bytes. A reply of fewer than 2
// bytes is 8 here.
int32_t DecodeStatusInto(const char* command, const char* arguments, char* buffer, uint32_t size);

}  // namespace zelto

#endif
