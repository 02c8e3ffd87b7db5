// Files that subcommands write for the user.

#ifndef ZELTO_TOOLS_ZELTOPORT_OUTPUT_FILE_H
#define ZELTO_TOOLS_ZELTOPORT_OUTPUT_FILE_H

#include <string>
#include <string_view>

namespace zelto::tools {

// The whole of a file; "-" is standard input. Throws CommandError when it cannot be read.
std::string ReadInput(const std::string& path);

// Writes a file whole or not at all: what stood there before stays until the new text is on disk.
// Throws CommandError (status 1) when it cannot be written.
void WriteOutput(const std::string& path, std::string_view text);

}  // namespace zelto::tools

#endif
