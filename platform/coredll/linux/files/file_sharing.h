// Share modes, in and between processes.
//
// Every open of a regular file claims its use of it with shared locks on marker bytes far behind
// any data. The locks belong to the open file description: they hold against opens of the same
// process too, and the kernel drops them with the last descriptor, however a process ended. The
// data itself is never locked, and programs that know nothing of this are not disturbed. Where a
// file system has no locks, everything is shared.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_FILES_FILE_SHARING_H
#define ZELTO_PLATFORM_COREDLL_LINUX_FILES_FILE_SHARING_H

namespace zelto::coredll {

struct FileUse {
    bool reads;
    bool writes;
    bool denies_read;  // to all others, while it is open
    bool denies_write;
};

// Held while a file's claims are made or looked at, so that nobody meets a claim which is going to
// be withdrawn. Best effort: a lock that some other program keeps on the file is waited for two
// seconds, then ignored.
class SharingGate {
  public:
    explicit SharingGate(int fd);
    ~SharingGate();
    SharingGate(const SharingGate&) = delete;
    SharingGate& operator=(const SharingGate&) = delete;

  private:
    int fd_;  // -1 when the gate could not be had
};

// Claims the use, for as long as the file stays open. The descriptor must be open for reading.
// False when another open is in the way: then nothing is claimed. Call it in the gate.
bool ClaimUse(int fd, const FileUse& use);

// Whether any other open claims the file. Call it in the gate.
bool IsInUse(int fd);

}  // namespace zelto::coredll

#endif
