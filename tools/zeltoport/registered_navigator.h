// The registry value that tells the library which program the navigator is.

#ifndef ZELTO_TOOLS_ZELTOPORT_REGISTERED_NAVIGATOR_H
#define ZELTO_TOOLS_ZELTOPORT_REGISTERED_NAVIGATOR_H

#include <string>

namespace zelto::tools {

// The longest path that the library takes, in UTF-16 units.
inline constexpr size_t kMaxNavigatorPath = 99;

// The host path of the zelto-navigator beside this program; "" when there is none.
std::string NavigatorBeside();

// Whether the host path names a file that can be run.
bool IsProgram(const std::string& path);

// Registers a program by its host path, relative ones taken from the current folder, and returns
// the full path. Throws CommandError: not a program, not expressible on the device, too long, or
// the registry cannot be written.
std::string RegisterNavigator(const std::string& path);

// The registered program as it stands in the registry; "" when there is none.
std::string RegisteredNavigator();

}  // namespace zelto::tools

#endif
