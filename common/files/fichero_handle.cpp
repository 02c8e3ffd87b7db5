// The stream over a file handle.

#include <algorithm>
#include <cstring>
#include <new>

#include "common/files/fichero_mode.h"
#include "common/files/fichero_stream.h"
#include "common/text/codepage.h"

namespace zelto {
namespace {

struct OpenValues {
    DWORD access;
    DWORD creation;
};

bool ValuesOf(uint32_t mode, OpenValues& values) {
    switch (mode & (FICH_READ | FICH_WRITE | FICH_APPEND)) {
        case FICH_READ:
            values = {GENERIC_READ, OPEN_EXISTING};
            break;
        case FICH_WRITE:
            values = {GENERIC_WRITE, CREATE_ALWAYS};
            break;
        case FICH_APPEND:
            values = {GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS};
            break;
        default:
            return false;
    }
    // OPEN_EXISTING and CREATE_ALWAYS stay what they are; OPEN_ALWAYS becomes 6, by which the
    // platform truncates an existing file and refuses a missing one.
    if ((mode & FICH_UPDATE) != 0)
        values = {GENERIC_READ | GENERIC_WRITE, values.creation | CREATE_ALWAYS};
    return true;
}

// Moves by SetFilePointer; the new position, or -1.
int64_t Move(HANDLE handle, int64_t distance, DWORD method) {
    auto high = static_cast<LONG>(distance >> 32);
    const DWORD low = SetFilePointer(handle, static_cast<LONG>(distance), &high, method);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR)
        return -1;
    return (int64_t{high} << 32) | low;
}

}  // namespace

bool TFicheroHandle::Open(const DString& name, const uint32_t* mode, DString* error) {
    OpenValues values{};
    if (!ValuesOf(mode == nullptr ? 0 : *mode, values))
        return false;
    Close(nullptr);
    const DWORD share = values.access == GENERIC_READ ? DWORD{FILE_SHARE_READ} : 0;
    handle_ = CreateFileW(ToWide(name).c_str(), values.access, share, nullptr, values.creation,
                          FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle_ == INVALID_HANDLE_VALUE)
        handle_ = nullptr;
    if (handle_ == nullptr) {
        if (error != nullptr)
            *error = "Error Opening File.";
        return false;
    }
    reads_only_ = values.access == GENERIC_READ;
    length_ = GetLength();
    reads_only_ = reads_only_ && length_ >= 0;  // not a pipe
    return true;
}

bool TFicheroHandle::Close(DString* /*error*/) {
    if (handle_ != nullptr)
        CloseHandle(handle_);
    handle_ = nullptr;
    reads_only_ = false;
    position_ = 0;
    DropAhead();
    return true;
}

bool TFicheroHandle::Read(void* buffer, int32_t size) {
    if (handle_ == nullptr || size < 0 || (buffer == nullptr && size > 0))
        return false;
    if (!reads_only_)
        return ReadNow(buffer, size) == size;
    auto* bytes = static_cast<char*>(buffer);
    int32_t done = TakeAhead(bytes, size);
    if (done < size && size - done < kMostAhead && FetchAhead())
        done += TakeAhead(bytes + done, size - done);
    while (done < size) {
        const int32_t read = ReadNow(bytes + done, size - done);
        if (read <= 0)
            return false;
        done += read;
        position_ += read;
    }
    return true;
}

// The bytes that were read; -1 when the system refuses, though not for being asked for none.
int32_t TFicheroHandle::ReadNow(void* buffer, int32_t size) {
    DWORD done = 0;
    const bool read = ReadFile(handle_, buffer, static_cast<DWORD>(size), &done, nullptr) != 0;
    return read ? static_cast<int32_t>(done) : -1;
}

int32_t TFicheroHandle::TakeAhead(char* buffer, int32_t size) {
    const int32_t count = std::min(size, ahead_size_ - ahead_at_);
    if (count > 0)
        std::memcpy(buffer, ahead_.get() + ahead_at_, static_cast<size_t>(count));
    ahead_at_ += count;
    position_ += count;
    return count;
}

// Once all that was fetched is taken. False when there is nothing to be had so.
bool TFicheroHandle::FetchAhead() {
    if (ahead_room_ < kMostAhead) {
        const int32_t room = ahead_room_ == 0 ? kFirstAhead : ahead_room_ * 4;
        ahead_.reset(new (std::nothrow) char[static_cast<size_t>(room)]);
        ahead_room_ = ahead_ == nullptr ? 0 : room;
    }
    const int64_t left = length_ - position_;  // asking for more is another call of the system
    const int64_t count = left > 0 ? std::min<int64_t>(left, ahead_room_) : ahead_room_;
    ahead_at_ = 0;
    ahead_size_ =
        ahead_ == nullptr ? 0 : std::max(0, ReadNow(ahead_.get(), static_cast<int32_t>(count)));
    return ahead_size_ > 0;
}

void TFicheroHandle::DropAhead() {
    ahead_.reset();
    ahead_room_ = 0;
    ahead_at_ = 0;
    ahead_size_ = 0;
}

bool TFicheroHandle::Write(const void* buffer, int32_t size) {
    if (handle_ == nullptr || size < 0)
        return false;
    const auto count = static_cast<DWORD>(size);
    DWORD done = 0;
    return WriteFile(handle_, buffer, count, &done, nullptr) != 0 && done == count;
}

void TFicheroHandle::SetPos(int64_t position) {
    const int64_t start = position_ - ahead_at_;  // of what was fetched
    if (reads_only_ && position >= start && position < start + ahead_size_) {
        ahead_at_ = static_cast<int32_t>(position - start);
        position_ = position;
    } else if (handle_ != nullptr && Move(handle_, position, FILE_BEGIN) >= 0) {
        DropAhead();
        position_ = position;
    }
}

bool TFicheroHandle::IsEof() {
    return GetPos() >= length_;
}

int64_t TFicheroHandle::GetPos() {
    if (reads_only_)
        return position_;
    const int64_t position = handle_ == nullptr ? 0 : Move(handle_, 0, FILE_CURRENT);
    return position < 0 ? 0 : position;
}

int64_t TFicheroHandle::GetLength() {
    if (handle_ == nullptr)
        return -1;
    const int64_t here = reads_only_ ? position_ + ahead_size_ - ahead_at_ : GetPos();
    const int64_t length = Move(handle_, 0, FILE_END);
    Move(handle_, here, FILE_BEGIN);
    return length;
}

}  // namespace zelto
