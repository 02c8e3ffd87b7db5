// What a power cut would leave of the files that a traced process writes.

#ifndef ZELTO_TESTS_SOAK_DISK_MODEL_H
#define ZELTO_TESTS_SOAK_DISK_MODEL_H

#include <set>
#include <string>
#include <sys/types.h>

#include "tests/soak/tracer.h"

namespace zelto::soak {

// Everything is on the disk at first. From then on, of a file the bytes are there once it was
// synced after its last write, and a name once its folder was synced after it was made; one that
// took another's place was there before. A name that was removed is gone at once.
class DiskModel {
  public:
    void Before(const TracedCall& call);
    void After(const TracedCall& call, int64_t result);

    // Whether the file would be there, with the bytes that it has now.
    bool Keeps(const std::string& path) const;

  private:
    void Wrote(const TracedCall& call, uint64_t descriptor);
    void Synced(const TracedCall& call);

    std::set<ino_t> unsynced_files_;
    std::set<std::string> unsynced_names_;
    bool target_existed_ = false;  // of the call that is being made
};

}  // namespace zelto::soak

#endif
