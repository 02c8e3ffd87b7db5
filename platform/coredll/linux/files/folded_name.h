// Names without regard to case, as the device compares them: only where nothing of the exact name
// is there, so that an exact name wins and costs nothing more.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_FILES_FOLDED_NAME_H
#define ZELTO_PLATFORM_COREDLL_LINUX_FILES_FOLDED_NAME_H

#include <cerrno>
#include <string>
#include <string_view>

namespace zelto::coredll {

// The name in the form in which names that differ in case are the same (unicode.h says which).
std::u16string FoldName(std::u16string_view name);

// Replaces each part of a path that is not there by the name that differs from it in case only; of
// several, by the first in byte order. True when that made it another path, of which the last part
// may still be missing. Leaves errno alone.
bool FindFolded(std::string& path);

// Calls a function of the host (below 0: failed) with the path; where nothing is there, once more
// with the folded one, which the path then is.
template <class Call>
auto WithFolded(std::string& path, Call call) {
    auto result = call(path.c_str());
    if (result < 0 && errno == ENOENT && FindFolded(path))
        result = call(path.c_str());
    return result;
}

}  // namespace zelto::coredll

#endif
