// One request to the navigator and its reply, as bytes.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_TRANSPORT_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_TRANSPORT_H

#include <cstdint>

namespace zelto {

// Sends a request and waits for its reply. `buffer` takes at most `size` bytes; on the packet-file
// channel a NUL is put behind them, for which there must be room, and none on the queue channel.
// A null command or argument text is allowed, see RequestLine.
// Result: 0 and `bytes_read` set, or
//   5 request file not created     10 reply queue not readable      1007 no reply in time
//   6 request file not written     11 navigator's end is gone       2007 no reply event in time
//   9 reply file not read          12 announcement not posted       88   reply file not opened
// or the system's error number of a failed queue write, negated if it was the second attempt.
// Thread safety: one thread at a time.
int32_t Transact(const char* command, const char* arguments, char* buffer, uint32_t size,
                 uint32_t& bytes_read);

// Announces and writes one message; `reconnect` asks for a fresh queue pair where the connection
// does not do so anyway. Result: 0, 12, or the error number as above.
int32_t SendOnQueue(const void* request, uint32_t length, uint8_t reconnect);

// Closes the queue pair and creates that of the current generation. A queue that cannot be created
// shows in the write or read that follows.
void OpenQueues();

}  // namespace zelto

#endif
