// What a user at the navigator's screen sees and does, for the service that has no screen.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_VIEW_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_VIEW_H

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "tools/zelto-navigator/faults.h"
#include "tools/zelto-navigator/journal.h"
#include "tools/zelto-navigator/nmea_writer.h"

namespace zelto::navigator {

// A button of a message box, by its name.
struct BoxAnswer {
    uint64_t box = 0;  // how many boxes there were with it
    std::string button;
};

// What the user did: answered a box, was somewhere else, wanted other faults.
using Act = std::variant<BoxAnswer, Moment, Faults>;

class View {
  public:
    virtual ~View() = default;

    // Begins; `wake` is called, from any thread, when there are acts to take. Returns how to get at
    // the view, or throws std::runtime_error with the reason why it cannot be had.
    virtual std::string Open(std::function<void()> wake) = 0;

    // All that the user did since the last time.
    virtual std::vector<Act> TakeActs() = 0;

    // What goes on. `boxes` is how many message boxes there were so far; a position that the user
    // has moved shows as the sentence that a client would have sent.
    virtual void ShowRequest(const JournalEntry& entry, uint64_t boxes) = 0;
    virtual void ShowMove(const std::string& sentence) = 0;
    virtual void ShowFaults(const Faults& faults) = 0;
    virtual void ShowAnswer(const BoxAnswer& answer) = 0;
};

}  // namespace zelto::navigator

#endif
