// A folder of a test's own, and its files as bytes.

#ifndef ZELTO_TESTS_FILES_FILES_FIXTURE_H
#define ZELTO_TESTS_FILES_FILES_FIXTURE_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

#include "common/text/codepage.h"
#include "common/text/dstring.h"
#include "tests/support/temp_device.h"

namespace zelto::test {

struct FilesTest : ::testing::Test {
    ~FilesTest() override { SetCurrentCodepage(0); }
    std::string Host(const std::string& name) const { return folder.Path() + "/" + name; }
    DString Name(const std::string& name) const {
        std::string path = Host(name);
        std::replace(path.begin(), path.end(), '/', '\\');
        return path.c_str();
    }
    void Put(const std::string& name, const std::string& bytes) const {
        std::ofstream(Host(name), std::ios::binary) << bytes;
    }
    std::string Get(const std::string& name) const {
        std::ifstream in(Host(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    bool IsThere(const std::string& name) const { return std::filesystem::exists(Host(name)); }
    TempDevice folder;
};

}  // namespace zelto::test

#endif
