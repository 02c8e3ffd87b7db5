// CRC-32 stamping of files: the CRC of ISO 3309 (zip, PNG) of a range of bytes, reported, appended
// as a trailer of four bytes (little-endian), or checked against one.

#ifndef ZELTO_COMMON_FILES_FILE_CRC32_H
#define ZELTO_COMMON_FILES_FILE_CRC32_H

#include <atomic>
#include <cstdint>

#include "common/text/dstring.h"

namespace zelto {

// Follows the progress of FileCrc32: derive from it. The order of the operations is fixed; the
// first five belong to progress displays and are not called here.
// Thread safety: `done` may be read from any thread; all else belongs to the thread that calls
// FileCrc32.
class TCrcObserver {
  public:
    virtual void Reserved1() {}
    virtual void Reserved2() {}
    virtual void Reserved3() {}
    virtual void Reserved4() {}
    virtual void Reserved5() {}
    // The bytes that are going to be read, modulo 2^32. Called once.
    virtual void SetTotal(uint32_t total) = 0;

    std::atomic<uint32_t> done = 0;  // grows by the bytes read, modulo 2^32; never set back
    DString title;                   // what is being done; emptied by a run that reads
    DString subject;                 // the file's path; likewise

  protected:
    ~TCrcObserver() = default;
};

enum : int32_t {
    kCrcGenerate = 0,  // any value but the other two
    kCrcAdd = 1,       // then write the CRC behind the range; a missing file is created
    kCrcCheck = 2,  // then compare it with the four bytes at `end` - 4, which are not in the range
};

// Computes the CRC of the bytes from `start` to before `end`; a negative end is the end of the
// file. True: the whole range was read and, checking, the CRC is the trailer's. In add mode the
// trailer is written even when reading failed, and a failure to write it is not told.
//
// `result` is always written: 0xFFFFFFFF when the file cannot be opened, or with a negative start
// or an end before the start; otherwise the CRC of what was read. The observer may be null. The
// time taken goes to the debug trace (debug_trace.h). Memory does not depend on the file's size.
// Thread safety: any thread.
bool FileCrc32(const DString& path, uint32_t& result, int32_t mode,
               TCrcObserver* observer = nullptr, int64_t start = 0, int64_t end = -1);

}  // namespace zelto

#endif
