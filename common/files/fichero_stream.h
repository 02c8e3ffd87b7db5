// The byte streams under a record file: one over the run-time library's FILE, one over a file
// handle of the system. Names are 8-bit text in their own codepage, written with backslashes.

#ifndef ZELTO_COMMON_FILES_FICHERO_STREAM_H
#define ZELTO_COMMON_FILES_FICHERO_STREAM_H

#include <cstdint>
#include <cstdio>
#include <memory>

#include "common/text/dstring.h"
#include "platform/coredll/coredll.h"

namespace zelto {

// What a record file asks of its stream. The order of the operations is fixed.
//
// There is no virtual destructor: whoever made a stream deletes it as what it is, and Close
// releases all that it holds, so close it first. Positions are bytes from the start of the file;
// a size is 0 or more, and a negative one or a null buffer with a size fails. On a closed stream
// transfers fail and positions are 0.
// Thread safety: none; a stream is used by one thread at a time.
class TFicheroStream {
  public:
    TFicheroStream(const TFicheroStream&) = delete;
    TFicheroStream& operator=(const TFicheroStream&) = delete;

    // Of the mode word (fichero_mode.h) the bits read, write, append and update count. A file that
    // cannot be opened replaces the error text, which may be null, by "Error Opening File.".
    virtual bool Open(const DString& name, const uint32_t* mode, DString* error) = 0;
    virtual bool Close(DString* error) = 0;  // always true
    virtual bool IsOpen() = 0;
    // True only when exactly `size` bytes were moved; fewer may have been.
    virtual bool Read(void* buffer, int32_t size) = 0;
    virtual bool Write(const void* buffer, int32_t size) = 0;
    virtual void SetPos(int64_t position) = 0;  // may be beyond the end; a negative one is ignored
    virtual bool IsEof() = 0;
    virtual int64_t GetPos() = 0;
    virtual int64_t GetLength() = 0;          // leaves the position where it is
    virtual int32_t Flush() { return 0; }     // 0 on success
    virtual int32_t Reserved() { return 0; }  // for later streams

  protected:
    TFicheroStream() = default;
    ~TFicheroStream() = default;
};

// Over a FILE. Both directions may be mixed freely in update mode. What was told written may only
// fail to be written later: Flush tells so, for anything since the opening; Close does not.
class TFicheroFILE final : public TFicheroStream {
  public:
    // Throws the text "Error en TFicheroITV::Abre" (a const char*) unless exactly one of read,
    // write and append is set.
    bool Open(const DString& name, const uint32_t* mode, DString* error) override;
    bool Close(DString* error) override;
    bool IsOpen() override { return file_ != nullptr; }
    bool Read(void* buffer, int32_t size) override;
    bool Write(const void* buffer, int32_t size) override;
    void SetPos(int64_t position) override;
    bool IsEof() override;  // only after a read that met the end
    int64_t GetPos() override;
    int64_t GetLength() override;
    int32_t Flush() override;

  private:
    enum class Direction : uint8_t { kNone, kRead, kWrite };
    void Turn(Direction direction);
    bool PassOn();
    bool Seek(int64_t distance, int origin);

    static constexpr size_t kWaitingRoom = 4096;

    FILE* file_ = nullptr;
    bool writable_ = false;
    bool was_lost_ = false;              // something that was told written
    Direction last_ = Direction::kNone;  // stdio wants a seek between the two
    // Fields are written in pieces of a few bytes, for which fwrite costs too much.
    size_t waiting_size_ = 0;
    char waiting_[kWaitingRoom];
};

// Over a file handle. Opened for reading only, it shares the file with other readers; otherwise
// with nobody. Append starts at the beginning of the file. Append with update asks for creation
// value 6, which the system may refuse. Opened for reading only, it reads ahead, the more the
// longer it is read in order, so that a field is not a call of the system.
class TFicheroHandle final : public TFicheroStream {
  public:
    // False, and no error text, unless exactly one of read, write and append is set.
    bool Open(const DString& name, const uint32_t* mode, DString* error) override;
    bool Close(DString* error) override;
    bool IsOpen() override { return handle_ != nullptr; }
    bool Read(void* buffer, int32_t size) override;
    bool Write(const void* buffer, int32_t size) override;
    void SetPos(int64_t position) override;
    bool IsEof() override;  // at or beyond the length that the file had when it was opened
    int64_t GetPos() override;
    int64_t GetLength() override;  // -1 on a closed stream

  private:
    int32_t ReadNow(void* buffer, int32_t size);
    int32_t TakeAhead(char* buffer, int32_t size);
    bool FetchAhead();
    void DropAhead();

    static constexpr int32_t kFirstAhead = 4096;
    static constexpr int32_t kMostAhead = 64 * 1024;

    HANDLE handle_ = nullptr;
    bool reads_only_ = false;
    // Only of a stream that reads alone, whose position is its own affair: ahead_[at_ .. size_) is
    // what comes at position_.
    int64_t position_ = 0;
    std::unique_ptr<char[]> ahead_;
    int32_t ahead_room_ = 0;
    int32_t ahead_at_ = 0;
    int32_t ahead_size_ = 0;
    // Taken once, at opening. 64 bits, since 32 would not do for a file beyond 2 GiB.
    int64_t length_ = 0;
};

}  // namespace zelto

#endif
