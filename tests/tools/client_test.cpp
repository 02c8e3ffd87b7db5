// zeltoport and a running navigator: two processes and the shared library between them.

#include <cstring>
#include <filesystem>
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
    EXPECT_NE(bad.output.find("line 2: 306 ("), std::string::npos) << bad.output;
    EXPECT_NE(bad.output.find("199 sentences taken, 1 not"), std::string::npos) << bad.output;
}

TEST(Client, ExamplesRunAndTheReadmeShowsThem) {
    const NavigatorTest test;
    const Outcome first = RunProgram({ZELTO_FIRST_CLIENT_CPP});
    EXPECT_EQ(first.status, 0);
    EXPECT_EQ(first.output, "on the way to 42.846700,-2.672700,0\n");
    const Outcome second = RunProgram({ZELTO_FIRST_CLIENT_C});
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output, "result 0, position 42.846700,-2.672700\n");
    const std::string source = std::string(ZELTO_SOURCE_DIR);
    const std::string readme = ReadWholeFile(source + "/README.md");
    for (const char* example :
         {"cpp\n/first_client.cpp", "c\n/first_client.c", "python\n/python/first_client.py"}) {
        const std::string fence(example, std::strchr(example, '/'));
        const std::string file = ReadWholeFile(source + "/examples" + std::strchr(example, '/'));
        EXPECT_NE(readme.find("```" + fence + file + "```"), std::string::npos) << example;
    }
}

TEST(Client, EachExitStatusHasItsCase) {
    NavigatorTest test({"--silent", "--fault-for", "S"});
    EXPECT_EQ(RunProgram({"sh", "-c", ZELTO_PORT_PROGRAM " get version 2>/dev/null"}).output,
              "zelto-navigator " ZELTO_VERSION "\n");
    EXPECT_EQ(Port({"coverage"}).status, 1);
    EXPECT_EQ(RunProgram({"sh", "-c", ZELTO_PORT_PROGRAM " device show >/dev/full"}).status, 1);
    EXPECT_EQ(Port({"goto", "1", "2"}).status, 5);
    EXPECT_EQ(Port({"goto", "1", "2", "--connect", "none"}).status, 6);
    {
        Program holder({"flock", test.device.Device() + "/turn.lock", "-c", "echo held; sleep 9"});
        holder.ReadUntil("held");
        EXPECT_EQ(Port({"--wait", "0", "is-open"}).status, 7);
        RunProgram({"pkill", "-P", std::to_string(holder.Pid())});
    }
    EXPECT_EQ(Port({"--quiet", "is-open"}).output, "");
    test.navigator->Kill();
    test.navigator->Wait();
    EXPECT_EQ(Port({"is-open"}).status, 4);
    std::filesystem::remove_all(test.device.Device());
    EXPECT_EQ(Port({"is-open"}).status, 3);
}

// The reply of the first run is due when it has gone; it must reach nobody.
TEST(Client, ALateReplyReachesNoOtherRun) {
    const NavigatorTest test({"--delay-ms", "900", "--fault-for", "f"});
    EXPECT_EQ(Port({"--connect", "find", "route", "late"}).status, 5);
    const Outcome next = Port({"--connect", "find", "get", "route"});
    EXPECT_TRUE(next.status == 5 || next.output.starts_with("late\n")) << next.output;
}

TEST(Client, EachDescribedCommandShowsItsResult) {
    const TempDevice device;
    const std::string folder = std::filesystem::path(ZELTO_PORT_PROGRAM).parent_path();
    const json described = json::parse(Port({"describe", "--json"}).output);
    EXPECT_EQ(described.at("calls").size(), 26u);
    for (const json& result : described.at("results")) {
        EXPECT_NE(result.contains("command"), result.contains("why_not")) << result;
        EXPECT_FALSE(result.at("causes").empty()) << result;
        if (!result.contains("command"))
            continue;
        const TempDevice fresh;
        ASSERT_EQ(Port({"device", "init"}).status, 0);
        const std::string line = "cd " + fresh.Path() + "; PATH=" + folder + ":$PATH; " +
                                 result.at("command").get<std::string>();
        const std::string output = RunProgram({"sh", "-c", line}).output;
        EXPECT_NE(output.find(" " + result.at("code").dump() + " ("), std::string::npos)
            << line << "\n"
            << output;
    }
}

TEST(Client, SaysWhatIsWrongWithTheCommandLine) {
    const TempDevice device;
    for (const Words& arguments : {Words{},
                                   {"goto", "1"},
                                   {"goto", "1", "north"},
                                   {"goto", "nan", "2"},
                                   {"goto", "1", "inf"},
                                   {"--connect", "maybe", "init"},
                                   {"describe", "nothing"},
                                   {"run", "--fault", "none", "--", "true"},
                                   {"waypoint"}})
        EXPECT_EQ(Port(arguments).status, 2);
    const struct {
        Words arguments;
        const char* words;
    } unknown[] = {{{"gotoo", "1", "2"}, "\"gotoo\" is no subcommand; the nearest is \"goto\""},
                   {{"waypoint", "ad"}, "\"ad\" is no subcommand; the nearest is \"add\""},
                   {{"route", "--narow", "x"}, "nearest is \"--narrow\""}};
    for (const auto& each : unknown)
        EXPECT_NE(Port(each.arguments).output.find(each.words), std::string::npos) << each.words;
    const json usage = json::parse(Port({"gotoo", "--json"}).output);
    EXPECT_EQ(usage.at("status"), 2);
    EXPECT_EQ(usage.at("schema"), 1);
    EXPECT_EQ(usage.at("command"), "");
    const Outcome narrow = Port({"route", "\xFF"});
    EXPECT_EQ(narrow.status, 2);
    EXPECT_NE(narrow.output.find("is not UTF-8"), std::string::npos) << narrow.output;
}

}  // namespace
}  // namespace zelto::test
