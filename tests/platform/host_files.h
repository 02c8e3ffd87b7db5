// Files of a test's own, made and looked at past the layer under test.

#ifndef ZELTO_TESTS_PLATFORM_HOST_FILES_H
#define ZELTO_TESTS_PLATFORM_HOST_FILES_H

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/resource.h>

#include "platform/coredll/coredll.h"
#include "tests/platform/outcome.h"
#include "tests/support/temp_device.h"

namespace zelto::test {

class HostFiles : public testing::Test {
  protected:
    std::string Host(const std::string& name) const { return device_.Path() + "/" + name; }
    std::u16string Wide(const std::string& name) const { return WidePath(Host(name)); }
    void Put(const std::string& name, const std::string& text = "") const {
        std::ofstream(Host(name), std::ios::binary) << text;
    }
    std::string Get(const std::string& name) const {
        std::ifstream in(Host(name), std::ios::binary);
        return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(missing)";
    }
    // Closes the file again where `file` is null.
    static std::string Open(const std::u16string& name, DWORD access, DWORD share,
                            DWORD disposition, HANDLE* file = nullptr) {
        HANDLE opened = nullptr;
        std::string outcome = Outcome([&] {
            opened = CreateFileW(name.c_str(), access, share, nullptr, disposition, 0, nullptr);
            return opened != INVALID_HANDLE_VALUE;
        });
        if (file != nullptr)
            *file = opened;
        else if (opened != INVALID_HANDLE_VALUE)
            CloseHandle(opened);
        return outcome;
    }

    TempDevice device_;
};

// While it lives no file of this process grows beyond the size, as on a full disk.
class SizeLimit {
  public:
    explicit SizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }

  private:
    rlimit before_{};
};

}  // namespace zelto::test

#endif
