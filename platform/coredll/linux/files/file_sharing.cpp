#include "platform/coredll/linux/files/file_sharing.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/file.h>
#include <time.h>

namespace zelto::coredll {
namespace {

static_assert(sizeof(off_t) == 8, "files beyond 2 GiB need 64-bit offsets");

// The marker bytes. kOpen is claimed by every open, the others by those that do what they say.
constexpr off_t kMarkers = off_t{1} << 62;
enum Marker : uint8_t { kOpen, kReads, kWrites, kDeniesRead, kDeniesWrite, kMarkerCount };

constexpr int kGateTries = 4000;
constexpr timespec kGatePause = {0, 500'000};

struct flock MarkerLock(short type, int first, int count) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kMarkers + first;
    lock.l_len = count;
    return lock;
}

// False when another program has locked the whole file against everybody.
bool Claim(int fd, Marker marker) {
    const struct flock lock = MarkerLock(F_RDLCK, marker, 1);
    return fcntl(fd, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES);
}

bool IsClaimedByOthers(int fd, int first, int count) {
    struct flock lock = MarkerLock(F_WRLCK, first, count);
    return fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

}  // namespace

SharingGate::SharingGate(int fd) : fd_(-1) {
    for (int i = 0; i < kGateTries; ++i) {
        if (flock(fd, LOCK_EX | LOCK_NB) == 0) {
            fd_ = fd;
            return;
        }
        if (errno != EWOULDBLOCK && errno != EINTR)
            return;
        nanosleep(&kGatePause, nullptr);
    }
}

SharingGate::~SharingGate() {
    const int saved = errno;
    if (fd_ >= 0)
        flock(fd_, LOCK_UN);
    errno = saved;
}

bool ClaimUse(int fd, const FileUse& use) {
    struct Rule {
        bool applies;
        Marker mine;
        Marker opposite;
    };
    const Rule rules[] = {
        {use.reads, kReads, kDeniesRead},
        {use.writes, kWrites, kDeniesWrite},
        {use.denies_read, kDeniesRead, kReads},
        {use.denies_write, kDeniesWrite, kWrites},
    };
    bool claimed = Claim(fd, kOpen);
    for (const Rule& rule : rules) {
        if (rule.applies)
            claimed = claimed && Claim(fd, rule.mine) && !IsClaimedByOthers(fd, rule.opposite, 1);
    }
    if (!claimed) {
        const struct flock none = MarkerLock(F_UNLCK, kOpen, kMarkerCount);
        fcntl(fd, F_OFD_SETLK, &none);
    }
    return claimed;
}

bool IsInUse(int fd) {
    return IsClaimedByOthers(fd, kOpen, kMarkerCount);
}

}  // namespace zelto::coredll
