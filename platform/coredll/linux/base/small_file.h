// Small files of the device, read at once and replaced at once.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_SMALL_FILE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_SMALL_FILE_H

#include <string>
#include <string_view>
#include <sys/stat.h>

#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {

// Opens an ordinary file of an open folder for reading, and says what it is at that moment; links
// are not followed. Result: 0 or an errno value; EACCES for a file of another kind.
int OpenSmallFile(const UniqueFd& folder, const char* name, UniqueFd& file, struct stat& status);

// Reads what an open file holds from its position on. Result: 0 or an errno value; EFBIG for more
// than the limit.
int ReadSmallFile(const UniqueFd& file, size_t limit, std::string& text);

// Puts the text in the file's place, whole or not at all, also when the host fails in between.
// Result: 0 or an errno value, the file being as before. The caller holds the file's lock.
int ReplaceSmallFile(const UniqueFd& folder, const char* name, std::string_view text);

// The right to change a file, among all processes and threads, while the object lives. It is held
// on a lock file next to it, and ends with its process. Waits at most `patience` ns for its
// turn, since its holder may be stopped; then, as at any failure, it is not held and errno tells,
// EBUSY for a turn that did not come.
constexpr int64_t kFileLockPatience = 2'000'000'000;  // ns
class FileLock {
  public:
    FileLock(const UniqueFd& folder, const char* name, int64_t patience = kFileLockPatience);
    bool IsHeld() const { return file_.IsOpen(); }

  private:
    UniqueFd file_;
};

}  // namespace zelto::coredll

#endif
