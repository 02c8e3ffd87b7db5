// zeltoport crc, against what gzip says of the same files.

#include <gtest/gtest.h>
#include <sstream>

#include "tests/tools/processes.h"

namespace zelto::test {
namespace {

// The CRC that gzip keeps of a file: the second word of the second line of its listing.
std::string GzipCrc(const std::string& path) {
    RunProgram({"gzip", "-kf", path});
    std::istringstream listing(RunProgram({"gzip", "-lv", path + ".gz"}).output);
    std::string words;
    std::getline(listing, words);
    listing >> words >> words;
    return words;
}

TEST(CrcCommand, ShowsWhatGzipShows) {
    const TempDevice device;
    std::string contents;
    for (const size_t size : {0, 1, 4096, 100'000}) {
        while (contents.size() < size)
            contents += static_cast<char>(contents.size() * contents.size() >> 7);
        const std::string path = device.Path() + "/a \xC3\xB1";
        WriteWholeFile(path, contents);
        const Outcome shown = Port({"crc", "show", path});
        EXPECT_EQ(shown.status, 0) << shown.output;
        EXPECT_EQ(shown.output, GzipCrc(path) + "  " + path + "\n");
    }
}

TEST(CrcCommand, SaysWhetherEachFileHolds) {
    const TempDevice device;
    const std::string path = device.Path() + "/a";
    const std::string missing = device.Path() + "/none";
    WriteWholeFile(path, "123456789");
    EXPECT_EQ(Port({"crc", "check", path}).status, 1);
    EXPECT_EQ(Port({"crc", "add", path}).output, "cbf43926  " + path + "\n");
    EXPECT_EQ(Port({"crc", "check", path, path}).status, 0);
    const Outcome both = Port({"--json", "crc", "check", path, missing});
    EXPECT_EQ(both.status, 2);
    EXPECT_NE(both.output.find("could not be read"), std::string::npos) << both.output;
}

}  // namespace
}  // namespace zelto::test
