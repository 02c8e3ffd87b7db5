// How a command took the faults of its navigator, as lines, JSON, JUnit's XML and pages.

#ifndef ZELTO_TOOLS_ZELTOPORT_TORTURE_REPORT_H
#define ZELTO_TOOLS_ZELTOPORT_TORTURE_REPORT_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/wire/recording.h"

namespace zelto::tools {

enum class Outcome {
    kHandled,       // a call failed and the command did, or repeated it with success
    kWrongSuccess,  // a call failed, none made it good, and the exit status is 0
    kHang,
    kCrash,
    kNotReached,  // no request met the fault
};

// "handled", "wrong success", "hang", "crash", "not reached".
const char* NameOf(Outcome outcome);
std::optional<Outcome> OutcomeOf(const std::string& name);
std::string OutcomesInWords();

struct TortureVerdict {
    std::string fault;
    Outcome outcome = Outcome::kHandled;
    bool as_expected = true;
    int status = 0;  // of the command; -1 when it hung
    double seconds = 0;
    std::string why;   // the first failed call, explained; "" without one
    std::string kept;  // where the recording is, in words; "" when it was not kept
    wire::Recording recording;
};

std::string LineOf(const TortureVerdict& verdict);
nlohmann::json ToJson(const std::vector<TortureVerdict>& verdicts, int time_scale);

// Both throw CommandError when the files cannot be written; nothing half-written is left.
void WriteJunit(const std::vector<TortureVerdict>& verdicts, int time_scale,
                const std::string& path);
void WritePages(const std::vector<TortureVerdict>& verdicts, int time_scale,
                const std::string& folder);

}  // namespace zelto::tools

#endif
