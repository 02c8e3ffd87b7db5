// A fuzz input as a file, in a folder that goes with the process.

#ifndef ZELTO_FUZZ_FILES_FUZZED_FILE_H
#define ZELTO_FUZZ_FILES_FUZZED_FILE_H

#include <algorithm>
#include <cstdint>
#include <fstream>

#include "common/text/dstring.h"
#include "tests/support/temp_device.h"

namespace zelto::test {

inline DString FuzzedFile(const uint8_t* data, size_t size) {
    static const TempDevice folder;
    std::string name = folder.Path() + "/input";
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    std::replace(name.begin(), name.end(), '/', '\\');
    return name.c_str();
}

}  // namespace zelto::test

#endif
