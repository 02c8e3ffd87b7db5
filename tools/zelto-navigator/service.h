// The navigator at work: its window, its messages, its requests.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_SERVICE_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_SERVICE_H

#include <memory>
#include <string>

#include "platform/coredll/coredll.h"
#include "tools/zelto-navigator/channel.h"
#include "tools/zelto-navigator/faults.h"
#include "tools/zelto-navigator/journal.h"
#include "tools/zelto-navigator/navigator.h"
#include "tools/zelto-navigator/script.h"
#include "tools/zelto-navigator/view.h"

namespace zelto::navigator {

struct ServiceOptions {
    bool packet_files = false;  // take announcements of packet files
    Faults faults;
    Script script;
};

// What its log says before the name of a fault that a request has met.
inline constexpr const char* kMetFault = "met the fault ";
// And before what was not as its strict script says.
inline constexpr const char* kComplaint = "script: ";

// The exit status of a navigator that was not asked what its strict script says.
inline constexpr int kScriptNotKept = 3;

// One per process: the window of a second navigator on the same device is refused.
// Thread safety: none; used by one thread.
class Service {
  public:
    // Without a view, null, nobody looks on. Journal and view outlive the service.
    Service(const ServiceOptions& options, Journal& journal, View* view = nullptr);

    // Makes the window and serves until it is asked to end. Returns the process's exit status: 0,
    // 1 when window or view could not be had, or the window was lost, or kScriptNotKept.
    int Run();

  private:
    bool MakeWindow();
    bool OpenView();
    void HandleMessage(const MSG& message);
    void TakeActs();
    void Take(const BoxAnswer& answer);
    void Take(const Moment& moment);
    void Take(const Faults& faults);
    void HandleAnnouncement(LPARAM detail);
    void Serve(Exchange& exchange, int generation);
    std::string ReplyTo(const std::string& request, const Step* step);
    // Sends the reply, or does with it what the step's fault says.
    bool Send(Exchange& exchange, const std::string& reply, const Step* step, int generation,
              std::string& why);
    int Finish();
    void Record(const JournalEntry& entry);

    ServiceOptions options_;
    Journal& journal_;
    View* view_;
    std::string link_;  // to the view
    Navigator navigator_;
    HWND window_ = nullptr;
};

}  // namespace zelto::navigator

#endif
