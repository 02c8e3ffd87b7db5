#include "common/files/fichero_itv.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <typeinfo>

namespace zelto {
namespace {

constexpr int32_t kDefaultChunk = 32000;
constexpr char kPackageKey = '\xAA';  // every byte of a member's text is combined with it

bool IsGoodBuffer(const void* buffer, int32_t size) {
    return size == 0 || (size > 0 && buffer != nullptr);
}

// Modulo 2^64: no position or offset makes them undefined.
int64_t Plus(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

int64_t Minus(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

// Hands out the size in chunks, each with its offset, to `move`; stops when that fails or the
// record's cancel flag is found set.
template <class Move>
bool InChunks(int32_t size, int32_t chunk, TProgreso& progress, Move move) {
    const int32_t most = chunk < 1 ? kDefaultChunk : chunk;
    progress.done = 0;
    progress.total = size;
    while (progress.done < size) {
        const int32_t count = std::min(most, size - progress.done);
        if (!move(progress.done, count))
            return false;
        progress.done += count;
        if (progress.cancel)
            return false;
    }
    return true;
}

// The addresses of a container's operations that read: all but the destructor, which is first, and
// Write and Read, which are last. On every system that there is a build for, an object begins with
// the address of their table.
std::array<uintptr_t, 6> ReadingOperations(const TFicheroITV& file) {
#ifdef _MSC_VER
    constexpr size_t kDestructors = 1;
#else
    constexpr size_t kDestructors = 2;
#endif
    constexpr size_t kOperations = 7;
    const void* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&file), sizeof table);
    uintptr_t slots[kDestructors + kOperations];
    std::memcpy(slots, table, sizeof slots);
    const uintptr_t* first = slots + kDestructors;
    return {first[0], first[1], first[2], first[3], first[4], first[6]};  // without Write
}

}  // namespace

TFicheroITV::TFicheroITV() = default;

// Not by way of the other one: an object that did not open is not destroyed, so commits nothing.
TFicheroITV::TFicheroITV(const DString& name, uint32_t mode) {
    if (!Abre(name, mode, nullptr))
        throw "Error al abrir archivo";
}

TFicheroITV::~TFicheroITV() {
    close(nullptr);
}

bool TFicheroITV::IsOpen() const {
    return stream_ != nullptr && stream_->IsOpen();
}

int TFicheroITV::GetChar() {
    unsigned char byte = 0;
    char_was_read_ = Read(&byte, 1);
    return char_was_read_ ? byte : 0;
}

void TFicheroITV::SetPos(int64_t position) {
    reader_.DropUnread();
    MoveTo(position);
}

void TFicheroITV::MoveTo(int64_t position) {
    if (memory_.IsLoaded()) {
        memory_.SetPos(position);
    } else if (stream_ != nullptr) {
        stream_->SetPos(Plus(position, data_offset_));
    }
}

// Goes back to where the text reader is, when it fetched more.
void TFicheroITV::DropUnread() {
    if (reader_.Unread() > 0)
        SetPos(fetched_to_ - static_cast<int64_t>(reader_.Unread()));
}

int64_t TFicheroITV::GetPos() {
    if (reader_.Unread() > 0)
        return fetched_to_ - static_cast<int64_t>(reader_.Unread());
    if (memory_.IsLoaded())
        return memory_.GetPos();
    return stream_ == nullptr ? 0 : Minus(stream_->GetPos(), data_offset_);
}

int64_t TFicheroITV::GetLength() {
    if (data_length_ > 0 && data_offset_ > 0)
        return data_length_;
    if (stream_ == nullptr)
        return 0;
    DropUnread();
    return stream_->GetLength();
}

bool TFicheroITV::IsEof() {
    if (reader_.Unread() > 0)
        return false;
    if (data_offset_ > 0)
        return GetPos() >= data_length_;
    if (memory_.IsLoaded())
        return memory_.IsEof();
    return stream_ == nullptr || stream_->IsEof();
}

bool TFicheroITV::Write(const void* buffer, int32_t size, TProgreso* progress, int32_t chunk) {
    if (!IsGoodBuffer(buffer, size))
        return false;
    if (write_observer_ != nullptr)
        write_observer_(observer_context_, buffer, size);
    if (progress == nullptr) {
        DropUnread();
        return stream_ != nullptr && stream_->Write(buffer, size);
    }
    const auto* bytes = static_cast<const char*>(buffer);
    return InChunks(size, chunk, *progress, [this, bytes](int32_t done, int32_t count) {
        return Write(bytes + done, count, nullptr, 0);
    });
}

bool TFicheroITV::Read(void* buffer, int32_t size, TProgreso* progress, int32_t chunk) {
    if (!IsGoodBuffer(buffer, size))
        return false;
    if (progress == nullptr) {
        DropUnread();
        return ReadBytes(buffer, size);
    }
    auto* bytes = static_cast<char*>(buffer);
    return InChunks(size, chunk, *progress, [this, bytes](int32_t done, int32_t count) {
        return Read(bytes + done, count, nullptr, 0);
    });
}

bool TFicheroITV::ReadBytes(void* buffer, int32_t size) {
    if (memory_.IsLoaded())
        return memory_.Read(buffer, size);
    return stream_ != nullptr && stream_->Read(buffer, size);
}

bool TFicheroITV::Flush() {
    return stream_ != nullptr && stream_->Flush() == 0;
}

void TFicheroITV::get_dato_texto(DString& out) {
    const std::string_view token = Tokens().ReadToken();
    out.assign(token.data(), static_cast<int>(token.size()));
    LineRecoder::Tag(out, reader_.Codepage());
}

int32_t TFicheroITV::ReadLine(DString& target, int32_t limit) {
    int32_t lines = 0;
    const std::string_view line = reader_.ReadLine(limit, lines);
    target.assign(line.data(), static_cast<int>(line.size()));
    LineRecoder::Tag(target, reader_.Codepage());
    return lines;
}

void TFicheroITV::PutBack(const DString& text) {
    reader_.PutBack(text.c_str());
}

void TFicheroITV::PutBack(char character) {
    if (character != '\0')
        reader_.PutBack({&character, 1});
}

std::string_view TFicheroITV::Fetch(char* room, std::shared_ptr<const void>& owner) {
    if (IsEof())
        return {};
    const std::string_view bytes = ReadsAsDeclared() ? FetchAhead(room, owner) : "";
    return bytes.empty() ? FetchOne(room) : bytes;
}

// Whether reading goes by the operations of this class, or of one that leaves them as they are: in
// another, every byte must pass through its own.
bool TFicheroITV::ReadsAsDeclared() const {
    if (typeid(*this) == typeid(TFicheroITV))
        return true;
    static const TFicheroITV declared;
    return ReadingOperations(*this) == ReadingOperations(declared);
}

// Fetches many bytes at once, none beyond the region and what the file had at the first fetch:
// there the stream decides byte by byte where the end is.
std::string_view TFicheroITV::FetchAhead(char* room, std::shared_ptr<const void>& owner) {
    const int64_t position = GetPos();
    const int64_t end = FetchEnd();
    if (position < 0 || position >= end)
        return {};
    const auto left = static_cast<uint64_t>(end - position);
    const auto count = static_cast<size_t>(std::min<uint64_t>(left, SIZE_MAX));
    const std::string_view bytes = FetchBlock(count, room, owner);
    if (bytes.empty()) {  // the file has become shorter
        stream_length_ = 0;
        MoveTo(position);
    }
    fetched_to_ = position + static_cast<int64_t>(bytes.size());
    return bytes;
}

int64_t TFicheroITV::FetchEnd() {
    if (stream_length_ < 0 && stream_ != nullptr)
        stream_length_ = stream_->GetLength();
    const int64_t end = memory_.IsLoaded() ? memory_.Length() : Minus(stream_length_, data_offset_);
    return data_offset_ > 0 ? std::min(end, data_length_) : end;
}

// At most `count` bytes from the position on, which is then behind them.
std::string_view TFicheroITV::FetchBlock(size_t count, char* room,
                                         std::shared_ptr<const void>& owner) {
    if (memory_.IsLoaded() && package_flag_ == 0) {
        const std::string_view rest = memory_.Rest().substr(0, count);
        memory_.SetPos(memory_.GetPos() + static_cast<int64_t>(rest.size()));
        owner = memory_.Owner();
        return rest;
    }
    const size_t size = std::min(count, TextReader::kRoom);
    if (!ReadBytes(room, static_cast<int32_t>(size)))
        return {};
    if (package_flag_ != 0)
        std::transform(room, room + size, room,
                       [](char c) { return static_cast<char>(c ^ kPackageKey); });
    return {room, size};
}

std::string_view TFicheroITV::FetchOne(char* room) {
    char_was_read_ = true;  // for a GetChar that does not tell
    const int byte = GetChar();
    if (!char_was_read_)
        return {};
    *room = static_cast<char>(package_flag_ == 0 ? byte : byte ^ kPackageKey);
    if (byte < 0)  // ends a line, as NUL does; only a derived class answers so
        *room = '\0';
    return {room, 1};
}

void TFicheroITV::SetDelimiters(const char* delimiters) {
    reader_.SetDelimiters(delimiters == nullptr ? "" : delimiters);
}

void TFicheroITV::SetWriteObserver(WriteObserver observer, void* context) {
    write_observer_ = observer;
    observer_context_ = context;
}

void TFicheroITV::SetDataRegion(int64_t offset, int64_t length) {
    const int64_t position = Plus(GetPos(), data_offset_);
    const bool moves = memory_.IsLoaded() || reader_.Unread() > 0;
    memory_.Free();
    reader_.DropUnread();
    data_offset_ = offset;
    data_length_ = length;
    if (moves && stream_ != nullptr)
        stream_->SetPos(position);
}

void TFicheroITV::SetHookStream(TFicheroStream* stream) {
    stream_ = StreamPointer(stream, [](TFicheroStream*) {});
    hook_owned_ = true;
}

}  // namespace zelto
