#include "platform/coredll/linux/files/folded_name.h"

#include <algorithm>
#include <sys/stat.h>

#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/base/unicode.h"
#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {
namespace {

bool IsThere(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

// The folder's first name, in byte order, that is this one but for its case; "" for none.
std::string FoldedIn(const std::string& folder, std::string_view name) {
    const std::u16string folded = FoldName(WideName(name));
    std::string first;
    const UniqueFolder entries(opendir(folder.c_str()));
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        if ((first.empty() || entry->d_name < first) && FoldName(WideName(entry->d_name)) == folded)
            first = entry->d_name;
    }
    return first;
}

}  // namespace

std::u16string FoldName(std::u16string_view name) {
    std::u16string folded(name);
    std::ranges::transform(folded, folded.begin(), FoldLetter);
    return folded;
}

bool FindFolded(std::string& path) {
    const int saved = errno;
    std::string found;
    for (size_t start = 0; start < path.size();) {
        const size_t end = std::min(path.find('/', start + 1), path.size());
        const std::string part = path.substr(start, end - start);  // with its slash in front
        std::string next = found + part;
        if (part != "/" && !IsThere(next)) {
            const std::string name = FoldedIn(found.empty() ? "/" : found, part.substr(1));
            if (!name.empty())
                next.replace(found.size() + 1, std::string::npos, name);
        }
        found = next;
        start = end;
    }
    errno = saved;
    const bool other = found != path;
    path = found;
    return other;
}

}  // namespace zelto::coredll
