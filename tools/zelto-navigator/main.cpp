// zelto-navigator: a navigator to develop and test clients against.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <fmt/core.h>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "platform/coredll/linux/device_admin.h"
#include "tools/wire/calls.h"
#include "tools/wire/results.h"
#include "tools/zelto-navigator/page_server.h"
#include "tools/zelto-navigator/queries.h"
#include "tools/zelto-navigator/refusal.h"
#include "tools/zelto-navigator/requests.h"
#include "tools/zelto-navigator/service.h"

namespace {

using namespace zelto::navigator;

constexpr int kBadCommandLine = 2;  // exit status

constexpr const char* kSummary =
    "A stand-in navigator: it opens the window that clients of the library look for, answers\n"
    "their requests from a small model, and prints one line a request. It has no map and\n"
    "computes no route. It ends when a client closes it, or with its window.";

std::string Manual() {
    std::string text = "Requests (\"<letter>|<arguments>\"):\n";
    for (const Request& request : Requests()) {
        const zelto::wire::Call& call = *zelto::wire::FindCall(request.letter);
        text += fmt::format("  {}|{:<53} {}\n", call.letter, call.arguments, call.help);
    }
    text += "\nQueries of request F:\n";
    for (const Query& query : Queries())
        text += fmt::format("  {:<15} {}\n", query.name, query.help);
    text += "\nReplies: \"A|...\" done, \"G|<text>\" an answer, \"B|<number>\" refused:\n";
    for (int refusal = kFirstRefusal; refusal <= kLastRefusal; ++refusal)
        text += fmt::format("  {} {}\n", refusal, zelto::wire::FindResult(refusal)->meaning);
    text += "\nThe device is the directory named by ZELTO_DEVICE, else the user's default;\n";
    text += "\"zeltoport device init\" makes it. Started by a client, or with its output sent to\n";
    text += "/dev/null, it appends what it prints to navigator.log there.\n";
    text += "Exit status: 0 closed, 1 no device, no window, no journal or no port for the view,\n";
    text += "2 no such option, value or script, 3 requests that a strict script did not expect,\n";
    text += "or unused steps of it.";
    return text;
}

void AddFaultOptions(CLI::App& app, Faults& faults) {
    const auto group = std::string("Faults, for testing clients");
    app.add_option("--reply", faults.reply, "Send TEXT in the place of every reply")
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--delay-ms", faults.delay, "Wait so long before each reply")
        ->type_name("MS")
        ->group(group);
    app.add_flag("--silent", faults.silent, "Carry requests out, but never reply")->group(group);
    app.add_option("--fault-for", faults.letters, "Only for these request letters")
        ->type_name("LETTERS")
        ->group(group);
}

// The whole text of a port's number; "", which the option alone gives, and 0 stand for a free one.
std::string RefusePort(const std::string& text) {
    unsigned port = 0;
    return text.empty() || (CLI::detail::lexical_cast(text, port) && port <= 65535)
               ? ""
               : "a port is a number from 0 to 65535";
}

CLI::Option* AddViewOption(CLI::App& app) {
    return app
        .add_option("--view",
                    "Serve a page for a browser on this machine, live, on a port, or on one that "
                    "is free; the line \"view\" tells its link")
        ->type_name("[PORT]")
        ->expected(0, 1)
        ->check(RefusePort)
        ->envname("ZELTO_NAVIGATOR_VIEW");
}

// What a client starts has nobody to print to: its lines are kept in the device.
void KeepLog() {
    for (std::FILE* stream : {stdout, stderr}) {
        if (zelto::coredll::IsNowhere(stream))
            zelto::coredll::AppendToDeviceFile(stream, "navigator.log");
    }
}

// False, with its fault in words, for a file that is no script.
bool ReadScript(const std::string& path, Script& script) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    if (!file) {
        fmt::print(stderr, "zelto-navigator: {} cannot be read\n", path);
        return false;
    }
    try {
        script = Script(text.str(), path);
    } catch (const ScriptError& error) {
        fmt::print(stderr, "zelto-navigator: {}\n", error.what());
        return false;
    }
    return true;
}

// Null where nobody wants to look on. Throws std::runtime_error.
std::unique_ptr<View> MakeView(const CLI::Option& wanted) {
    if (wanted.empty())
        return nullptr;
    return MakePageServer(std::atoi(wanted.as<std::string>().c_str()));
}

int Serve(const ServiceOptions& options, const std::string& journal_path, View* view) {
    KeepLog();
    const std::string why = zelto::coredll::DeviceProblem();
    if (!why.empty()) {
        fmt::print(stderr, "zelto-navigator: {}\n", why);
        return 1;
    }
    Journal journal;
    if (!journal_path.empty() && !journal.Open(journal_path)) {
        fmt::print(stderr, "zelto-navigator: {} cannot be opened for writing\n", journal_path);
        return 1;
    }
    return Service(options, journal, view).Run();
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{kSummary};
    ServiceOptions options;
    std::string journal_path;
    std::string script_path;
    app.footer(Manual);
    app.set_version_flag("--version", "zelto-navigator " ZELTO_VERSION);
    app.add_flag("--packet-files", options.packet_files,
                 "Also take requests by packet file, in this program's folder");
    app.add_option("--journal", journal_path,
                   "Append one JSON object a request: time, generation, bytes, reply, microseconds")
        ->type_name("FILE")
        ->envname("ZELTO_NAVIGATOR_JOURNAL");
    AddFaultOptions(app, options.faults);
    const CLI::Option* view = AddViewOption(app);
    app.add_option("--script", script_path, "Answer as a script says (docs/scripts.md)")
        ->type_name("FILE");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kBadCommandLine;  // "--help" is one without error
    }
    if (!script_path.empty() && !ReadScript(script_path, options.script))
        return kBadCommandLine;
    try {
        return Serve(options, journal_path, MakeView(*view).get());
    } catch (const std::runtime_error& error) {
        fmt::print(stderr, "zelto-navigator: {}\n", error.what());
        return 1;
    }
}
