// Real programs on a test's own device.

#ifndef ZELTO_TESTS_TOOLS_PROCESSES_H
#define ZELTO_TESTS_TOOLS_PROCESSES_H

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

#include "tests/support/temp_device.h"

namespace zelto::test {

using Words = std::vector<std::string>;

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& text);

// A program started with its standard output and errors in one pipe. Killed with the object.
class Program {
  public:
    explicit Program(const Words& command, const std::string& input = "/dev/null");
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // What was printed up to the first line that holds `words`, or all of it without one.
    std::string ReadUntil(const std::string& words);
    std::string ReadAll();
    void Kill();
    int Wait();  // the exit status, or minus the signal
    pid_t Pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
    int output_ = -1;
};

struct Outcome {
    int status;
    std::string output;
};

// Runs a program to its end.
Outcome RunProgram(const Words& command, const std::string& input = "/dev/null");

// Runs zeltoport with these arguments.
Outcome Port(Words arguments, const std::string& input = "/dev/null");

// A device with the navigator registered and running, which spares ZeltoNavPort_Init the launch.
class NavigatorTest {
  public:
    explicit NavigatorTest(const Words& options = {});

    // Starts another one, after the first has gone.
    void Restart(const Words& options);
    std::string Journal() const { return device.Path() + "/journal"; }

    TempDevice device;
    std::unique_ptr<Program> navigator;
};

}  // namespace zelto::test

#endif
