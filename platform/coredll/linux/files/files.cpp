// File handles: opening, reading, writing, positions.

#include "platform/coredll/api/files.h"

#include <algorithm>
#include <limits>
#include <sys/stat.h>

#include "platform/coredll/linux/base/handle_table.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/files/open_file.h"

namespace zelto::coredll {
namespace {

// A file handle's word: descriptor and what the handle may do, so that it owns no memory.
enum WordBit : uintptr_t { kReadable = 1, kWritable = 2, kRegular = 4 };
constexpr int kDescriptorShift = 3;

// Most bytes that one system call is given; the host moves no more than 2 GiB at once.
constexpr DWORD kChunk = 1u << 30;

uintptr_t FileWord(DWORD access, const OpenedFile& file) {
    uintptr_t word = static_cast<uintptr_t>(file.fd.Get()) << kDescriptorShift;
    if ((access & GENERIC_READ) != 0)
        word |= kReadable;
    if ((access & GENERIC_WRITE) != 0)
        word |= kWritable;
    return file.is_regular ? word | kRegular : word;
}

int Descriptor(uintptr_t word) {
    return static_cast<int>(word >> kDescriptorShift);
}

// What ReadFile and WriteFile check alike; 0 when all is well.
DWORD CheckTransfer(HANDLE file, const void* buffer, DWORD size, const DWORD* done,
                    const void* overlapped, WordBit right, uintptr_t& word) {
    if (!LookUpHandle(file, HandleKind::kFile, word))
        return ERROR_INVALID_HANDLE;
    if (done == nullptr || overlapped != nullptr || (buffer == nullptr && size != 0))
        return ERROR_INVALID_PARAMETER;
    return (word & right) != 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

// Moves bytes with `call` until all are moved, the end is reached or, but for a regular file, the
// first have come.
template <class Call>
BOOL Transfer(DWORD size, DWORD* done, bool to_the_last, Call call) {
    while (*done < size) {
        const DWORD chunk = std::min(size - *done, kChunk);
        const ssize_t moved = RetryInterrupted([&] { return call(*done, chunk); });
        if (moved < 0)
            return Fail(ErrorFromErrno(errno));
        *done += static_cast<DWORD>(moved);
        if (moved == 0 || !to_the_last)
            break;
    }
    return TRUE;
}

// Where a move starts; negative when the file has no positions.
int64_t MoveOrigin(int fd, DWORD method) {
    if (method == FILE_BEGIN)
        return 0;
    if (method == FILE_CURRENT)
        return lseek(fd, 0, SEEK_CUR);
    struct stat status {};
    return fstat(fd, &status) == 0 ? int64_t{status.st_size} : -1;
}

DWORD Move(int fd, int64_t distance, DWORD method, int64_t limit, int64_t& position) {
    if (method > FILE_END)
        return ERROR_INVALID_PARAMETER;
    const int64_t origin = MoveOrigin(fd, method);
    if (origin < 0)
        return ErrorFromErrno(errno);
    if (distance > limit - origin)
        return ERROR_INVALID_PARAMETER;
    position = origin + distance;
    if (position < 0)
        return ERROR_NEGATIVE_SEEK;
    return lseek(fd, position, SEEK_SET) == position ? DWORD{ERROR_SUCCESS} : ErrorFromErrno(errno);
}

}  // namespace

void CloseFileWord(uintptr_t word) {
    close(Descriptor(word));
}

}  // namespace zelto::coredll

using namespace zelto::coredll;

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* /*security*/,
                   DWORD disposition, DWORD attributes, HANDLE /*template_file*/) {
    std::string path;
    OpenedFile file;
    DWORD error = HostPath(name, path);
    if (error == ERROR_SUCCESS)
        error = OpenHostFile(path, {access, share, disposition, attributes}, file);
    if (error != ERROR_SUCCESS)
        return FailHandle(error);
    HANDLE handle = MakeHandle(HandleKind::kFile, FileWord(access, file));
    if (handle == nullptr)
        return FailHandle(ERROR_TOO_MANY_OPEN_FILES);
    file.fd.Release();
    if (disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS)
        SetLastError(file.existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped) {
    uintptr_t word = 0;
    const DWORD error = CheckTransfer(file, buffer, size, read, overlapped, kReadable, word);
    if (read != nullptr)
        *read = 0;
    if (error != ERROR_SUCCESS)
        return Fail(error);
    return Transfer(size, read, (word & kRegular) != 0, [&](DWORD done, DWORD chunk) {
        return ::read(Descriptor(word), static_cast<char*>(buffer) + done, chunk);
    });
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped) {
    uintptr_t word = 0;
    const DWORD error = CheckTransfer(file, buffer, size, written, overlapped, kWritable, word);
    if (written != nullptr)
        *written = 0;
    if (error != ERROR_SUCCESS)
        return Fail(error);
    return Transfer(size, written, true, [&](DWORD done, DWORD chunk) {
        return write(Descriptor(word), static_cast<const char*>(buffer) + done, chunk);
    });
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method) {
    uintptr_t word = 0;
    if (!LookUpHandle(file, HandleKind::kFile, word))
        return Fail(ERROR_INVALID_HANDLE, DWORD{INVALID_SET_FILE_POINTER});
    int64_t wide_distance = distance;
    int64_t limit = std::numeric_limits<uint32_t>::max();
    if (high != nullptr) {
        const uint64_t halves =
            (uint64_t{static_cast<uint32_t>(*high)} << 32) | static_cast<uint32_t>(distance);
        wide_distance = static_cast<int64_t>(halves);
        limit = std::numeric_limits<int64_t>::max();
    }
    int64_t position = 0;
    const DWORD error = Move(Descriptor(word), wide_distance, method, limit, position);
    if (error != ERROR_SUCCESS)
        return Fail(error, DWORD{INVALID_SET_FILE_POINTER});
    if (high != nullptr)
        *high = static_cast<LONG>(position >> 32);
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(position & 0xFFFFFFFF);
}
