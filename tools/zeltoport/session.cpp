#include "tools/zeltoport/session.h"

#include <cstdio>
#include <fmt/core.h>

#include "platform/coredll/linux/device_admin.h"

namespace zelto::tools {

void Session::Report(ExitStatus status, const std::string& words, const nlohmann::json& object) {
    status_ = status;
    if (json_) {
        // Names and texts of other programs need not be UTF-8; the output always is.
        fmt::print("{}\n", object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
        return;
    }
    fmt::print(status == kExitSuccess ? stdout : stderr, "{}\n", words);
}

void Session::ReportError(const CommandError& error) {
    Report(error.status(), std::string("zeltoport: ") + error.what(), {{"error", error.what()}});
}

void RequireDevice() {
    std::string why;
    if (!coredll::CheckDevice(&why))
        throw CommandError(why);
}

void RequireWorkingDevice() {
    const std::string problem = coredll::DeviceProblem();
    if (!problem.empty())
        throw CommandError(problem);
}

}  // namespace zelto::tools
