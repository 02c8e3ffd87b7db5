// Where this process's standard streams go.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_CONSOLE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_CONSOLE_H

#include <cstdio>

namespace zelto::coredll {

// Whether the stream is shown to someone rather than kept in a file or piped on.
bool IsTerminal(std::FILE* stream);

// Whether what is written to the stream is for nobody, as in a program that another one started.
bool IsNowhere(std::FILE* stream);

}  // namespace zelto::coredll

#endif
