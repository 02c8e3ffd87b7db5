#include "common/files/fichero_itv.h"

#include <algorithm>

namespace zelto {
namespace {

constexpr int32_t kDefaultChunk = 32000;

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
    window_.Clear();
    MoveTo(position);
}

void TFicheroITV::MoveTo(int64_t position) {
    if (memory_.IsLoaded()) {
        memory_.SetPos(position);
    } else if (stream_ != nullptr) {
        stream_->SetPos(Plus(position, data_offset_));
    }
}

// Goes back to where the text readers are, when more was fetched.
void TFicheroITV::DropWindow() {
    if (!window_.IsEmpty())
        SetPos(window_.Position());
}

int64_t TFicheroITV::GetPos() {
    if (!window_.IsEmpty())
        return window_.Position();
    if (memory_.IsLoaded())
        return memory_.GetPos();
    return stream_ == nullptr ? 0 : Minus(stream_->GetPos(), data_offset_);
}

int64_t TFicheroITV::GetLength() {
    if (data_length_ > 0 && data_offset_ > 0)
        return data_length_;
    if (stream_ == nullptr)
        return 0;
    DropWindow();
    return stream_->GetLength();
}

bool TFicheroITV::IsEof() {
    if (!window_.IsEmpty())
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
        DropWindow();
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
        DropWindow();
        if (memory_.IsLoaded())
            return memory_.Read(buffer, size);
        return stream_ != nullptr && stream_->Read(buffer, size);
    }
    auto* bytes = static_cast<char*>(buffer);
    return InChunks(size, chunk, *progress, [this, bytes](int32_t done, int32_t count) {
        return Read(bytes + done, count, nullptr, 0);
    });
}

void TFicheroITV::SetDelimiters(const char* delimiters) {
    delimiters_ = ByteSet(delimiters == nullptr ? "" : delimiters);
}

void TFicheroITV::SetWriteObserver(WriteObserver observer, void* context) {
    write_observer_ = observer;
    observer_context_ = context;
}

void TFicheroITV::SetDataRegion(int64_t offset, int64_t length) {
    const int64_t position = Plus(GetPos(), data_offset_);
    const bool moves = memory_.IsLoaded() || !window_.IsEmpty();
    memory_.Free();
    window_.Clear();
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
