// The view as a page in a browser on this machine.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_PAGE_SERVER_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_PAGE_SERVER_H

#include <memory>

#include "tools/zelto-navigator/view.h"

namespace zelto::navigator {

// Serves on the loopback interface alone. Whoever opens the page needs the token that is in its
// link; requests without it, for another host or from another site's page get 403. Pages that are
// open are told at once of what goes on. A browser that goes away is no fault. The view is opened
// once and closed with the object.
// `port` 0: one that is free. Thread safety: none; used by one thread.
std::unique_ptr<View> MakePageServer(int port);

}  // namespace zelto::navigator

#endif
