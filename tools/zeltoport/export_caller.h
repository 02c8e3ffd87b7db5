// Calling the library's exports from a subcommand: connecting first, reporting afterwards.

#ifndef ZELTO_TOOLS_ZELTOPORT_EXPORT_CALLER_H
#define ZELTO_TOOLS_ZELTOPORT_EXPORT_CALLER_H

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/zeltoport/session.h"
#include "tools/zeltoport/turn.h"

namespace zelto::tools {

// What a subcommand does before its call; each process starts without a connection.
enum class Connect {
    kInit,  // ZeltoNavPort_Init: starts the navigator if need be
    kFind,  // ZeltoNavPort_IsOpen: the navigator must be running
    kNone,
};

// Thread safety: none; used by one thread.
class ExportCaller {
  public:
    explicit ExportCaller(Session& session) : session_(session) {}

    // The user's choice, --connect: "init", "find", "none", or "" for what the subcommand does.
    std::string& ConnectChoice() { return choice_; }
    // Seconds to wait for a turn on the device, --wait.
    double& Patience() { return patience_; }

    // Connects and calls; the result is reported under the export's name.
    void Call(const std::string& name, const std::function<int32_t()>& call,
              Connect usual = Connect::kInit);

    // The two halves, for a subcommand with more to say. Prepare takes the turn, which lasts as
    // long as this object; it is false when connecting failed, which it has then reported. Finish
    // adds `data` (may be empty) for standard output and the members of `details`.
    bool Prepare(Connect usual = Connect::kInit);
    void Finish(const std::string& name, int32_t result, const std::string& data = "",
                const nlohmann::json& details = nlohmann::json::object());

    // Between two calls of a long run: gives waiting runs a chance, now and then.
    void LetOthersIn();

    Session& session() { return session_; }

  private:
    Connect Chosen(Connect usual) const;

    Session& session_;
    std::string choice_;
    double patience_ = 60;
    std::optional<Turn> turn_;
};

// A command-line text as the wide exports take it. Throws CommandError where it is not UTF-8.
std::u16string WideArgument(const std::string& text);

}  // namespace zelto::tools

#endif
