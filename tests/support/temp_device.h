// A device of a test's own, in a private temporary folder that goes with the test.

#ifndef ZELTO_TESTS_SUPPORT_TEMP_DEVICE_H
#define ZELTO_TESTS_SUPPORT_TEMP_DEVICE_H

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zelto::test {

// UTF-8 text as UTF-16.
inline std::u16string WideFromUtf8(const std::string& text) {
    return std::filesystem::path(text).u16string();
}

// A host path as the portable code writes it: "/a/b" is "\a\b".
inline std::u16string WidePath(const std::string& path) {
    std::u16string wide = WideFromUtf8(path);
    std::replace(wide.begin(), wide.end(), u'/', u'\\');
    return wide;
}

// Makes the folder and an empty device in it, and names that device in ZELTO_DEVICE, and the folder
// as the place of recordings, until it is destroyed. One at a time in a process. Throws
// std::runtime_error where no folder is to be had.
class TempDevice {
  public:
    TempDevice() {
        char folder[] = "/tmp/zXXXXXX";  // short: an executable's path may have 99 units
        if (mkdtemp(folder) == nullptr)
            throw std::runtime_error("no temporary folder");
        path_ = folder;
        const char* previous = std::getenv("ZELTO_DEVICE");
        previous_ = previous == nullptr ? "" : previous;
        if (mkdir(Device().c_str(), 0700) != 0)
            throw std::runtime_error("no device in the temporary folder");
        setenv("ZELTO_DEVICE", Device().c_str(), 1);
        setenv("XDG_STATE_HOME", path_.c_str(), 1);
    }
    ~TempDevice() {
        unsetenv("XDG_STATE_HOME");
        if (previous_.empty())
            unsetenv("ZELTO_DEVICE");
        else
            setenv("ZELTO_DEVICE", previous_.c_str(), 1);
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDevice(const TempDevice&) = delete;
    TempDevice& operator=(const TempDevice&) = delete;

    // The private folder: room for the test's own files.
    const std::string& Path() const { return path_; }
    // The device's folder within it.
    std::string Device() const { return path_ + "/device"; }

  private:
    std::string path_;
    std::string previous_;  // ZELTO_DEVICE before; empty: unset
};

}  // namespace zelto::test

#endif
