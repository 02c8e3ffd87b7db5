// Record files: one file, opened by name and mode, read or written as a sequence of typed fields,
// either as text or as the raw bytes of their values. docs/record-files.md describes the formats.

#ifndef ZELTO_COMMON_FILES_FICHERO_ITV_H
#define ZELTO_COMMON_FILES_FICHERO_ITV_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "common/files/fichero_mode.h"
#include "common/files/fichero_stream.h"
#include "common/files/line_recoder.h"
#include "common/files/memory_buffer.h"
#include "common/files/put_back_text.h"
#include "common/files/text_window.h"
#include "common/text/codepage.h"
#include "common/text/dstring.h"
#include "common/text/token_scanner.h"
#include "common/time/date_time.h"

namespace zelto {

// How far a chunked transfer has come.
// Thread safety: `cancel` may be set from any thread; the rest belongs to the transferring thread.
struct TProgreso {
    int32_t reserved = 0;
    int32_t done = 0;                  // bytes
    int32_t total = 0;                 // bytes
    std::atomic<bool> cancel = false;  // looked at after each chunk
};

// Conventions:
//  1. bool results: true is success. An error text may be null; a text that begins with a blank is
//     appended to what it holds, any other replaces it. docs/record-files.md lists them.
//  2. Positions and lengths are bytes, relative to the data region where there is one.
//  3. A size below 0, or a null buffer with a size above 0, fails and does nothing.
//  4. Thrown values are plain texts (const char*).
// Thread safety: none; a container is used by one thread at a time.
class TFicheroITV {
  public:
    // Called with every buffer that Write gets, before the bytes go to the stream. A chunked write
    // is seen twice: whole, and chunk by chunk.
    using WriteObserver = void (*)(void* context, const void* buffer, int32_t size);

    TFicheroITV();
    TFicheroITV(const DString& name, uint32_t mode);  // throws "Error al abrir archivo"
    virtual ~TFicheroITV();                           // closes, or commits

    virtual int GetChar();  // one byte, 0 to 255; 0 also when there is none
    virtual void SetPos(int64_t position);
    virtual int64_t GetPos();     // 0 on a closed container
    virtual int64_t GetLength();  // 0 on a closed container
    virtual bool IsEof();         // true on a closed container
    // True: all of it was moved. With a progress record in chunks (below 1: 32,000 bytes), each
    // through this same operation without a record; false as well once cancel is found set.
    virtual bool Write(const void* buffer, int32_t size, TProgreso* progress = nullptr,
                       int32_t chunk = 0);
    virtual bool Read(void* buffer, int32_t size, TProgreso* progress = nullptr, int32_t chunk = 0);

    TFicheroITV(const TFicheroITV&) = delete;
    TFicheroITV& operator=(const TFicheroITV&) = delete;

    // Throws "Error en TFicheroITV::Abre" when not exactly one of read, write and append is set
    // and the stream is the stdio one; with the handle stream that is a plain false.
    bool Abre(const DString& name, uint32_t mode, DString* error = nullptr);

    // Closes the stream; on a closed container with a safe write pending, puts the temporary file
    // in the target's place. So a safe write takes two calls, the destructor being good for one.
    bool close(DString* error = nullptr);

    bool IsOpen() const;

    // Each field goes out as text and separator, or as raw bytes. A mode without FICH_TEXT and
    // FICH_BINARY writes nothing; with both, text is written. `long` is a field of the host's
    // width: files that move between hosts want the types of fixed width.
    TFicheroITV& operator<<(char value);
    TFicheroITV& operator<<(signed char value);
    TFicheroITV& operator<<(unsigned char value);
    TFicheroITV& operator<<(bool value);
    TFicheroITV& operator<<(short value);
    TFicheroITV& operator<<(unsigned short value);
    TFicheroITV& operator<<(int value);
    TFicheroITV& operator<<(unsigned int value);
    TFicheroITV& operator<<(long value);
    TFicheroITV& operator<<(unsigned long value);
    TFicheroITV& operator<<(long long value);
    TFicheroITV& operator<<(unsigned long long value);
    TFicheroITV& operator<<(float value);
    TFicheroITV& operator<<(double value);
    TFicheroITV& operator<<(const DDateTime& value);
    TFicheroITV& operator<<(const void* text) = delete;  // would be a bool; write texts by Write

