// Stands in for page_server.cpp in a build without cpp-httplib.

#include <stdexcept>

#include "tools/zelto-navigator/page_server.h"

namespace zelto::navigator {

std::unique_ptr<View> MakePageServer(int) {
    throw std::runtime_error(
        "this zelto-navigator was built without --view: it wants cpp-httplib "
        "(package libcpp-httplib-dev) when it is built");
}

}  // namespace zelto::navigator
