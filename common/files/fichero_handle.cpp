// The stream over a file handle.

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
    length_ = GetLength();
    return true;
}

bool TFicheroHandle::Close(DString* /*error*/) {
    if (handle_ != nullptr)
        CloseHandle(handle_);
    handle_ = nullptr;
    return true;
}

bool TFicheroHandle::Read(void* buffer, int32_t size) {
    if (handle_ == nullptr || size < 0)
        return false;
    const auto count = static_cast<DWORD>(size);
    DWORD done = 0;
    return ReadFile(handle_, buffer, count, &done, nullptr) != 0 && done == count;
}

bool TFicheroHandle::Write(const void* buffer, int32_t size) {
    if (handle_ == nullptr || size < 0)
        return false;
    const auto count = static_cast<DWORD>(size);
    DWORD done = 0;
    return WriteFile(handle_, buffer, count, &done, nullptr) != 0 && done == count;
}

void TFicheroHandle::SetPos(int64_t position) {
    if (handle_ != nullptr)
        Move(handle_, position, FILE_BEGIN);
}

bool TFicheroHandle::IsEof() {
    return GetPos() >= length_;
}

int64_t TFicheroHandle::GetPos() {
    const int64_t position = handle_ == nullptr ? 0 : Move(handle_, 0, FILE_CURRENT);
    return position < 0 ? 0 : position;
}

int64_t TFicheroHandle::GetLength() {
    if (handle_ == nullptr)
        return -1;
    const int64_t position = GetPos();
    const int64_t length = Move(handle_, 0, FILE_END);
    SetPos(position);
    return length;
}

}  // namespace zelto
