// The page that shows a recording: one HTML file with everything in it, which loads nothing.
//
// Its sources lie in this folder and are put into the program when it is built.

#ifndef ZELTO_TOOLS_PAGE_PAGE_H
#define ZELTO_TOOLS_PAGE_PAGE_H

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace zelto::tools {

// The page of a recording, as UTF-8. The object:
//   recorded   wall time of the moment 0, a text
//   device     the device's directory
//   lost       number of events that are no longer there
//   processes  [{pid, role: "client" or "navigator", program}]
//   exchanges  [{t, pid, export, letter, request, arguments, reply, result, meaning,
//              milliseconds, why, events: [{t, pid, what, detail}]}], by time; t in seconds
// Bytes that are not UTF-8 appear as U+FFFD.
std::string RenderPage(const nlohmann::json& recording);

}  // namespace zelto::tools

#endif
