// Searching a folder.

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

#include "platform/coredll/api/files.h"
#include "platform/coredll/linux/base/handle_table.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/base/ticks.h"
#include "platform/coredll/linux/base/unique_fd.h"
#include "platform/coredll/linux/files/file_status.h"
#include "platform/coredll/linux/files/folded_name.h"

namespace zelto::coredll {
namespace {

// What a search handle's word points to.
struct Search {
    UniqueFolder folder;
    std::u16string pattern;  // folded
    std::string only;        // the one name that a pattern without * and ? stands for; "": none
};

// Linear but for backtracking to the last star, so no pattern takes exponential time. A ".*" at the
// end is also there where the name has no dot.
bool Matches(std::u16string_view pattern, std::u16string_view name) {
    size_t p = 0;
    size_t n = 0;
    size_t star = std::u16string_view::npos;
    size_t star_name = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            star_name = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != std::u16string_view::npos) {
            p = star + 1;
            n = ++star_name;
        } else {
            return false;
        }
    }
    p = std::min(pattern.find_first_not_of(u'*', p), pattern.size());
    return p == pattern.size() || pattern.substr(p) == u".*";
}

FILETIME ToFileTime(const statx_timestamp& time) {
    const int64_t ticks =
        TicksFromHost(std::max<int64_t>(time.tv_sec, -kSecondsTo1970), time.tv_nsec);
    return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}

void FillData(const struct statx& status, const std::string& host_name, std::u16string_view name,
              WIN32_FIND_DATAW& data) {
    data = {};
    data.dwFileAttributes = FileAttributes(status.stx_mode, host_name);
    if ((status.stx_mask & STATX_BTIME) != 0)
        data.ftCreationTime = ToFileTime(status.stx_btime);
    data.ftLastAccessTime = ToFileTime(status.stx_atime);
    data.ftLastWriteTime = ToFileTime(status.stx_mtime);
    if (!S_ISDIR(status.stx_mode)) {
        data.nFileSizeHigh = static_cast<DWORD>(status.stx_size >> 32);
        data.nFileSizeLow = static_cast<DWORD>(status.stx_size & 0xFFFFFFFF);
    }
    data.dwOID = static_cast<DWORD>(status.stx_ino & 0xFFFFFFFF);
    name.copy(data.cFileName, MAX_PATH - 1);
}

// What a link points to or, where that is gone, the link.
bool ReadStatus(DIR* folder, const char* name, struct statx& status) {
    constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
    const int fd = dirfd(folder);
    return statx(fd, name, 0, kWanted, &status) == 0 ||
           statx(fd, name, AT_SYMLINK_NOFOLLOW, kWanted, &status) == 0;
}

bool FindNext(Search& search, WIN32_FIND_DATAW& data) {
    for (;;) {
        const dirent* entry = readdir(search.folder.get());
        if (entry == nullptr)
            return false;
        const std::string host_name = entry->d_name;
        if (host_name == "." || host_name == "..")
            continue;
        const std::u16string name = WideName(host_name);
        const bool found = search.only.empty() ? Matches(search.pattern, FoldName(name))
                                               : search.only == host_name;
        struct statx status {};
        if (found && ReadStatus(search.folder.get(), host_name.c_str(), status)) {
            FillData(status, host_name, name, data);
            return true;
        }
    }
}

// An exact name is found alone, even if others differ from it in case only.
std::string OnlyName(const std::string& folder, std::u16string_view pattern) {
    std::string name;
    if (pattern.empty() || pattern.find_first_of(u"*?") != pattern.npos ||
        !NarrowName(pattern, name))
        return "";
    std::string path = folder + name;
    FindFolded(path);
    return path.substr(path.rfind('/') + 1);
}

DWORD OpenSearch(LPCWSTR text, Search& search) {
    std::string folder;
    const DWORD error = HostPattern(text, folder, search.pattern);
    if (error != ERROR_SUCCESS)
        return error;
    search.folder.reset(opendir(folder.c_str()));
    if (search.folder == nullptr && errno == ENOENT && FindFolded(folder))
        search.folder.reset(opendir(folder.c_str()));
    if (search.folder != nullptr) {
        search.only = OnlyName(folder, search.pattern);
        search.pattern = FoldName(search.pattern);
        return ERROR_SUCCESS;
    }
    return errno == ENOENT ? DWORD{ERROR_PATH_NOT_FOUND} : ErrorFromErrno(errno);
}

Search* SearchOf(uintptr_t word) {
    return reinterpret_cast<Search*>(word);
}

}  // namespace
}  // namespace zelto::coredll

using namespace zelto::coredll;

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) {
    if (data == nullptr)
        return FailHandle(ERROR_INVALID_PARAMETER);
    auto search = std::make_unique<Search>();
    const DWORD error = OpenSearch(pattern, *search);
    if (error != ERROR_SUCCESS)
        return FailHandle(error);
    if (!FindNext(*search, *data))
        return FailHandle(ERROR_FILE_NOT_FOUND);
    HANDLE handle = MakeHandle(HandleKind::kSearch, reinterpret_cast<uintptr_t>(search.get()));
    if (handle == nullptr)
        return FailHandle(ERROR_TOO_MANY_OPEN_FILES);
    (void)search.release();  // the handle's now
    return handle;
}

BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data) {
    uintptr_t word = 0;
    if (!LookUpHandle(search, HandleKind::kSearch, word))
        return Fail(ERROR_INVALID_HANDLE);
    if (data == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    return FindNext(*SearchOf(word), *data) ? TRUE : Fail(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE search) {
    uintptr_t word = 0;
    if (!TakeHandle(search, HandleKind::kSearch, word))
        return Fail(ERROR_INVALID_HANDLE);
    delete SearchOf(word);
    return TRUE;
}
