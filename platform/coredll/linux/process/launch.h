// Starting a program that outlives its starter.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_PROCESS_LAUNCH_H
#define ZELTO_PLATFORM_COREDLL_LINUX_PROCESS_LAUNCH_H

#include <string>
#include <vector>

namespace zelto::coredll {

// Starts the program in a session of its own: nobody's child to wait for, no file of ours (its
// standard input is empty, its output and errors go nowhere), no signal blocked or ignored, the
// root as its folder, our environment. Returns when the program runs: 0, or the errno value that
// kept it from running. Safe from any thread.
int StartDetached(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace zelto::coredll

#endif
