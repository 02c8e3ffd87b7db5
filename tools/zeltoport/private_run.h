// A command on a device of its own, with a navigator that is ready, or as faulty as is asked for.

#ifndef ZELTO_TOOLS_ZELTOPORT_PRIVATE_RUN_H
#define ZELTO_TOOLS_ZELTOPORT_PRIVATE_RUN_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/coredll/linux/device_admin.h"
#include "tools/wire/recording.h"

namespace zelto::tools {

// What the navigator is: as its script says, or no navigator at all.
struct NavigatorPlan {
    std::string script;       // text; "" answers everything as always
    std::string script_name;  // for its words
    bool absent = false;      // registered, and not there
    bool ends_at_start = false;
};

// The words of a fault's name, "late", "refuse=7", "absent", and what requests meet it: letters, or
// a call with arguments. Throws CommandError for names that are none.
struct FaultChoice {
    std::string name;
    std::string concerned;               // "" all; letters, or the name of a call
    std::vector<std::string> arguments;  // "latitude=43"; of a call
    std::optional<uint32_t> skip;
    std::optional<uint32_t> times;
};
NavigatorPlan PlanOf(const FaultChoice& fault);

// Lets the waits of all that is started from now on be divided; 1 to kMaxTimeScale.
void SetTimeScale(int scale);

// A folder with a device in it, in use as long as the object lives; both then go, and the device
// before is in use again. One at a time: it changes the process's environment.
class PrivateDevice {
  public:
    // Throws CommandError.
    PrivateDevice();
    ~PrivateDevice();
    PrivateDevice(const PrivateDevice&) = delete;
    PrivateDevice& operator=(const PrivateDevice&) = delete;

    const std::filesystem::path& Folder() const { return folder_; }
    void Keep() { keep_ = true; }

  private:
    std::filesystem::path folder_;
    std::optional<std::string> before_;
    bool keep_ = false;
};

// Thread safety: none; used by one thread.
class PrivateRun {
  public:
    // Makes the device and starts the navigator, which ends with the object as the command does.
    // Throws CommandError.
    explicit PrivateRun(const NavigatorPlan& plan);
    // Runs the command to its end, or ends it after so many milliseconds (0: no limit), or when
    // this process is interrupted: then nothing. Throws CommandError when it cannot be started.
    std::optional<coredll::ProgramEnd> Run(const std::vector<std::string>& command, uint32_t limit,
                                           bool quiet);

    // Waits a moment for what the command left to go, and says what stays, a line each.
    std::vector<std::string> Leftovers();

    // Ends the navigator; what its strict script complains of.
    std::vector<std::string> EndNavigator();

    wire::Recording Recording() const;
    // The lines that the navigator has printed.
    std::vector<std::string> Log() const;

    PrivateDevice& Device() { return device_; }

  private:
    void StartNavigator(const NavigatorPlan& plan);
    void RegisterBroken(bool absent);
    std::string ScriptFile(const NavigatorPlan& plan) const;

    PrivateDevice device_;  // goes last
    coredll::ChildProgram navigator_;
    coredll::ChildProgram command_;
};

}  // namespace zelto::tools

#endif
