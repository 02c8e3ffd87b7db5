// The page of a journal, as a browser's parser would take it apart.

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/tools/processes.h"

namespace zelto::test {
namespace {

nlohmann::json RecordingOf(const std::string& page) {
    const std::string open = "id=\"recording\">";
    const size_t begin = page.find(open) + open.size();
    return nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
}

TEST(Picture, HoldsEachRequestOfAJournalWithItsResult) {
    NavigatorTest test;
    EXPECT_EQ(Port({"goto", "42.5", "-2.25"}).status, 0);
    EXPECT_NE(Port({"waypoint", "delete", "</script><b>"}).status, 0);
    Port({"close"});
    test.navigator->Wait();
    const Outcome outcome = RunProgram({ZELTO_PORT_PROGRAM, "picture", test.Journal()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output.find("http"), outcome.output.find("http-equiv")) << "loads nothing";
    const nlohmann::json recording = RecordingOf(outcome.output);
    std::vector<std::string> seen;
    for (const auto& exchange : recording.at("exchanges"))
        seen.push_back(exchange["request"].get<std::string>() + " " +
                       std::to_string(exchange["result"].get<int>()));
    EXPECT_NE(std::ranges::find(seen, "S|42.5000000,-2.2500000,,,0 0"), seen.end());
    EXPECT_NE(std::ranges::find(seen, "N|</script><b> 304"), seen.end());
}

// Without a recording, and with the navigator's own word for what came before one.
TEST(Picture, OfADeviceShowsWhatItsNavigatorKnowsAndWhatItRemembers) {
    NavigatorTest test;
    Port({"waypoint", "add", "Plaza, a", "1", "2"});
    for (const Words& words : {Words{"waypoint", "add", "Plaza", "42.5", "-2.25", "--icon", "a,b"},
                               {"drive", "42.1,-2.2"},
                               {"record", "on"},
                               {"goto", "42.5", "-2.25"}})
        EXPECT_EQ(Port(words).status, 0);
    const nlohmann::json recording = RecordingOf(Port({"picture"}).output);
    EXPECT_EQ(recording.at("exchanges").back().at("request"), "S|42.5000000,-2.2500000,,,0");
    EXPECT_FALSE(recording.at("exchanges").back().at("events").empty());
    const nlohmann::json& now = recording.at("now");
    EXPECT_EQ(now.at("waypoints").size(), 1u);
    EXPECT_EQ(now.at("waypoints")[0].at("icon"), "a,b");
    EXPECT_EQ(now.at("position").at("latitude"), 42.1);
    EXPECT_EQ(now.at("track").size(), 1u);
    EXPECT_EQ(Port({"record", "save", test.device.Path() + "/kept"}).status, 0);
    const auto kept = RecordingOf(Port({"picture", test.device.Path() + "/kept"}).output);
    EXPECT_EQ(kept.at("exchanges")[1], recording.at("exchanges")[1]);
}

TEST(Picture, NamesTheLineThatIsNoEntry) {
    NavigatorTest test;
    EXPECT_EQ(Port({"goto", "1", "2"}).status, 0);
    Port({"close"});
    test.navigator->Wait();
    std::ofstream(test.Journal(), std::ios::app) << "{\"time\":1}\n";
    const Outcome outcome = RunProgram({ZELTO_PORT_PROGRAM, "picture", test.Journal()});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.output.find(", line "), std::string::npos) << outcome.output;
    EXPECT_EQ(outcome.output.find("<html"), std::string::npos) << "nothing half-written";
}

}  // namespace
}  // namespace zelto::test
