// Record files: one file, opened by name and mode, read or written as a sequence of typed fields,
// either as text or as the raw bytes of their values. docs/record-files.md describes the formats.

#ifndef ZELTO_COMMON_FILES_FICHERO_ITV_H
#define ZELTO_COMMON_FILES_FICHERO_ITV_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

#include "common/files/fichero_mode.h"
#include "common/files/fichero_stream.h"
#include "common/files/memory_buffer.h"
#include "common/files/text_reader.h"
#include "common/text/dstring.h"
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

    // Hands to the system what waits in the stream. False when that fails, or failed before, and on
    // a closed container: with the stdio stream this tells whether all that was told written is.
    bool Flush();

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
    int32_t EncodingMark() const { return reader_.Codepage(); }     // -1, 0 UTF-16, 65001, 1 none
    int32_t LeadingValue() const { return leading_value_; }
    int32_t LineCount() const { return reader_.LineCount(); }  // line ends met, put back or not

    // For the package hook. The region starts `offset` bytes into the stream; both 0: none. It
    // does not move the position, and drops a memory buffer. A stream set here is not owned, and
    // is given back by TPackageHook::Close.
    void SetDataRegion(int64_t offset, int64_t length);
    void SetHookStream(TFicheroStream* stream);

  private:
    using StreamPointer = std::unique_ptr<TFicheroStream, void (*)(TFicheroStream*)>;
    enum class HookAnswer { kNone, kOpened, kStopped };

    // The container as what its text reader reads.
    class Input final : public TextSource {
      public:
        explicit Input(TFicheroITV& file) : file_(file) {}
        std::string_view Fetch(char* room, std::shared_ptr<const void>& owner) override {
            return file_.Fetch(room, owner);
        }

      private:
        TFicheroITV& file_;
    };

    // fichero_open.cpp
    HookAnswer AskHook(DString& working_name, DString& member, DString* error);
    bool MakeStream(DString* error);
    bool BeginSafeWrite(DString& working_name, DString* error);
    bool OpenStream(const DString& name, DString* error);
    bool LocateMember(const DString& package, const DString& member, DString* error);
    void BeginContents();
    int32_t InspectMark();
    void WriteMark();

    // fichero_itv.cpp
    bool IsReading() const { return (mode_ & FICH_READ) != 0; }
    void MoveTo(int64_t position);
    void DropUnread();
    bool ReadBytes(void* buffer, int32_t size);
    std::string_view Fetch(char* room, std::shared_ptr<const void>& owner);
    std::string_view FetchAhead(char* room, std::shared_ptr<const void>& owner);
    std::string_view FetchBlock(size_t count, char* room, std::shared_ptr<const void>& owner);
    std::string_view FetchOne(char* room);
    bool ReadsAsDeclared() const;
    int64_t FetchEnd();

    // fichero_fields.cpp
    TextReader& Tokens();
    void WriteField(const char* text, size_t size);
    template <class Value>
    TFicheroITV& PutInteger(Value value);
    template <class Value>
    TFicheroITV& PutDecimal(Value value);
    TFicheroITV& PutByte(unsigned char value);
    template <class Value>
    TFicheroITV& GetInteger(Value& value);
    template <class Value>
    TFicheroITV& GetDecimal(Value& value);
    unsigned char GetByte(unsigned char value);

    char separator_ = ' ';
    int32_t precision_ = 2;
    int32_t leading_value_ = 0;
    uint32_t mode_ = 0;
    WriteObserver write_observer_ = nullptr;
    void* observer_context_ = nullptr;
    uint8_t package_flag_ = 0;
    StreamPointer stream_{nullptr, nullptr};
    bool temporary_pending_ = false;
    DString file_name_;
    int64_t data_offset_ = 0;
    int64_t data_length_ = 0;
    bool hook_owned_ = false;
    MemoryBuffer memory_;
    Input input_{*this};
    TextReader reader_{input_};
    int64_t fetched_to_ = 0;      // the position behind what the reader has fetched
    int64_t stream_length_ = -1;  // at the first fetch; 0 once it was found to be shorter
    bool char_was_read_ = true;
};

}  // namespace zelto

#endif
