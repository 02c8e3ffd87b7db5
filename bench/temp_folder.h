// A folder that goes with the program, and the names in it.

#ifndef ZELTO_BENCH_TEMP_FOLDER_H
#define ZELTO_BENCH_TEMP_FOLDER_H

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "common/text/dstring.h"

namespace zelto::bench {

class TempFolder {
  public:
    TempFolder() {
        char name[] = "/tmp/zelto-bench-XXXXXX";
        path_ = mkdtemp(name);
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    std::string Host(const std::string& name) const { return path_ + "/" + name; }
    DString Device(const std::string& name) const {
        std::string path = Host(name);
        std::replace(path.begin(), path.end(), '/', '\\');
        return path.c_str();
    }

  private:
    std::string path_;
};

}  // namespace zelto::bench

#endif
