// What the wire lens makes of recordings, and what trace, why and doctor say of real programs.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <signal.h>

#include "platform/coredll/coredll.h"
#include "tests/tools/processes.h"
#include "tools/wire/explain.h"

namespace zelto::test {
namespace {

using coredll::WitnessEvent;
using coredll::WitnessKind;
using nlohmann::json;

constexpr uint32_t kClient = 10;
constexpr uint32_t kOther = 11;
constexpr uint32_t kNavigator = 20;

WitnessEvent At(int milliseconds, uint32_t process, WitnessKind kind, uint32_t code = 0,
                const char16_t* name = u"", const std::string& bytes = "") {
    WitnessEvent event;
    event.monotonic_ns = (1000 + int64_t{milliseconds}) * 1'000'000;
    event.kind = kind;
    event.process = process;
    event.code = code;
    event.name = name;
    event.bytes = bytes;
    event.size = static_cast<uint32_t>(bytes.size());
    if (kind == WitnessKind::kAnnounced || kind == WitnessKind::kTaken) {
        event.message = 17698;
        event.wparam = 15;
        event.lparam = milliseconds > 500 ? 6 : 5;  // generation 3 or 2
    }
    return event;
}

constexpr const char16_t* kTx = u"ZeltoApiMsgQ2_tx";
constexpr const char16_t* kRx = u"ZeltoApiMsgQ2_rx";

std::vector<WitnessEvent> Asked(uint32_t client = kClient) {
    return {At(0, client, WitnessKind::kQueueMade, 0, kTx),
            At(0, client, WitnessKind::kQueueMade, 1, kRx), At(0, client, WitnessKind::kAnnounced),
            At(0, client, WitnessKind::kWritten, 0, kTx, "S|1,2,,,0\n")};
}

TEST(Lens, TellsWhyACallFailed) {
    using enum WitnessKind;
    const WitnessEvent taken = At(3, kNavigator, kTaken);
    const WitnessEvent read = At(4, kNavigator, kRead, 0, kTx, "S|1,2,,,0\n");
    const WitnessEvent given_up = At(500, kClient, kTimedOut, 500, kRx);
    const auto replied = [](int at, const char* reply) {
        return At(at, kNavigator, kWritten, 0, kRx, reply);
    };
    const auto got = [](int at, uint32_t code, const char* reply) {
        return At(at, kClient, kRead, code, kRx, reply);
    };
    const struct {
        std::vector<WitnessEvent> events;
        int result;  // -1: none
        const char* why;
    } rows[] = {
        {{taken, read, replied(5, "A|0"), got(6, 0, "A|0")}, 0, ""},
        {{taken, read, replied(5, "B|304"), got(6, 0, "B|304")}, 304, "itself said 304"},
        {{taken, read, replied(5, "B|1007"), got(6, 0, "B|1007")}, 1007, "itself said 1007"},
        {{taken, read, replied(5, "X|y"), got(6, 0, "X|y")}, 9, "replied \"X|y\""},
        {{taken, read, replied(5, "A|..."), got(6, 122, "A|")},
         10,
         "5 bytes refused (122): the client has room for 2"},
        {{given_up}, 1007, "never taken: the navigator is busy"},
        {{At(500, kNavigator, kTaken)}, -1, "has not waited"},
        {{taken, given_up}, 1007, "the request was not read"},
        {{taken, read, given_up}, 1007, "20) was silent for the 500 ms"},
        {{taken, read, given_up, replied(703, "A|0")}, 1007, "after 703 ms, 203 ms too late"},
        {{taken, read, At(5, kNavigator, kRefused, 122, kRx, "A|long"), given_up},
         1007,
         "reply of 6 bytes was refused (122)"},
        {{taken, read, At(5, kNavigator, kWritten, 0, u"ZeltoApiMsgQ3_rx", "A|0"), given_up},
         1007,
         "20) replied to queues of generation 3, not 2"},
        {{taken, read, At(499, kNavigator, kProcessStopped), given_up}, 1007, "20) is stopped"},
        {{taken, read, given_up, At(501, kNavigator, kProcessDied)}, 1007, "ended before it"},
        {{taken, read, given_up, At(5000, kNavigator, kProcessDied)}, 1007, "was silent"},
        {{taken, read, At(9, kClient, kProcessDied)}, -1, "the client (process 10) ended"},
        {{taken, read, replied(5, "A|0"), At(6, kOther, kQueueOpened, 0, kTx),
          At(6, kOther, kQueueOpened, 1, kRx), At(6, kOther, kRead, 0, kRx, "A|0"), given_up},
         1007,
         "another client (process 11) took the reply"},
        // Announced again on fresh queues, and answered there.
        {{given_up, At(501, kClient, kQueueMade, 0, u"ZeltoApiMsgQ3_tx"),
          At(501, kClient, kQueueMade, 1, u"ZeltoApiMsgQ3_rx"), At(501, kClient, kAnnounced),
          At(600, kClient, kRead, 0, u"ZeltoApiMsgQ3_rx", "A|0")},
         0,
         ""},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        wire::Recording recording;
        recording.events = Asked();
        recording.events.insert(recording.events.end(), rows[i].events.begin(),
                                rows[i].events.end());
        const std::vector<wire::Exchange> exchanges = wire::Exchanges(recording);
        ASSERT_GE(exchanges.size(), 1u) << i;
        EXPECT_EQ(exchanges[0].Result().value_or(-1), rows[i].result) << i;
        const std::string why = wire::Why(exchanges[0]);
        EXPECT_NE(why.find(rows[i].why), why.npos) << i << " " << why;
        EXPECT_EQ(why.empty(), rows[i].result == 0) << i << " " << why;
    }
}

TEST(Lens, KeepsARecordingInAFileAndNamesADamagedLine) {
    const TempDevice device;
    const std::string path = device.Path() + "/r";
    wire::Recording recording{"/d", 3, Asked()};
    recording.events.push_back(At(1, kNavigator, WitnessKind::kRead, 122, kTx, "\x80\xFF|"));
    std::string why;
    ASSERT_TRUE(wire::Save(recording, path, why)) << why;
    wire::Recording back;
    ASSERT_TRUE(wire::Load(path, back, why)) << why;
    EXPECT_EQ(wire::ToJson(back), wire::ToJson(recording));
    EXPECT_EQ(back.events.back().bytes, "\x80\xFF|");
    const std::string whole = ReadWholeFile(path);
    const struct {
        std::string text;
        const char* why;
    } damaged[] = {
        {"", "empty"},
        {"{}\n", "line 1: no recording"},
        {"[]\n", "line 1: no JSON object"},
        {whole.substr(0, whole.size() - 9), "line 6: no line"},
        {whole + "{\"ns\":1,\"what\":\"sung\"}\n", "line 7: \"sung\" is no event"},
        {whole + "{\"ns\":1,\"what\":\"read\",\"code\":-1}\n", "line 7: \"code\" is out"}};
    for (const auto& row : damaged) {
        WriteWholeFile(path, row.text);
        EXPECT_FALSE(wire::Load(path, back, why)) << row.text;
        EXPECT_NE(why.find(row.why), why.npos) << why;
    }
    EXPECT_FALSE(wire::Save(recording, device.Path() + "/none/r", why));
}

void ExpectSays(const Outcome& outcome, int status, const std::string& words) {
    EXPECT_EQ(outcome.status, status) << outcome.output;
    EXPECT_NE(outcome.output.find(words), std::string::npos) << words << "\n" << outcome.output;
}

TEST(Workbench, SaysWhatBecameOfACall) {
    NavigatorTest test({"--delay-ms", "600", "--fault-for", "S"});
    EXPECT_EQ(Port({"goto", "1", "2"}).status, 5);
    ExpectSays(Port({"why"}), 0, "cannot be told");
    ExpectSays(Port({"record", "on"}), 0, "recording");
    EXPECT_EQ(Port({"route", "r"}).status, 0);
    EXPECT_EQ(Port({"goto", "1", "2"}).status, 5);
    for (int reply = 0; reply < 2; ++reply)
        test.navigator->ReadUntil("S|1");
    ExpectSays(Port({"record", "off"}), 0, "not recording");
    ExpectSays(Port({"why"}), 0, "ms too late");
    ExpectSays(Port({"trace"}), 0, "GotoRuta route=r -> 0, success");
    const json script = json::parse(Port({"trace", "--as-script"}).output);
    EXPECT_EQ(script.at("steps").back().at("request"), "S|1.0000000,2.0000000,,,0");
    const std::string file = test.device.Path() + "/kept";
    ExpectSays(Port({"record", "save", file}), 0, file);
    EXPECT_EQ(Port({"trace", "--json", file}).output, Port({"trace", "--json"}).output);
    EXPECT_EQ(Port({"record", "save", "/dev/full/x"}).status, 1);
    ExpectSays(Port({"doctor"}), 0, "code page    ok");
    kill(test.navigator->Pid(), SIGSTOP);
    EXPECT_EQ(Port({"--connect", "find", "exec", "1"}).status, 5);
    ExpectSays(Port({"why"}), 0, "is stopped");
    ExpectSays(Port({"doctor"}), 5, "process      BROKEN: announced, never taken");
}

TEST(Workbench, NamesTheBrokenLink) {
    const TempDevice device;
    ExpectSays(Port({"doctor"}), 4, "registry     BROKEN");
    EXPECT_EQ(Port({"device", "init", "--navigator", "/bin/false"}).status, 0);
    ExpectSays(Port({"doctor"}), 4, "ended at once with exit status 1");
}

}  // namespace
}  // namespace zelto::test
