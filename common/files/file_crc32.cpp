#include "common/files/file_crc32.h"

#include <algorithm>

#include "common/files/crc32.h"
#include "common/files/debug_trace.h"
#include "common/files/fichero_itv.h"
#include "common/files/little_endian.h"

namespace zelto {
namespace {

constexpr int64_t kChunk = 4096;
constexpr int64_t kTrailerBytes = 4;

const char* Title(int32_t mode) {
    switch (mode) {
        case kCrcAdd:
            return "Adding CRC 32";
        case kCrcCheck:
            return "Checking CRC 32";
        default:
            return "Generating CRC 32";
    }
}

void Announce(TCrcObserver* observer, const char* title, const DString& subject) {
    if (observer == nullptr)
        return;
    observer->title = title;
    observer->subject = subject;
}

bool OpenFor(int32_t mode, const DString& path, TFicheroITV& file) {
    const uint32_t direction = mode == kCrcAdd ? FICH_APPEND : FICH_READ;
    return file.Abre(path, direction | FICH_BINARY | FICH_PACKAGE, nullptr);
}

// Reads the range from the container's position on, ending with a read of no bytes. The result is
// that of the last read; the register is over what was read whole.
bool AddRange(TFicheroITV& file, int64_t size, TCrcObserver* observer, uint32_t& crc) {
    uint8_t buffer[kChunk];
    int64_t remaining = size;
    for (bool first = true;; first = false) {
        const auto chunk = static_cast<int32_t>(std::min(remaining, kChunk));
        const bool read = file.Read(buffer, chunk);
        if (first && observer != nullptr)
            observer->SetTotal(static_cast<uint32_t>(remaining));
        if (!read || chunk == 0)
            return read;
        remaining -= chunk;
        if (observer != nullptr)
            observer->done += static_cast<uint32_t>(chunk);
        crc = AddCrc32(crc, buffer, static_cast<size_t>(chunk));
    }
}

bool MatchesTrailer(TFicheroITV& file, uint32_t crc) {
    uint8_t bytes[kTrailerBytes] = {};
    return file.Read(bytes, kTrailerBytes) && LoadLittle<uint32_t>(bytes) == crc;
}

void WriteTrailer(TFicheroITV& file, uint32_t crc) {
    uint8_t bytes[kTrailerBytes];
    StoreLittle(crc, bytes);
    file.Write(bytes, kTrailerBytes);
}

// The range's end, a negative one being that of the file, and less the trailer to be checked.
int64_t RangeEnd(TFicheroITV& file, int32_t mode, int64_t end) {
    const int64_t given = end < 0 ? file.GetLength() : end;
    return mode == kCrcCheck ? given - kTrailerBytes : given;
}

bool Process(TFicheroITV& file, uint32_t& result, int32_t mode, TCrcObserver* observer,
             int64_t size) {
    uint32_t crc = kCrcStart;
    const bool read = AddRange(file, size, observer, crc);
    result = ~crc;
    if (mode == kCrcCheck)
        return read && MatchesTrailer(file, result);
    if (mode == kCrcAdd)
        WriteTrailer(file, result);
    return read;
}

void Trace(const DString& path, uint32_t milliseconds) {
    DString line("Crc32 ");
    line += path;
    line += " ";
    line += static_cast<int>(milliseconds);
    line += " ms";
    DebugTrace(line.c_str());
}

}  // namespace

bool FileCrc32(const DString& path, uint32_t& result, int32_t mode, TCrcObserver* observer,
               int64_t start, int64_t end) {
    result = kCrcStart;
    const uint32_t began = GetTickCount();
    Announce(observer, Title(mode), path);
    TFicheroITV file;
    if (!OpenFor(mode, path, file))
        return false;
    const int64_t range_end = RangeEnd(file, mode, end);
    if (range_end < start || start < 0)
        return false;
    if (start > 0)
        file.SetPos(start);
    const bool success = Process(file, result, mode, observer, range_end - start);
    Announce(observer, "", "");
    file.close(nullptr);
    Trace(path, GetTickCount() - began);
    return success;
}

}  // namespace zelto