    // What is not a number reads as far as it goes, or as 0; so does a text field at the end of
    // the input. With both modes a token is read, and then raw bytes over the same variable.
    TFicheroITV& operator>>(char& value);
    TFicheroITV& operator>>(signed char& value);
    TFicheroITV& operator>>(unsigned char& value);
    TFicheroITV& operator>>(bool& value);
    TFicheroITV& operator>>(short& value);
    TFicheroITV& operator>>(unsigned short& value);
    TFicheroITV& operator>>(int& value);
    TFicheroITV& operator>>(unsigned int& value);
    TFicheroITV& operator>>(long& value);
    TFicheroITV& operator>>(unsigned long& value);
    TFicheroITV& operator>>(long long& value);
    TFicheroITV& operator>>(unsigned long long& value);
    TFicheroITV& operator>>(float& value);
    TFicheroITV& operator>>(double& value);
    TFicheroITV& operator>>(DDateTime& value);

    // The next token of text: what stands before the next delimiter of the line. Throws
    // "Error en get_dato_texto" unless the container was opened for text reading.
    void get_dato_texto(DString& out);

    // The next line that is not blank, without its comment, cut to `limit` - 1 characters (20,000
    // when the limit is below 1), in the current codepage; "VOID" reads as an empty line. Empty at
    // the end of the input. Returns the line counter as it was before the line's end.
    int32_t ReadLine(DString& target, int32_t limit = 0);

    // Puts text in front of the input of the text readers; what is put back last is read first. A
    // NUL is nothing. Closing drops it.
    void PutBack(const DString& text);
    void PutBack(char character);

    void SetSeparator(char separator) { separator_ = separator; }   // 0: none. ' ' at first
    void SetPrecision(int32_t decimals) { precision_ = decimals; }  // 2 at first; below 0 is 1
    void SetDelimiters(const char* delimiters);                     // " \t\n" at first; null: none
    void SetWriteObserver(WriteObserver observer, void* context);   // null: none
    int32_t EncodingMark() const { return encoding_mark_; }  // -1, or 0 UTF-16, 65001 UTF-8, 1 none
    int32_t LeadingValue() const { return leading_value_; }
    int32_t LineCount() const { return line_count_; }  // line ends met; takes PutBack for news

    // For the package hook. The region starts `offset` bytes into the stream; both 0: none. It
    // does not move the position, and drops a memory buffer. A stream set here is not owned, and
    // is given back by TPackageHook::Close.
    void SetDataRegion(int64_t offset, int64_t length);
    void SetHookStream(TFicheroStream* stream);

  private:
    using StreamPointer = std::unique_ptr<TFicheroStream, void (*)(TFicheroStream*)>;
    enum class HookAnswer { kNone, kOpened, kStopped };

    // fichero_open.cpp
    HookAnswer AskHook(DString& working_name, DString& member, DString* error);
    bool MakeStream(DString* error);
    void MakeBackups() const;
    bool BeginSafeWrite(DString& working_name, DString* error);
    bool OpenStream(const DString& name, DString* error);
    bool LocateMember(const DString& package, const DString& member, DString* error);
    void BeginContents();
    bool InspectMark();
    void WriteMark();

    // fichero_close.cpp
    void Forget();
    bool Commit(DString* error);
    int32_t MakeRoom() const;

    // fichero_itv.cpp
    bool IsReading() const { return (mode_ & FICH_READ) != 0; }
    void MoveTo(int64_t position);
    void DropWindow();

