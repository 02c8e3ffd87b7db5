// The known word that somebody may have meant.

#ifndef ZELTO_TOOLS_TEXT_NEAREST_H
#define ZELTO_TOOLS_TEXT_NEAREST_H

#include <string>
#include <string_view>
#include <vector>

namespace zelto::tools {

// The one that fewest letters have to be inserted, dropped or changed for, a word's beginning
// standing for the whole word; "" of none.
std::string Nearest(std::string_view word, const std::vector<std::string>& known);

}  // namespace zelto::tools

#endif
