// The two channels: what is called, in which order, how long it takes and what comes of it.

#include "plugins/zelto_port_dll/transport.h"
#include "tests/port/port_fixture.h"

namespace zelto::test {
namespace {

using Lines = std::vector<std::string>;

TEST_F(PortTest, EachRequestHasAQueuePairOfItsOwn) {
    Scripted().reads = {{"A|"}, {"A|"}};
    EXPECT_EQ(ZeltoNavPort_ExecCommand(1), 0);
    EXPECT_EQ(ZeltoNavPort_ExecCommand(2), 0);
    EXPECT_EQ(Scripted().calls, (Lines{
                                    "CreateMsgQueue ZeltoApiMsgQ2_tx 20 2 20 1024 0",
                                    "CreateMsgQueue ZeltoApiMsgQ2_rx 20 2 20 1024 1",
                                    "PostMessageW 17698 15 5",
                                    "WriteMsgQueue ZeltoApiMsgQ2_tx 4 4000 0",
                                    "ReadMsgQueue ZeltoApiMsgQ2_rx 1000 500",
                                    "CloseMsgQueue ZeltoApiMsgQ2_tx",
                                    "CloseMsgQueue ZeltoApiMsgQ2_rx",
                                    "CreateMsgQueue ZeltoApiMsgQ3_tx 20 2 20 1024 0",
                                    "CreateMsgQueue ZeltoApiMsgQ3_rx 20 2 20 1024 1",
                                    "PostMessageW 17698 15 6",
                                    "WriteMsgQueue ZeltoApiMsgQ3_tx 4 4000 0",
                                    "ReadMsgQueue ZeltoApiMsgQ3_rx 1000 500",
                                }));
    EXPECT_EQ(Scripted().open.size(), 2u);
}

TEST_F(PortTest, AKeptQueuePairHasAShorterWriteTimeout) {
    EXPECT_EQ(SendOnQueue("x", 1, 1), 0);
    g_connection.reconnect_every_request = 0;
    Scripted().calls.clear();
    EXPECT_EQ(SendOnQueue("x", 1, 0), 0);
    EXPECT_EQ(SendOnQueue("x", 1, 1), 0);
    EXPECT_EQ(CallsOf({"PostMessageW", "WriteMsgQueue"}),
              (Lines{"PostMessageW 17698 15 3", "WriteMsgQueue ZeltoApiMsgQ2_tx 1 300 0",
                     "PostMessageW 17698 15 6", "WriteMsgQueue ZeltoApiMsgQ3_tx 1 300 0"}));
}

TEST_F(PortTest, GenerationWrapsRound) {
    g_connection.generation = INT32_MAX;
    EXPECT_EQ(SendOnQueue("x", 1, 0), 0);
    EXPECT_EQ(g_connection.generation, INT32_MIN);
}

TEST_F(PortTest, QueueFailuresHaveTheirCodesAndWaits) {
    const struct {
        std::deque<DWORD> writes;
        std::deque<ScriptedRead> reads;
        bool post;
        int32_t result;
        uint32_t clock;
    } cases[] = {
        {{}, {{"A|"}}, true, 0, 0},
        {{}, {}, true, 1007, 500},
        {{}, {{"", 233}}, true, 11, 0},
        {{}, {{"", 6}}, true, 10, 0},
        {{}, {}, false, 12, 0},
        {{233}, {}, true, 233, 0},
        {{1460}, {{"A|"}}, true, 0, 4000 + 3000},
        {{1460, 1460}, {}, true, -1460, 4000 + 3000 + 4000},
        {{1460, 6}, {}, true, -6, 4000 + 3000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.result);
        Restart();
        Scripted().write_errors = c.writes;
        Scripted().reads = c.reads;
        Scripted().post_succeeds = c.post;
        EXPECT_EQ(ZeltoNavPort_Cobertura(), c.result);
        EXPECT_EQ(Scripted().clock, c.clock);
    }
}

TEST_F(PortTest, LongWaitReadsFiveTimesAndAnnouncesAfreshFromTheSecondTimeoutOn) {
    g_connection.long_wait = 1;
    Scripted().takes_null_message = true;
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 1007);
    EXPECT_EQ(Scripted().clock, 5 * 500u);
    EXPECT_EQ(CallsOf({"PostMessageW", "WriteMsgQueue", "ReadMsgQueue"}),
              (Lines{
                  "PostMessageW 17698 15 5",
                  "WriteMsgQueue ZeltoApiMsgQ2_tx 4 4000 0",
                  "ReadMsgQueue ZeltoApiMsgQ2_rx 1000 500",
                  "ReadMsgQueue ZeltoApiMsgQ2_rx 1000 500",
                  "PostMessageW 17698 15 6",
                  "WriteMsgQueue ZeltoApiMsgQ3_tx 4 4000 0",
                  "ReadMsgQueue ZeltoApiMsgQ3_rx 1000 500",
                  "PostMessageW 17698 15 7",
                  "WriteMsgQueue ZeltoApiMsgQ4_tx 4 4000 0",
                  "ReadMsgQueue ZeltoApiMsgQ4_rx 1000 500",
                  "PostMessageW 17698 15 8",
                  "WriteMsgQueue ZeltoApiMsgQ5_tx 4 4000 0",
                  "ReadMsgQueue ZeltoApiMsgQ5_rx 1000 500",
                  "PostMessageW 17698 15 9",
                  "WriteMsgQueue ZeltoApiMsgQ6_tx 4 4000 0",
              }));

