#include "tools/zeltoport/session.h"

#include <cstdio>
#include <fmt/core.h>

#include "platform/coredll/linux/device_admin.h"

namespace zelto::tools {

namespace {

constexpr int kSchema = 1;

// What cannot be written shows in the stream's state, which Close looks at.
void Print(std::FILE* stream, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
}

}  // namespace

void Session::PrintJson(nlohmann::json object) {
    object["schema"] = kSchema;
    object["command"] = command_;
    object["status"] = static_cast<int>(status_);
    // Names and texts of other programs need not be UTF-8; the output always is.
    Print(stdout, object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void Session::Report(ExitStatus status, const std::string& words, const nlohmann::json& object) {
    status_ = status;
    if (json_)
        PrintJson(object);
    else
        Print(status == kExitSuccess ? stdout : stderr, words);
}

void Session::ReportCall(ExitStatus status, const std::string& line, const std::string& data,
                         const nlohmann::json& object) {
    status_ = status;
    if (json_) {
        PrintJson(object);
        return;
    }
    if (!data.empty())
        Print(stdout, data);
    std::fflush(stdout);  // before the line, where both go to one place
    if (!quiet_ || status != kExitSuccess)
        Print(stderr, line);
}

void Session::ReportText(const std::string& text, const nlohmann::json& object) {
    status_ = kExitSuccess;
    if (json_)
        PrintJson(object);
    else
        std::fwrite(text.data(), 1, text.size(), stdout);
}

void Session::ReportError(const CommandError& error) {
    Report(error.status(), std::string("zeltoport: ") + error.what(), {{"error", error.what()}});
}

int Session::Close() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status_;
    fmt::print(stderr, "zeltoport: standard output cannot be written\n");
    return status_ == kExitSuccess ? kExitFailure : status_;
}

void RequireDevice() {
    std::string why;
    if (!coredll::CheckDevice(&why))
        throw CommandError(why, kExitDevice);
}

void RequireWorkingDevice() {
    const std::string problem = coredll::DeviceProblem();
    if (!problem.empty())
        throw CommandError(problem, kExitDevice);
}

}  // namespace zelto::tools
