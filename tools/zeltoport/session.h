// One run of zeltoport: how a subcommand hands back its outcome.
//
// A subcommand lives in a file of its own and is declared in command.h. Its callback either calls
// Session::Report once or throws CommandError; it prints nothing else on standard output.

#ifndef ZELTO_TOOLS_ZELTOPORT_SESSION_H
#define ZELTO_TOOLS_ZELTOPORT_SESSION_H

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace zelto::tools {

enum ExitStatus : int {
    kExitSuccess = 0,
    kExitFailure = 1,      // the call was made and its result is not success
    kExitEnvironment = 2,  // the call could not be made: device, files, arguments
};

// Ends the subcommand. what() is one or more sentences for the user.
class CommandError : public std::runtime_error {
  public:
    explicit CommandError(const std::string& words, ExitStatus status = kExitEnvironment)
        : std::runtime_error(words), status_(status) {}
    ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

// Thread safety: none; used by one thread.
class Session {
  public:
    // The switch behind --json.
    bool& JsonSwitch() { return json_; }
    bool json() const { return json_; }

    // Prints the outcome: with --json `object` as one line on standard output, else `words` (a
    // line break is added) on standard output, or on standard error when `status` is not success.
    void Report(ExitStatus status, const std::string& words, const nlohmann::json& object);

    // The same for a run that came to nothing: {"error": words}.
    void ReportError(const CommandError& error);

    ExitStatus status() const { return status_; }

  private:
    bool json_ = false;
    ExitStatus status_ = kExitSuccess;
};

// Throws CommandError with the reason when the device directory cannot be used.
void RequireDevice();

// The same when its registry or its object store cannot be used; connects to the store.
void RequireWorkingDevice();

}  // namespace zelto::tools

#endif
