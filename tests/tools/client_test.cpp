// zeltoport and a running navigator: two processes and the shared library between them.

#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>

#include "platform/coredll/coredll.h"
#include "tests/tools/processes.h"

namespace zelto::test {
namespace {

using nlohmann::json;

json LastEntry(const NavigatorTest& test) {
    const std::string text = ReadWholeFile(test.Journal());
    const size_t end = text.rfind('\n');
    return json::parse(text.substr(text.rfind('\n', end - 1) + 1));
}

// The last request in the journal. The navigator writes it behind its reply, so the client may be
// back before.
std::string AwaitEntry(const NavigatorTest& test, const std::string& expected) {
    std::string bytes;
    for (int i = 0; i < 2000 && bytes != expected; ++i) {
        if (i > 0)
            Sleep(1);
        bytes = LastEntry(test).at("bytes");
    }
    return bytes;
}

struct Row {
    Words arguments;
    std::string call;   // the export named in the outcome
    int result;         // its result
    std::string bytes;  // the request line; empty: none was sent
    std::string words;  // what the outcome must hold besides
};

void ExpectRow(const NavigatorTest& test, const Row& row) {
    const Outcome outcome = Port(row.arguments);
    const std::string head = row.call + ": " + std::to_string(row.result) + " (";
    EXPECT_EQ(outcome.output.substr(0, head.size()), head) << outcome.output;
    EXPECT_EQ(outcome.status, row.result == 0 ? 0 : 1) << row.call;
    EXPECT_NE(outcome.output.find(row.words), std::string::npos) << outcome.output;
    if (!row.bytes.empty()) {
        EXPECT_EQ(AwaitEntry(test, row.bytes), row.bytes) << row.call;
    }
}

TEST(Client, ReachesEveryExport) {
    const NavigatorTest test;
    const std::string map = test.device.Path() + "/mapa ñ.itv";
    const std::string sentence = "$GPGGA,1,4200.0,N,1.0,E,1,07,1,1,M,1,M,,*5C\n";
    WriteWholeFile(map, "map");
    WriteWholeFile(test.device.Path() + "/nmea", sentence);
    const Row rows[] = {
        {{"init"}, "ZeltoNavPort_Init", 0, "F|0\n", "success"},
        {{"is-open"}, "ZeltoNavPort_IsOpen", 0, "", "success"},
        {{"minimize"}, "ZeltoNavPort_Minimize", 0, "", ""},
        {{"show"}, "ZeltoNavPort_Show", 0, "", ""},
        {{"open", map}, "ZeltoNavPort_OpenFile", 0, "D|" + map + "\n", ""},
        {{"open", "--narrow", "/bin/sh"}, "ZeltoNavPort_OpenFile (8-bit)", 0, "D|/bin/sh\n", ""},
        {{"open", "/ñ"}, "ZeltoNavPort_OpenFile", 305, "D|/ñ\n", "does not exist"},
        {{"waypoint", "add", "casa", "42.5", "-2.5", "7", "--description", "d", "--icon", "ñ"},
         "ZeltoNavPort_New_Waypoint",
         0,
         "M|casa,d,42.500000,-2.500000,7.000000,ñ\n",
         ""},
        {{"waypoint", "add", "--narrow", "ñu", "1", "2"},
         "ZeltoNavPort_New_WaypointA",
         0,
         "M|ñu,,1.000000,2.000000,0.000000,\n",
         ""},
        {{"waypoint", "delete", "casa"}, "ZeltoNavPort_Delete_Waypoint", 0, "N|casa\n", ""},
        {{"waypoint", "delete", "--narrow", "x"},
         "ZeltoNavPort_Delete_WaypointA",
         304,
         "N|x\n",
         ""},
        {{"center", "1.5", "2"},
         "ZeltoNavPort_CenterCoordinate",
         0,
         "O|1.500000,2.000000,0.000000\n",
         ""},
        {{"exec", "-5"}, "ZeltoNavPort_ExecCommand", 310, "I|-5\n", "no command"},
        {{"goto", "42.5", "-2.25"}, "ZeltoNavPort_Goto", 0, "S|42.5000000,-2.2500000,,,0\n", ""},
        {{"goto", "1", "2", "x"}, "ZeltoNavPort_Goto", 0, "S|1.0000000,2.0000000,,,1\n", ""},
        {{"goto", "1", "2", "x", "--narrow"},
         "ZeltoNavPort_GotoA",
         0,
         "S|1.0000000,2.0000000,,,x\n",
         ""},
        {{"street"}, "ZeltoNavPort_PositionStreet", 308, "e|0\n", "B|308"},
        {{"nmea", test.device.Path() + "/nmea"},
         "ZeltoNavPort_NewPoint_nmea",
         0,
         "E|" + sentence,
         "1 sentences taken, 0 not"},
        {{"nmea", "--narrow", test.device.Path() + "/nmea"},
         "ZeltoNavPort_NewPoint_nmeaA",
         0,
         "E|" + sentence,
         ""},
        {{"route", "ñ"}, "ZeltoNavPort_GotoRuta", 0, "f|ñ\n", ""},
        {{"route", "x", "--narrow"}, "ZeltoNavPort_GotoRutaA", 0, "f|x\n", ""},
        {{"message-box", "ñ", "b", "1", "-2"}, "ZeltoNavPort_MessageBox", 0, "T|1|ñ|b|1|-2\n", ""},
        {{"message-box", "--narrow", "a", "b"}, "ZeltoNavPort_MessageBoxA", 0, "T|1|a|b|0|0\n", ""},
        {{"coverage"}, "ZeltoNavPort_Cobertura", 0, "a|0\n", ""},
        {{"get", "position"},
         "ZeltoNavPort_GetString",
         0,
         "F|position\n",
         "42.000000,0.016667,1.0"},
        {{"street"}, "ZeltoNavPort_PositionStreet", 0, "e|0\n", "A|42.000000,0.016667"},
        {{"street", "--narrow"}, "ZeltoNavPort_PositionStreetA", 1, "", "not supported"},
        {{"close"}, "ZeltoNavPort_CloseZeltoNav", 0, "R|0\n", ""},
    };
    for (const Row& row : rows)
        ExpectRow(test, row);
    const std::string watched = test.navigator->ReadUntil("closed");
    for (const char* line : {"\nwindow brought to the front\n", "\nwindow minimised\n",
                             "\nwindow restored\n", "#3 Goto: S|1.0000000,2.0000000,,,x\\n -> A|0"})
        EXPECT_NE(watched.find(line), std::string::npos) << line;
    EXPECT_EQ(test.navigator->Wait(), 0);
    EXPECT_EQ(Port({"version"}).output, "ZeltoNavPort_Version: interface version 4\n");
}

TEST(Client, PrintsJsonOnRequest) {
    const NavigatorTest test;
    const json good = json::parse(Port({"get", "version", "--json"}).output);
    EXPECT_EQ(good.at("export"), "ZeltoNavPort_GetString");
    EXPECT_EQ(good.at("result"), 0);
    EXPECT_TRUE(good.at("text").get<std::string>().starts_with("zelto-navigator 4"));
    const Outcome bad = Port({"--json", "coverage"});
    EXPECT_EQ(json::parse(bad.output).at("result"), 308);
    EXPECT_EQ(bad.status, 1);
    const json device = json::parse(Port({"device", "show", "--json"}).output);
    EXPECT_EQ(device.at("directory"), test.device.Device());
    EXPECT_EQ(device.at("navigator"), "\\bin\\false");
    const json& window = device.at("store").at("windows").at(0);
    EXPECT_EQ(window.at("class"), "ZELTOPOCKETMAINW");
    EXPECT_EQ(window.at("pid"), test.navigator->Pid());
    EXPECT_EQ(device.at("store").at("processes").size(), 2u);
    EXPECT_TRUE(device.at("store").at("queues").empty());
    EXPECT_NE(Port({"device", "show"}).output.find("window ZELTOPOCKETMAINW \"Zelto navigator\""),
              std::string::npos);
}

TEST(Client, JournalSurvivesTextsOfAnyBytes) {
    const NavigatorTest test;
    EXPECT_EQ(Port({"route", "--narrow", "\xFF|\x1B"}).status, 0);
    EXPECT_EQ(AwaitEntry(test, "f|\uFFFD|\x1B\n"), "f|\uFFFD|\x1B\n");
    const json entry = LastEntry(test);
    EXPECT_EQ(entry.at("hex"), "667cff7c1b0a");
    EXPECT_EQ(entry.at("generation"), 3);
    EXPECT_EQ(entry.at("reply"), "A|0");
    EXPECT_GT(entry.at("microseconds"), 0);
    EXPECT_EQ(entry.at("time").get<std::string>().size(), 24u);
    EXPECT_NE(test.navigator->ReadUntil("A|0").find("f|\\xff|\\x1b\\n"), std::string::npos);
}

TEST(Client, FeedsTheDriveAndCountsWhatIsRefused) {
    const NavigatorTest test;
    const std::string drive = std::string(ZELTO_SOURCE_DIR) + "/examples/drive.nmea";
    const Outcome good = Port({"nmea", drive});
    EXPECT_EQ(good.status, 0) << good.output;
    EXPECT_NE(good.output.find("200 sentences taken, 0 not"), std::string::npos) << good.output;
    EXPECT_NE(Port({"get", "fix"}).output.find("valid 150510 093139.000"), std::string::npos);

    std::string damaged = ReadWholeFile(drive);
    damaged[20] ^= 1;
    const std::string copy = test.device.Path() + "/damaged";
    WriteWholeFile(copy, "\r\n" + damaged);
    const Outcome bad = Port({"nmea", "-"}, copy);
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.output.find(": 306 ("), std::string::npos) << bad.output;
    EXPECT_NE(bad.output.find("199 sentences taken, 1 not"), std::string::npos) << bad.output;
}

TEST(Client, ExamplesRunAndTheReadmeShowsTheFirst) {
    const NavigatorTest test;
    const Outcome first = RunProgram({ZELTO_FIRST_CLIENT_CPP});
    EXPECT_EQ(first.status, 0);
    EXPECT_EQ(first.output, "on the way to 42.846700,-2.672700,0\n");
    const Outcome second = RunProgram({ZELTO_FIRST_CLIENT_C});
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output, "result 0, position 42.846700,-2.672700\n");
    const std::string source = std::string(ZELTO_SOURCE_DIR);
    EXPECT_NE(ReadWholeFile(source + "/README.md")
                  .find("```cpp\n" + ReadWholeFile(source + "/examples/first_client.cpp") + "```"),
              std::string::npos);
}

TEST(Client, SaysWhatIsWrongWithTheCommandLine) {
    const TempDevice device;
    for (const Words& arguments : {Words{},
                                   {"goto", "1"},
                                   {"goto", "1", "north"},
                                   {"fly"},
                                   {"--connect", "maybe", "init"},
                                   {"waypoint"}})
        EXPECT_GT(Port(arguments).status, 100);
    const Outcome narrow = Port({"route", "\xFF"});
    EXPECT_EQ(narrow.status, 2);
    EXPECT_NE(narrow.output.find("is not UTF-8"), std::string::npos) << narrow.output;
}

}  // namespace
}  // namespace zelto::test
