// Scripts: what the navigator is to be asked, and what it does then, right or wrong.
//
// A script is JSON, with comments as in C++:
//   {"strict": true, "steps": [
//     {"request": "S|43.0000000,-4.0000000,,,0", "reply": "A|0"},          the very line
//     {"call": "goto", "arguments": {"latitude": 43}, "fault": "late",     a pattern
//      "delay_ms": 700, "skip": 1, "times": 2}]}
// A strict script is played in its order, and every request must be the one that comes next; only
// the request with which the library connects, "F|0", may come besides. In a script that is not,
// each request meets the first step that fits it and is not used up; others are answered as always.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_SCRIPT_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_SCRIPT_H

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/wire/calls.h"

namespace zelto::navigator {

enum class Fault {
    kNone,
    kDeaf,             // takes announcements, and does nothing about them
    kSilent,           // carries the request out, never replies
    kLate,             // replies after the client has given up
    kDoubled,          // replies twice
    kTruncated,        // replies one byte
    kTooLong,          // replies more than the client has room for
    kWrongKind,        // replies of no known kind
    kGarbage,          // replies bytes that are no text
    kRefuse,           // refuses, with a number
    kOtherGeneration,  // replies to queues of another generation
    kClosesWindow,     // closes its window in the place of a reply, and ends
    kDiesBeforeReply,
    kDiesAfterReply,
};

struct FaultName {
    Fault fault;
    const char* name;
    const char* meaning;
};

// All but kNone.
std::span<const FaultName> FaultNames();
// "refuse=N" in words, too. Throws ScriptError, which names the nearest known one.
Fault FaultOf(const std::string& name, int& refusal);
const char* NameOf(Fault fault);

// Ends the reading of a script; what() names the file, the line and what is wrong there.
class ScriptError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

inline constexpr uint32_t kLateByDefault = 700;  // ms; the library waits 500
inline constexpr uint32_t kAlways = UINT32_MAX;

struct Step {
    std::string request;               // the line without its line feed; "": the pattern below
    const wire::Call* call = nullptr;  // null: any
    std::map<std::string, nlohmann::json> arguments;  // text with * for any, or a number
    std::optional<std::string> reply;                 // else what the navigator would say
    uint32_t delay = 0;                               // ms before the reply
    Fault fault = Fault::kNone;
    int refusal = 0;
    uint32_t skip = 0;  // this many that fit are answered as always first
    uint32_t times = 1;
    int line = 0;  // of the file

    // What keeps the step from being meant by a request, in words; "" when it is meant.
    std::string Difference(const std::string& request) const;
};

// Thread safety: none; used by one thread.
class Script {
  public:
    // An empty one: every request is answered as always.
    Script() = default;
    // Throws ScriptError. `name` is the file's, for its words.
    Script(const std::string& text, const std::string& name);

    // The step for a request, used once more by this; null when it is to be answered as always.
    const Step* Take(const std::string& request);
    // The same for an announcement: only a deaf navigator does anything about it.
    const Step* TakeAnnouncement();

    // What was not as a strict script says, so far, and which of its steps were not used.
    std::vector<std::string> Complaints() const;

  private:
    struct Use {
        Step step;
        uint32_t seen = 0;  // requests that fitted
        uint32_t used = 0;
    };

    const Step* TakeStrictly(const std::string& request);
    std::string Unexpected(const std::string& request) const;

    std::string name_;
    std::vector<Use> steps_;
    size_t next_ = 0;  // in a strict script
    bool strict_ = false;
    std::vector<std::string> complaints_;
};

}  // namespace zelto::navigator

#endif
