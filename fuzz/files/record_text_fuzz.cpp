// Any bytes read as text: the first chooses the codepage and what is asked for, the rest is the
// file. The handle stream and the memory buffer, by turns, must read what the stdio stream reads.

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/files/fichero_itv.h"
#include "common/text/codepage.h"
#include "fuzz/files/fuzzed_file.h"

namespace {

// What is put back may never come to an end, and what is read behind the end is nothing.
constexpr size_t kMostReads = 100;
constexpr size_t kMostNothings = 8;

std::string ReadAll(const zelto::DString& name, uint32_t stream, uint8_t choice, size_t size) {
    zelto::TFicheroITV file(name, zelto::FICH_READ | zelto::FICH_TEXT | stream);
    std::string all;
    zelto::DString text;
    size_t nothings = 0;
    for (size_t i = 0; i < std::min(size, kMostReads) && nothings < kMostNothings; ++i) {
        int32_t number = 0;
        switch ((choice + i * (choice >> 3)) % 4) {
            case 0:
                file.ReadLine(text, choice);
                break;
            case 1:
                file >> number;
                text = number;
                break;
            default:
                file.get_dato_texto(text);
        }
        nothings = text.compare("0") <= 0 ? nothings + 1 : 0;
        all += text.c_str();
        all += "\n" + std::to_string(file.LineCount()) + "\n";
        if (choice > 200 && i % 7 == 3)
            file.PutBack(text);
    }
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    constexpr int32_t kCodepages[] = {0, 1252, 65001};
    zelto::SetCurrentCodepage(kCodepages[data[0] % 3]);
    const zelto::DString name = zelto::test::FuzzedFile(data + 1, size - 1);
    const uint32_t other = data[0] / 3 % 2 == 0 ? zelto::FICH_HANDLE : zelto::FICH_PACKAGE;
    if (ReadAll(name, other, data[0], size) != ReadAll(name, 0, data[0], size))
        __builtin_trap();
    return 0;
}
