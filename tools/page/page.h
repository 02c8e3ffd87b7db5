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
//   now        may be there: the navigator's state behind the last exchange, as it says itself:
//              {waypoints, route, destination, position, centre, track}; places are
//              {name, description, icon, latitude, longitude, altitude}
//   live       on the navigator's own page: {next: number of the exchange that comes next, state}
// Bytes that are not UTF-8 appear as U+FFFD.
std::string RenderPage(const nlohmann::json& recording);

}  // namespace zelto::tools

#endif
