// What a command line means that the parser refuses.

#ifndef ZELTO_TOOLS_ZELTOPORT_COMMAND_LINE_H
#define ZELTO_TOOLS_ZELTOPORT_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace zelto::tools {

// The words of the subcommand that the command line names, "waypoint add"; "" without one.
std::string SubcommandWords(CLI::App& app, const std::vector<std::string>& arguments);

// A sentence for the first word, of a subcommand or of an option, that is none, with the nearest
// known one; "" when all are known.
std::string UnknownWord(CLI::App& app, const std::vector<std::string>& arguments);

}  // namespace zelto::tools

#endif
