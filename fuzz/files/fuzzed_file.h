// A fuzz input as a file, in a folder that goes with the process. The folder lies in memory where
// the host has a file system there: a disk would make every input wait.

#ifndef ZELTO_FUZZ_FILES_FUZZED_FILE_H
#define ZELTO_FUZZ_FILES_FUZZED_FILE_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "common/text/dstring.h"

namespace zelto::test {

class FuzzFolder {
  public:
    FuzzFolder() {
        for (const char* place : {"/dev/shm/zXXXXXX", "/tmp/zXXXXXX"}) {
            path_ = place;
            if (mkdtemp(path_.data()) != nullptr)
                return;
        }
        std::abort();
    }
    ~FuzzFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    // The portable code's name of a file in it.
    DString Name(const char* file) const {
        std::string name = path_ + "/" + file;
        std::replace(name.begin(), name.end(), '/', '\\');
        return name.c_str();
    }
    std::string HostName(const char* file) const { return path_ + "/" + file; }

  private:
    std::string path_;
};

inline DString FuzzedFile(const uint8_t* data, size_t size) {
    static const FuzzFolder folder;
    std::ofstream(folder.HostName("input"), std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return folder.Name("input");
}

}  // namespace zelto::test

#endif
