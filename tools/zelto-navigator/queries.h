// The texts that can be asked for by name (request "F").

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_QUERIES_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_QUERIES_H

#include <span>
#include <string>
#include <string_view>

#include "tools/zelto-navigator/navigator.h"

namespace zelto::navigator {

struct Query {
    const char* name;
    const char* help;
    // The reply, kind included. `argument` is what follows the name and a blank.
    std::string (*answer)(const Navigator& navigator, std::string_view argument);
};

std::span<const Query> Queries();

// The reply to a query line: a name, or a name, a blank and an argument.
std::string AnswerQuery(const Navigator& navigator, std::string_view line);

}  // namespace zelto::navigator

#endif