    Restart();
    g_connection.long_wait = 1;  // here the system takes no message without bytes
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 87);
    EXPECT_EQ(Scripted().clock, 2 * 500u);

    Restart();
    g_connection.long_wait = 1;
    Scripted().reads = {{"", 1460}, {"A|"}};
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 0);
    EXPECT_EQ(Scripted().requests.size(), 1u);
}

TEST_F(PortTest, ANullCommandLeavesTheBarOut) {
    char reply[16];
    uint32_t bytes_read = 99;
    Scripted().reads = {{"A|"}};
    EXPECT_EQ(Transact(nullptr, "args", reply, sizeof(reply), bytes_read), 0);
    EXPECT_EQ(Scripted().requests, Lines{"args\n"});
    EXPECT_EQ(bytes_read, 2u);
}

class PacketFileTest : public PortTest {
  protected:
    static void Select() {
        Restart();
        g_connection.queue_channel = 0;
        std::char_traits<WCHAR>::copy(g_connection.folder, u"\\nav", 5);
        Scripted().files["\\nav\\PACKETRX.DAT"] = "A|";
    }
};

TEST_F(PacketFileTest, ExchangesFilesAndAnEvent) {
    Select();
    EXPECT_EQ(ZeltoNavPort_ExecCommand(1), 0);
    EXPECT_EQ(ZeltoNavPort_ExecCommand(23), 0);
    EXPECT_EQ(Scripted().files["\\nav\\PACKETTX.DAT"], "I|23\n");
    const Lines& calls = Scripted().calls;
    ASSERT_EQ(calls.size(), 10u + 9u);  // the event is made once
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + 10),
              (Lines{
                  "CreateFileW \\nav\\PACKETTX.DAT 3221225472 1 2 128",
                  "WriteFile \\nav\\PACKETTX.DAT 4",
                  "CloseHandle \\nav\\PACKETTX.DAT",
                  "CreateEventW EventZeltoAPI 0 0",
                  "EventModify EventZeltoAPI 2",
                  "PostMessageW 17698 15 3",
                  "WaitForSingleObject EventZeltoAPI 1000",
                  "CreateFileW \\nav\\PACKETRX.DAT 3221225472 1 3 128",
                  "ReadFile \\nav\\PACKETRX.DAT 1000",
                  "CloseHandle \\nav\\PACKETRX.DAT",
              }));
    EXPECT_EQ(Scripted().open.size(), 1u);  // the event
}

TEST_F(PacketFileTest, FailuresHaveTheirCodesAndCloseTheirFiles) {
    const struct {
        int32_t result;
        uint32_t clock;
        void (*script)();
    } cases[] = {
        {5, 0, [] { Scripted().read_only_folder = "\\nav"; }},
        {6, 0, [] { Scripted().file_writes_succeed = false; }},
        {2007, 1000, [] { Scripted().wait_result = WAIT_TIMEOUT; }},
        {2007, 10000,
         [] {
             Scripted().wait_result = WAIT_TIMEOUT;
             g_connection.long_wait = 1;
         }},
        {88, 0, [] { Scripted().files.clear(); }},
        {9, 0, [] { Scripted().file_reads_succeed = false; }},
        {0, 0, [] { Scripted().post_succeeds = false; }},
        {0, 0, [] { Scripted().wait_result = WAIT_FAILED; }},
        {2, 0, [] { Scripted().files["\\nav\\PACKETRX.DAT"] = "A"; }},
        {6, 0, [] { g_connection.transport_enabled = 0; }},
        {9, 0,
         [] {
             g_connection.transport_enabled = 0;
             Scripted().invalid_file_works = true;
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        Select();
        c.script();
        EXPECT_EQ(ZeltoNavPort_Cobertura(), c.result);
        EXPECT_EQ(Scripted().clock, c.clock);
        EXPECT_EQ(Scripted().open.size(), g_connection.reply_event != nullptr ? 1u : 0u);
    }
}

TEST_F(PacketFileTest, TheReplyIsTerminatedOnePastItsBytes) {
    Select();
    Scripted().files["\\nav\\PACKETRX.DAT"] = std::string(1001, 'A');
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 0);  // the first 1000 bytes are the reply
    char text[8];
    Scripted().files["\\nav\\PACKETRX.DAT"] = "G|abcdefgh";
    EXPECT_EQ(ZeltoNavPort_GetString("0", 8, text), 0);
    EXPECT_STREQ(text, "abcdef");
    char reply[5] = "????";
    uint32_t bytes_read = 0;
    Scripted().files["\\nav\\PACKETRX.DAT"] = "xy";
    EXPECT_EQ(Transact("F", "0", reply, 3, bytes_read), 0);
    EXPECT_EQ(std::string(reply, 4), std::string("xy\0?", 4));
}

}  // namespace
}  // namespace zelto::test
