// Scripts of the navigator, and commands that are run under them and under its faults.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/tools/processes.h"
#include "tools/zelto-navigator/script.h"

namespace zelto::test {
namespace {

using navigator::Fault;
using navigator::Script;
using navigator::Step;
using nlohmann::json;

TEST(Script, StrictOnesGoInTheirOrder) {
    Script script(R"({"steps": [ // comments are fine
        {"call": "goto", "arguments": {"latitude": 43, "longitude": "-4*"}, "reply": "A|1"},
        {"request": "f|home", "skip": 1, "times": 2, "fault": "late"}]})",
                  "s");
    EXPECT_EQ(script.Take("F|0\n"), nullptr);
    const Step* step = script.Take("S|43.0000000,-4.5000000,,,0\n");
    ASSERT_NE(step, nullptr);
    EXPECT_EQ(step->reply, "A|1");
    EXPECT_EQ(script.Take("S|43.0000000,-4.5000000,,,0\n"), nullptr);
    EXPECT_EQ(script.Take("f|home\n"), nullptr) << "passed";
    step = script.Take("f|home\n");
    ASSERT_NE(step, nullptr);
    EXPECT_EQ(step->fault, Fault::kLate);
    EXPECT_EQ(step->delay, 700u);
    const std::vector<std::string> complaints = script.Complaints();
    ASSERT_EQ(complaints.size(), 2u);
    EXPECT_EQ(complaints[0],
              "the request S|43.0000000,-4.5000000,,,0 was not expected: the nearest step is that "
              "of s, line 3 (f|home): it is f|home");
    EXPECT_EQ(complaints[1], "the step of s, line 3 (f|home) was used 1 times of 2");
}

TEST(Script, OthersMeetTheFirstStepThatFits) {
    Script script(R"({"strict": false, "steps": [{"call": "goto", "fault": "refuse=7", "times": 1},
                      {"fault": "silent"}]})",
                  "s");
    EXPECT_EQ(script.Take("S|1,2,,,0")->refusal, 7);
    EXPECT_EQ(script.Take("S|1,2,,,0")->fault, Fault::kSilent);
    EXPECT_EQ(script.Take("F|0")->fault, Fault::kSilent);
    EXPECT_EQ(script.TakeAnnouncement(), nullptr);
    EXPECT_TRUE(script.Complaints().empty());
}

TEST(Script, SaysWhereItCannotBeRead) {
    const struct {
        const char* text;
        const char* why;
    } rows[] = {
        {"", "s, line 1: this is no JSON"},
        {"{\"steps\":\n[}", "s, line 2: this is no JSON"},
        {"[]", "line 1: a script is an object"},
        {"{\"steps\":[],\"stric\":true}", "\"stric\"; the nearest is \"strict\""},
        {"{\"steps\":[\n{\"request\":\"F|0\"},\n/* [{\n */{\"cal\":1}]}", "line 4: there is no"},
        {"{\"steps\":[{}]}", "a \"request\" or a \"call\""},
        {"{\"steps\":[{\"call\":\"gotoo\"}]}", "the nearest is \"goto\""},
        {"{\"steps\":[{\"call\":\"goto\",\"arguments\":{\"lat\":1}}]}", "nearest is \"latitude\""},
        {"{\"steps\":[{\"request\":\"x\",\"fault\":\"lat\"}]}", "the nearest is \"late\""},
        {"{\"steps\":[{\"request\":\"x\",\"times\":-1}]}", "\"times\" is no whole number"},
    };
    for (const auto& row : rows) {
        try {
            Script(row.text, "s");
            ADD_FAILURE() << row.text;
        } catch (const navigator::ScriptError& error) {
            EXPECT_NE(std::string(error.what()).find(row.why), std::string::npos) << error.what();
        }
    }
}

Outcome Shell(const std::string& line) {
    const std::string folder = std::filesystem::path(ZELTO_PORT_PROGRAM).parent_path();
    return RunProgram({"sh", "-c", "PATH=" + folder + ":$PATH; " + line});
}

TEST(Workbench, RunsACommandUnderAScriptOrAFault) {
    const TempDevice device;
    const std::string script = std::string(ZELTO_SOURCE_DIR) + "/examples/first_client.json";
    const struct {
        std::string line;
        int status;
        const char* words;
    } rows[] = {
        {"zeltoport run --script " + script + " -- " ZELTO_FIRST_CLIENT_CPP, 0, "on the way"},
        {"zeltoport run --script " + script + " -- zeltoport goto 3 4", 1,
         "latitude is 3.0000000, not 42.8467"},
        {"zeltoport run --fault late --time-scale 20 -- " ZELTO_FIRST_CLIENT_CPP "; zeltoport why",
         3, "ms too late"},
        {"zeltoport run --fault silent --fault-for goto --fault-times 1 --time-scale 20 -- "
         "sh -c 'zeltoport goto 1 2; zeltoport goto 1 2'",
         0, "Goto: 0 (success)"},
        {"zeltoport run -- sh -c 'kill -SEGV $$'", 139, "the recording is kept in"},
        {"zeltoport run -- no-such-program", 127, "No such file"},
        {"zeltoport run --fault lat -- true", 2, "the nearest is \"late\""},
    };
    for (const auto& row : rows) {
        const Outcome outcome = Shell(row.line);
        EXPECT_NE(outcome.output.find(row.words), std::string::npos) << row.line << outcome.output;
        EXPECT_EQ(outcome.status, row.line.ends_with("why") ? 0 : row.status) << row.line;
    }
}

TEST(Workbench, JudgesHowACommandTakesEachFault) {
    const TempDevice device;
    const auto torture = [&](const std::string& options, const std::string& command) {
        const Outcome outcome =
            Shell("zeltoport --json torture --time-scale 50 " + options + " -- " + command);
        std::map<std::string, int> counts = {{"exit", outcome.status}};
        const json report = json::parse(outcome.output);
        for (const json& fault : report.at("faults"))
            ++counts[fault.at("outcome").get<std::string>()];
        return counts;
    };
    using Counts = std::map<std::string, int>;
    const std::string junit = device.Path() + "/t.xml";
    EXPECT_EQ(torture("--junit " + junit, ZELTO_FIRST_CLIENT_CPP),
              (Counts{{"exit", 0}, {"handled", 15}}));
    EXPECT_NE(ReadWholeFile(junit).find("tests=\"15\" failures=\"0\""), std::string::npos);
    EXPECT_EQ(torture("", "sh -c 'zeltoport --quiet goto 1 2 2>/dev/null; true'"),
              (Counts{{"exit", 1}, {"handled", 1}, {"wrong success", 14}}));
    EXPECT_EQ(torture("", "true"), (Counts{{"exit", 1}, {"not reached", 15}}));
    EXPECT_EQ(torture("", "sh -c 'kill -ABRT $$'"), (Counts{{"exit", 1}, {"crash", 15}}));
    EXPECT_EQ(torture("--limit 0.2", "sleep 9"), (Counts{{"exit", 1}, {"hang", 15}}));
    WriteWholeFile(device.Path() + "/e", "{\"late\": \"handeld\"}");
    EXPECT_EQ(Shell("zeltoport torture --expect " + device.Path() + "/e -- true").status, 2);
}

}  // namespace
}  // namespace zelto::test
