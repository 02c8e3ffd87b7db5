// The stream over a FILE.

#include <cstring>
#include <utility>

#include "common/files/fichero_mode.h"
#include "common/files/fichero_stream.h"
#include "common/text/codepage.h"

namespace zelto {
namespace {

std::basic_string<WCHAR> ModeText(uint32_t mode) {
    std::basic_string<WCHAR> text;
    switch (mode & (FICH_READ | FICH_WRITE | FICH_APPEND)) {
        case FICH_READ:
            text = TEXT("r");
            break;
        case FICH_WRITE:
            text = TEXT("w");
            break;
        case FICH_APPEND:
            text = TEXT("a");
            break;
        default:
            throw "Error en TFicheroITV::Abre";
    }
    if ((mode & FICH_UPDATE) != 0)
        text += TEXT("+");
    return text + TEXT("b");
}

}  // namespace

bool TFicheroFILE::Open(const DString& name, const uint32_t* mode, DString* error) {
    const uint32_t flags = mode == nullptr ? 0 : *mode;
    const std::basic_string<WCHAR> mode_text = ModeText(flags);
    Close(nullptr);
    was_lost_ = false;
    writable_ = (flags & (FICH_WRITE | FICH_APPEND | FICH_UPDATE)) != 0;
    file_ = _wfopen(ToWide(name).c_str(), mode_text.c_str());
    if (file_ == nullptr && error != nullptr)
        *error = "Error Opening File.";
    return file_ != nullptr;
}

bool TFicheroFILE::Close(DString* /*error*/) {
    if (file_ != nullptr) {
        PassOn();
        std::fclose(file_);
    }
    file_ = nullptr;
    last_ = Direction::kNone;
    return true;
}

bool TFicheroFILE::Read(void* buffer, int32_t size) {
    if (file_ == nullptr || size < 0 || (buffer == nullptr && size > 0))
        return false;
    Turn(Direction::kRead);
    const auto count = static_cast<size_t>(size);
    return std::fread(buffer, 1, count, file_) == count;
}

bool TFicheroFILE::Write(const void* buffer, int32_t size) {
    if (file_ == nullptr || !writable_ || size < 0 || (buffer == nullptr && size > 0))
        return false;
    Turn(Direction::kWrite);
    const auto count = static_cast<size_t>(size);
    if (count > kWaitingRoom - waiting_size_ && !PassOn())
        return false;
    if (count > kWaitingRoom)
        return std::fwrite(buffer, 1, count, file_) == count;
    if (count > 0)
        std::memcpy(waiting_ + waiting_size_, buffer, count);
    waiting_size_ += count;
    return true;
}

// Hands what waits to stdio.
bool TFicheroFILE::PassOn() {
    const size_t count = std::exchange(waiting_size_, 0);
    const bool passed = count == 0 || std::fwrite(waiting_, 1, count, file_) == count;
    was_lost_ = was_lost_ || !passed;
    return passed;
}

// stdio writes what it holds before it moves.
bool TFicheroFILE::Seek(int64_t distance, int origin) {
    PassOn();
    const bool flushed = last_ != Direction::kWrite || std::fflush(file_) == 0;
    was_lost_ = was_lost_ || !flushed;
    return _fseeki64(file_, distance, origin) == 0;
}

void TFicheroFILE::Turn(Direction direction) {
    if (last_ == direction)
        return;
    if (last_ != Direction::kNone)
        Seek(0, SEEK_CUR);
    last_ = direction;
}

void TFicheroFILE::SetPos(int64_t position) {
    if (file_ == nullptr)
        return;
    if (Seek(position, SEEK_SET))
        last_ = Direction::kNone;
}

bool TFicheroFILE::IsEof() {
    return file_ == nullptr || std::feof(file_) != 0;
}

int64_t TFicheroFILE::GetPos() {
    if (file_ == nullptr)
        return 0;
    PassOn();
    const int64_t position = _ftelli64(file_);
    return position < 0 ? 0 : position;
}

int64_t TFicheroFILE::GetLength() {
    const int64_t position = GetPos();
    if (file_ == nullptr)
        return 0;
    Seek(0, SEEK_END);
    const int64_t length = GetPos();
    SetPos(position);
    return length;
}

int32_t TFicheroFILE::Flush() {
    if (file_ == nullptr)
        return 0;
    PassOn();
    was_lost_ = std::fflush(file_) != 0 || was_lost_;
    return was_lost_ ? EOF : 0;
}

}  // namespace zelto