    // fichero_fields.cpp
    void WriteField(const char* text, size_t size);
    template <class Value>
    TFicheroITV& PutInteger(Value value);
    template <class Value>
    TFicheroITV& PutDecimal(Value value);
    TFicheroITV& PutByte(unsigned char value);
    template <class Value>
    TFicheroITV& GetDecimal(Value& value);
    unsigned char GetByte(unsigned char value);

    // fichero_lines.cpp
    int32_t CollectLine(int32_t limit);
    void SkipWhite();
    bool CollectText(size_t kept);
    bool JoinText(size_t kept);
    void ShowCollected();
    bool EndText(std::string_view segment, size_t size);
    bool SkipComment();
    void CountEnd(char end);

    // fichero_tokens.cpp
    std::string_view NextToken();
    bool HoldsPlainLine() const;
    bool ReachToken();
    bool SkipToToken();
    bool HoldNextLine();
    std::string_view TakeToken();
    void TakeHeldLine();

    // fichero_integers.cpp
    inline uint64_t NextInteger();
    template <class Value>
    TFicheroITV& GetInteger(Value& value);
    uint64_t ReadInteger();
    inline bool TakeDecimal(uint64_t& value);

    // text_input.cpp
    std::string_view Segment();
    std::string_view NextSegment();
    void Take(size_t count);
    bool FillWindow();
    bool FetchAhead();
    std::string_view FetchBlock(size_t count);
    bool FetchOne();

    char separator_ = ' ';
    int32_t precision_ = 2;
    int32_t leading_value_ = 0;
    uint32_t mode_ = 0;
    int32_t encoding_mark_ = -1;
    WriteObserver write_observer_ = nullptr;
    void* observer_context_ = nullptr;
    ByteSet delimiters_{" \t\n"};
    PutBackText put_back_;
    int32_t line_count_ = 0;
    uint8_t package_flag_ = 0;
    StreamPointer stream_{nullptr, nullptr};
    char previous_ = 0;  // the last character that the line reader took
    bool temporary_pending_ = false;
    DString file_name_;
    int64_t data_offset_ = 0;
    int64_t data_length_ = 0;
    bool hook_owned_ = false;
    MemoryBuffer memory_;
    TextWindow window_;
    int64_t fetch_limit_ = 0;  // bytes beyond are fetched one by one
    bool char_was_read_ = true;
    std::string_view line_;           // the last line that was collected, wherever it lies;
    const char* readable_ = nullptr;  // bytes up to here may be read,
    std::string collected_;           // here, when it was in several segments;
    char line_end_ = 0;               // the CR or LF behind it, else 0
    bool line_was_recoded_ = false;
    bool held_is_plain_ = false;  // the held line's rest reads as it stands there,
    int32_t held_codepage_ = 0;   // while this is the current codepage
    LineRecoder recoder_;
};

// Characters at the front of the input; none only at its end.
inline std::string_view TFicheroITV::Segment() {
    return put_back_.IsEmpty() && !window_.IsEmpty() ? window_.Unread() : NextSegment();
}

// Takes characters off the front. They must all be of one segment.
inline void TFicheroITV::Take(size_t count) {
    if (put_back_.IsEmpty())
        window_.Take(count);
    else
        put_back_.Take(count);
}

// Counts what may be a line end: CR, and LF unless it follows a CR.
inline void TFicheroITV::CountEnd(char end) {
    if (end == '\r' || (end == '\n' && previous_ != '\r'))
        ++line_count_;
    previous_ = end;
}

// Whether a line is held whose rest reads as it stands there.
inline bool TFicheroITV::HoldsPlainLine() const {
    return put_back_.HoldsLine() && held_is_plain_ && held_codepage_ == CurrentCodepage();
}

inline void TFicheroITV::TakeHeldLine() {
    previous_ = '\0';
    CountEnd(put_back_.TakeLine());
}

}  // namespace zelto

#endif
