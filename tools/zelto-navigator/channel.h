// The two ways by which a request comes in and its reply goes out.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_CHANNEL_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_CHANNEL_H

#include <memory>
#include <string>
#include <string_view>

#include "plugins/zelto_port_dll/protocol.h"

namespace zelto::navigator {

// How long an announced request is waited for. A client writes right after announcing; one that
// announces again while it waits for a late reply writes nothing at all.
inline constexpr DWORD kRequestWait = 300;

// One announced request. Thread safety: none; used by one thread.
class Exchange {
  public:
    virtual ~Exchange() = default;

    // Takes the request; false, with the reason in words, when there is none.
    virtual bool Receive(std::string& request, std::string& why) = 0;

    // Hands the reply over; false, with the reason in words, when it did not go out.
    virtual bool Send(std::string_view reply, std::string& why) = 0;
};

// The queue pair of one generation; both ends are closed with the object.
std::unique_ptr<Exchange> OpenQueueExchange(int generation);

// The packet files in a folder, written with backslashes and without one at the end.
std::unique_ptr<Exchange> OpenFileExchange(const std::u16string& folder);

// The folder of this program, where clients look for the packet files.
std::u16string ProgramFolder();

}  // namespace zelto::navigator

#endif
