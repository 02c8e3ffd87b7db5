// One run of zeltoport: how a subcommand hands back its outcome.
//
// A subcommand lives in a file of its own and is declared in command.h. Its callback either reports
// once or throws CommandError; it prints nothing else on standard output, which carries data alone.

#ifndef ZELTO_TOOLS_ZELTOPORT_SESSION_H
#define ZELTO_TOOLS_ZELTOPORT_SESSION_H

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace zelto::tools {

enum ExitStatus : int {
    kExitSuccess = 0,
    kExitFailure = 1,      // refused, or another result that is no success; output not written
    kExitUsage = 2,        // the command line, or a file that it names
    kExitDevice = 3,       // the device, its registry or its store
    kExitNoNavigator = 4,  // none registered, none running, none to be started
    kExitTimeOut = 5,      // no reply in time
    kExitTransport = 6,    // the request or its reply could not be carried
    kExitNoTurn = 7,       // other runs held the device longer than --wait allows
};

// Ends the subcommand. what() is one or more sentences for the user.
class CommandError : public std::runtime_error {
  public:
    explicit CommandError(const std::string& words, ExitStatus status = kExitUsage)
        : std::runtime_error(words), status_(status) {}
    ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

// Thread safety: none; used by one thread.
class Session {
  public:
    // The switches behind --json and --quiet, and the words of the subcommand as --json shows them.
    bool& JsonSwitch() { return json_; }
    bool& QuietSwitch() { return quiet_; }
    std::string& CommandWords() { return command_; }

    // Prints the outcome. With --json: `object` as one line on standard output, with schema,
    // command and status. Else `words` (a line break is added) on standard output, or on standard
    // error when `status` is not success.
    void Report(ExitStatus status, const std::string& words, const nlohmann::json& object);

    // The same of a call: `data` (may be empty) is for standard output, `line` for standard error;
    // --quiet leaves the line of a success out.
    void ReportCall(ExitStatus status, const std::string& line, const std::string& data,
                    const nlohmann::json& object);

    // The same of a success whose words are a file's text: nothing is added to it.
    void ReportText(const std::string& text, const nlohmann::json& object);

    // The same for a run that came to nothing: {"error": words}.
    void ReportError(const CommandError& error);

    // Lets the run end with another program's exit status.
    void PassOn(int status) { status_ = static_cast<ExitStatus>(status); }

    // The exit status, once all output has been handed to the system; output that could not be
    // written is a failure.
    int Close();

  private:
    void PrintJson(nlohmann::json object);

    bool json_ = false;
    bool quiet_ = false;
    std::string command_;
    ExitStatus status_ = kExitSuccess;
};

// Throws CommandError with the reason when the device directory cannot be used.
void RequireDevice();

// The same when its registry or its object store cannot be used; connects to the store.
void RequireWorkingDevice();

}  // namespace zelto::tools

#endif
