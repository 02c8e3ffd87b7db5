// What the page sends of its user's doings, and the faults as it shows them.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_PAGE_ACTS_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_PAGE_ACTS_H

#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "tools/zelto-navigator/view.h"

namespace zelto::navigator {

// One of the objects
//   {"act":"answer", "box":3, "button":"Yes"}
//   {"act":"move", "latitude":42.8, "longitude":-2.6, "speed":13.9, "course":90}   m/s, degrees
//   {"act":"faults", "faults":{...}}                                       as FaultsInJson says
// or nothing, with the reason, for any other text.
std::optional<Act> ReadAct(const std::string& text, std::string& why);

// {"silent":false, "delay":0, "reply":null, "letters":""}; the delay in ms.
nlohmann::json FaultsInJson(const Faults& faults);

}  // namespace zelto::navigator

#endif
