// What the witness tells of calls of several processes, living and dead.

#include "platform/coredll/linux/objects/witness.h"

#include <algorithm>

#include "tests/platform/shared_objects.h"

namespace zelto::test {
namespace {

using coredll::ReadWitness;
using coredll::RecordWitness;
using coredll::WitnessEvent;
using coredll::WitnessKind;
using coredll::WitnessReport;

using WitnessTest = SharedObjects;

WitnessReport Read(uint32_t from = 0) {
    WitnessReport report;
    EXPECT_TRUE(ReadWitness(report, from));
    return report;
}

HWND MakeWindow() {
    return CreateWindowExW(0, TEXT("w"), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                           nullptr);
}

TEST_F(WitnessTest, TellsEachStepOfAMessage) {
    HANDLE reader = OpenQueue(TEXT("q"), true);
    ASSERT_EQ(Read().next, 0u) << "nothing before it is asked for";
    ASSERT_TRUE(RecordWitness(true));
    HANDLE writer = OpenQueue(TEXT("q"), false);
    const std::string text(300, 't');
    WriteText(writer, text);
    ReadText(reader, 0, 200);
    ReadText(reader, 1);
    WriteText(writer, std::string(1025, 'x'));
    HWND window = MakeWindow();
    PostMessageW(window, 17698, 15, 7);
    MSG message;
    GetMessageW(&message, window, 0, 0);
    DestroyWindow(window);
    CloseMsgQueue(writer);
    struct {
        WitnessKind kind;
        uint32_t code;
        uint32_t size;
        const char16_t* name;
    } const expected[] = {
        {WitnessKind::kQueueOpened, 0, 0, u"q"},  {WitnessKind::kWritten, 0, 300, u"q"},
        {WitnessKind::kRead, 122, 200, u"q"},     {WitnessKind::kTimedOut, 1, 0, u"q"},
        {WitnessKind::kRefused, 122, 1025, u"q"}, {WitnessKind::kWindowMade, 0, 0, u"w"},
        {WitnessKind::kAnnounced, 0, 0, u""},     {WitnessKind::kTaken, 0, 0, u""},
        {WitnessKind::kWindowGone, 0, 0, u"w"},   {WitnessKind::kQueueClosed, 0, 0, u"q"},
    };
    const WitnessReport report = Read();
    ASSERT_EQ(report.events.size(), std::size(expected));
    int64_t before = 0;
    for (size_t i = 0; i < std::size(expected); ++i) {
        const WitnessEvent& event = report.events[i];
        EXPECT_EQ(event.kind, expected[i].kind) << i;
        EXPECT_EQ(event.code, expected[i].code) << i;
        EXPECT_EQ(event.size, expected[i].size) << i;
        EXPECT_EQ(event.name, expected[i].name) << i;
        EXPECT_EQ(event.process, static_cast<uint32_t>(getpid())) << i;
        EXPECT_GE(event.monotonic_ns, before) << i;
        before = event.monotonic_ns;
    }
    EXPECT_EQ(report.events[1].bytes, text.substr(0, coredll::kWitnessBytes));
    EXPECT_EQ(report.events[7].message, 17698u);
    EXPECT_EQ(report.events[7].lparam, 7u);
    RecordWitness(false);
    CloseMsgQueue(reader);
    EXPECT_EQ(Read().next, std::size(expected)) << "nothing after it was switched off";
}

TEST_F(WitnessTest, TellsWhoDiedAndWhoIsStopped) {
    RecordWitness(true);
    const pid_t child = Fork([] { return MakeWindow() != nullptr ? pause() : 1; });
    while (Report().windows.empty())
        usleep(1000);
    kill(child, SIGSTOP);
    while (Report().processes[1].stopped == false)
        usleep(1000);
    ReadText(OpenQueue(TEXT("q"), true), 1);
    Kill(child);
    Report();
    std::vector<WitnessKind> kinds;
    for (const WitnessEvent& event : Read().events) {
        if (event.process == static_cast<uint32_t>(child))
            kinds.push_back(event.kind);
    }
    const WitnessKind expected[] = {WitnessKind::kProcessJoined, WitnessKind::kWindowMade,
                                    WitnessKind::kProcessStopped, WitnessKind::kProcessDied};
    EXPECT_TRUE(std::equal(kinds.begin(), kinds.end(), std::begin(expected), std::end(expected)));
}

// Readable, and in order, whatever was overwritten and wherever a writer was killed.
TEST_F(WitnessTest, ForgetsTheOldestAndOutlivesItsWriters) {
    RecordWitness(true);
    HANDLE writer = OpenQueue(TEXT("q"), false);
    HANDLE reader = OpenQueue(TEXT("q"), true);
    for (int round = 0; round < 40; ++round) {
        const pid_t child = Fork([]() -> int {
            HANDLE own = OpenQueue(TEXT("other"), false);
            for (;;)
                WriteText(own, "text");
        });
        usleep(static_cast<useconds_t>(500 + round * 37));
        Kill(child);
        WriteText(writer, "mine");
        ReadText(reader);
    }
    const WitnessReport report = Read();
    EXPECT_EQ(report.lost, report.next - report.events.size());
    EXPECT_GT(report.events.size(), 40u);
    for (size_t i = 1; i < report.events.size(); ++i)
        EXPECT_LT(report.events[i - 1].number, report.events[i].number);
    EXPECT_EQ(Read(report.next - 2).events.size(), 2u);
    EXPECT_EQ(report.events.back().bytes, "mine");
}

}  // namespace
}  // namespace zelto::test
