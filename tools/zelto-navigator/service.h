// The navigator at work: its window, its messages, its requests.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_SERVICE_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_SERVICE_H

#include <memory>
#include <optional>
#include <string>

#include "platform/coredll/coredll.h"
#include "tools/zelto-navigator/channel.h"
#include "tools/zelto-navigator/journal.h"
#include "tools/zelto-navigator/navigator.h"

namespace zelto::navigator {

// Faults to show to a client under test. The request itself is carried out all the same.
struct Faults {
    std::optional<std::string> reply;  // sent in the place of the right one
    DWORD delay = 0;                   // milliseconds before the reply goes out
    bool silent = false;               // no reply at all
    std::string letters;               // the requests concerned; empty: all

    bool Concern(const std::string& request) const;
};

struct ServiceOptions {
    bool packet_files = false;  // take announcements of packet files
    Faults faults;
};

// One per process: the window of a second navigator on the same device is refused.
// Thread safety: none; used by one thread.
class Service {
  public:
    Service(const ServiceOptions& options, Journal& journal);

    // Makes the window and serves until it is asked to end. Returns the process's exit status: 0,
    // or 1 when the window could not be made or was lost.
    int Run();

  private:
    bool MakeWindow();
    void HandleMessage(const MSG& message);
    void HandleAnnouncement(LPARAM detail);
    void Serve(Exchange& exchange, int generation);
    std::string ReplyTo(const std::string& request);
    void Record(const JournalEntry& entry);

    ServiceOptions options_;
    Journal& journal_;
    Navigator navigator_;
    HWND window_ = nullptr;
};

}  // namespace zelto::navigator

#endif
