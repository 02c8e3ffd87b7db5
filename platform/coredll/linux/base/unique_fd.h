// A file descriptor or an open folder with an owner.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_UNIQUE_FD_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_UNIQUE_FD_H

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace zelto::coredll {

// Closes what it holds; -1 is nothing.
// Thread safety: none; used by one thread at a time.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.Release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        Reset(other.Release());
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { Reset(-1); }

    int Get() const { return fd_; }
    bool IsOpen() const { return fd_ >= 0; }
    int Release() { return std::exchange(fd_, -1); }
    // Leaves errno alone, so that the reason of a failure outlives the clean-up.
    void Reset(int fd) {
        const int saved = errno;
        if (fd_ >= 0)
            close(fd_);
        fd_ = fd;
        errno = saved;
    }

  private:
    int fd_ = -1;
};

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using UniqueFolder = std::unique_ptr<DIR, CloseFolder>;

// Repeats a system call that a signal interrupted.
template <class Call>
auto RetryInterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

}  // namespace zelto::coredll

#endif
