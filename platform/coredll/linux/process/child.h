// A program that runs under our eyes: its end is waited for, and it can be ended.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_PROCESS_CHILD_H
#define ZELTO_PLATFORM_COREDLL_LINUX_PROCESS_CHILD_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zelto::coredll {

// How a program ended.
struct ProgramEnd {
    bool by_signal = false;
    int number = 0;  // of the signal, or the exit status

    // As a shell reports it: 128 and the number for a signal.
    int ShellStatus() const { return by_signal ? 128 + number : number; }
};

// Thread safety: none; used by one thread.
class ChildProgram {
  public:
    enum class Output { kOurs, kNowhere };

    ChildProgram() = default;
    // Ends what still runs, at once.
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    // Starts a program, looked for along PATH where its name has no slash, in a process group of
    // its own or in ours, with our environment. With kNowhere its input is empty and its output is
    // dropped. Returns 0, or the errno value that kept it from running. Once an object.
    int Start(const std::vector<std::string>& command, Output output, bool own_group);

    // Waits for its end for at most so many milliseconds; nothing while it runs on.
    std::optional<ProgramEnd> Wait(uint32_t milliseconds);

    // Ends it, and all of its group where it has one of its own.
    void Kill();

  private:
    int process_ = 0;
    bool own_group_ = false;
    std::optional<ProgramEnd> end_;
};

}  // namespace zelto::coredll

#endif
