#include "tests/tools/processes.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

namespace zelto::test {

std::string ReadWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void WriteWholeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

Program::Program(const Words& command, const std::string& input) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    pid_ = fork();
    if (pid_ == 0) {
        dup2(open(input.c_str(), O_RDONLY), STDIN_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
}

Program::~Program() {
    Kill();
    Wait();
    close(output_);
}

std::string Program::ReadUntil(const std::string& words) {
    std::string text;
    size_t line = 0;
    for (char byte = 0; read(output_, &byte, 1) == 1;) {
        text += byte;
        if (byte != '\n')
            continue;
        if (text.find(words, line) != std::string::npos)
            break;
        line = text.size();
    }
    return text;
}

std::string Program::ReadAll() {
    return ReadUntil("\n\n");  // a line holds one line break
}

void Program::Kill() {
    if (pid_ > 0)
        kill(pid_, SIGKILL);
}

int Program::Wait() {
    if (pid_ <= 0)
        return 0;
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

Outcome RunProgram(const Words& command, const std::string& input) {
    Program program(command, input);
    std::string output = program.ReadAll();
    return {program.Wait(), output};
}

Outcome Port(Words arguments, const std::string& input) {
    arguments.insert(arguments.begin(), ZELTO_PORT_PROGRAM);
    return RunProgram(arguments, input);
}

NavigatorTest::NavigatorTest(const Words& options) {
    if (const Outcome made = Port({"device", "init", "--navigator", "/bin/false"});
        made.status != 0)
        throw std::runtime_error(made.output);
    Restart(options);
}

void NavigatorTest::Restart(const Words& options) {
    navigator.reset();
    Words command = {ZELTO_NAVIGATOR_PROGRAM, "--journal", Journal()};
    command.insert(command.end(), options.begin(), options.end());
    navigator = std::make_unique<Program>(command);
    navigator->ReadUntil("ready");
}

}  // namespace zelto::test
