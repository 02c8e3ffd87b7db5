// Any bytes read as binary fields at any position, and checked as a stamped file.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/files/fichero_itv.h"
#include "common/files/file_crc32.h"
#include "fuzz/files/fuzzed_file.h"

namespace {

int64_t NumberAt(const uint8_t* data, size_t size, size_t at) {
    int64_t number = 0;
    if (at + sizeof number <= size)
        std::memcpy(&number, data + at, sizeof number);
    return number;
}

void ReadFields(const zelto::DString& name, uint32_t stream, int64_t position) {
    zelto::TFicheroITV file(
        name, zelto::FICH_READ | zelto::FICH_BINARY | stream | zelto::FICH_READ_HEADER_INT);
    file.SetPos(position);
    zelto::DDateTime date;
    double number = 0;
    bool flag = false;
    for (int i = 0; i < 4; ++i)
        file >> date >> number >> flag;
    file.SetDataRegion(position, 3);
    file.SetPos(0);
    file >> number;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const zelto::DString name = zelto::test::FuzzedFile(data, size);
    const int64_t first = NumberAt(data, size, 0);
    const int64_t second = NumberAt(data, size, 8);
    for (const uint32_t stream : {uint32_t{0}, zelto::FICH_HANDLE, zelto::FICH_PACKAGE})
        ReadFields(name, stream, first);
    uint32_t crc = 0;
    uint32_t stamped = 0;
    const bool whole = zelto::FileCrc32(name, crc, zelto::kCrcGenerate);
    zelto::FileCrc32(name, stamped, zelto::kCrcCheck, nullptr, first, second);
    const bool added = zelto::FileCrc32(name, stamped, zelto::kCrcAdd);
    if (!whole || !added || crc != stamped || !zelto::FileCrc32(name, crc, zelto::kCrcCheck))
        __builtin_trap();
    return 0;
}
