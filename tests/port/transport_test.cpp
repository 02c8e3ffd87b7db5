// The two channels: what is called, in which order, how long it takes and what comes of it.

#include "plugins/zelto_port_dll/transport.h"

#include "tests/port/port_fixture.h"

namespace zelto::test {
namespace {

TEST_F(PortTest, EachRequestHasAQueuePairOfItsOwn) {
    Scripted().reads = {{"A|"}, {"A|"}};
    EXPECT_EQ(ZeltoNavPort_ExecCommand(1), 0);
    EXPECT_EQ(ZeltoNavPort_ExecCommand(2), 0);
    const char* const expected[] = {"CreateMsgQueue ZeltoApiMsgQ2_tx 20 2 20 1024 0",
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
                                    "ReadMsgQueue ZeltoApiMsgQ3_rx 1000 500"};
    EXPECT_EQ(Scripted().calls, Lines(std::begin(expected), std::end(expected)));
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
    g_connection.generation = INT32_MAX;
    EXPECT_EQ(SendOnQueue("x", 1, 1), 0);
    EXPECT_EQ(g_connection.generation, INT32_MIN);
}

TEST_F(PortTest, QueueFailuresHaveTheirCodesAndWaits) {
    const struct {
        std::deque<DWORD> writes;
        std::deque<ScriptedRead> reads;
        int32_t result;
        DWORD clock;
    } cases[] = {{{}, {{"A|"}}, 0, 0},
                 {{}, {}, 1007, 500},
                 {{}, {{"", 233}}, 11, 0},
                 {{}, {{"", 6}}, 10, 0},
                 {{233}, {}, 233, 0},
                 {{1460}, {{"A|"}}, 0, 4000 + 3000},
                 {{1460, 1460}, {}, -1460, 4000 + 3000 + 4000},
                 {{1460, 6}, {}, -6, 4000 + 3000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.result);
        Restart();
        Scripted().write_errors = c.writes;
        Scripted().reads = c.reads;
        EXPECT_EQ(ZeltoNavPort_Cobertura(), c.result);
        EXPECT_EQ(Scripted().clock, c.clock);
        EXPECT_EQ(Scripted().open.size(), 2u);
    }
    Scripted().failing = {"PostMessageW"};
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 12);
}

TEST_F(PortTest, LongWaitReadsFiveTimesAndAnnouncesAfreshFromTheSecondTimeoutOn) {
    g_connection.long_wait = 1;
    Scripted().takes_null_message = true;
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 1007);
    EXPECT_EQ(Scripted().clock, 5 * 500u);
    const char* const expected[] = {"PostMessageW 17698 15 5",
                                    "ReadMsgQueue ZeltoApiMsgQ2_rx 1000 500",
                                    "ReadMsgQueue ZeltoApiMsgQ2_rx 1000 500",
                                    "PostMessageW 17698 15 6",
                                    "ReadMsgQueue ZeltoApiMsgQ3_rx 1000 500",
                                    "PostMessageW 17698 15 7",
                                    "ReadMsgQueue ZeltoApiMsgQ4_rx 1000 500",
                                    "PostMessageW 17698 15 8",
                                    "ReadMsgQueue ZeltoApiMsgQ5_rx 1000 500",
                                    "PostMessageW 17698 15 9"};
    EXPECT_EQ(CallsOf({"PostMessageW", "ReadMsgQueue"}),
              Lines(std::begin(expected), std::end(expected)));
    EXPECT_EQ(CallsOf({"WriteMsgQueue"}).back(), "WriteMsgQueue ZeltoApiMsgQ6_tx 4 4000 0");

    Restart();
    g_connection.long_wait = 1;  // here the system takes no message without bytes
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 87);
    EXPECT_EQ(Scripted().clock, 2 * 500u);
}

TEST_F(PortTest, ANullCommandLeavesTheBarOut) {
    char reply[16];
    uint32_t bytes_read = 99;
    Scripted().reads = {{"A|"}};
    EXPECT_EQ(Transact(nullptr, "args", reply, sizeof(reply), bytes_read), 0);
    EXPECT_EQ(Scripted().requests, Lines{"args\n"});
    EXPECT_EQ(bytes_read, 2u);
}

void SelectPacketFiles() {
    Restart();
    g_connection.queue_channel = 0;
    std::u16string_view(u"\\nav").copy(g_connection.folder, 4);
    Scripted().files["\\nav\\PACKETRX.DAT"] = "A|";
}

TEST_F(PortTest, PacketFilesAreExchangedWithAnEvent) {
    SelectPacketFiles();
    EXPECT_EQ(ZeltoNavPort_ExecCommand(23), 0);
    const Lines first = Scripted().calls;
    EXPECT_EQ(ZeltoNavPort_ExecCommand(4), 0);
    EXPECT_EQ(Scripted().files["\\nav\\PACKETTX.DAT"], "I|4\n");
    const char* const expected[] = {"CreateFileW \\nav\\PACKETTX.DAT 3221225472 1 2 128",
                                    "WriteFile \\nav\\PACKETTX.DAT 5",
                                    "CloseHandle \\nav\\PACKETTX.DAT",
                                    "CreateEventW EventZeltoAPI 0 0",
                                    "EventModify EventZeltoAPI 2",
                                    "PostMessageW 17698 15 3",
                                    "WaitForSingleObject EventZeltoAPI 1000",
                                    "CreateFileW \\nav\\PACKETRX.DAT 3221225472 1 3 128",
                                    "ReadFile \\nav\\PACKETRX.DAT 1000",
                                    "CloseHandle \\nav\\PACKETRX.DAT"};
    EXPECT_EQ(first, Lines(std::begin(expected), std::end(expected)));
    EXPECT_EQ(CallsOf({"CreateEventW"}).size(), 1u);
    EXPECT_EQ(Scripted().open.size(), 1u);  // the event
}

TEST_F(PortTest, PacketFileFailuresHaveTheirCodesAndCloseTheirFiles) {
    const struct {
        std::set<std::string> failing;
        const char* reply;
        int32_t long_wait, result;
        DWORD clock;
    } cases[] = {{{"CreateFileW"}, "A|", 0, 5, 0},
                 {{"WriteFile"}, "A|", 0, 6, 0},
                 {{"WaitForSingleObject"}, "A|", 0, 2007, 1000},
                 {{"WaitForSingleObject"}, "A|", 1, 2007, 10000},
                 {{}, nullptr, 0, 88, 0},
                 {{"ReadFile"}, "A|", 0, 9, 0},
                 {{"PostMessageW"}, "A|", 0, 0, 0},
                 {{}, "A", 0, 2, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.result);
        SelectPacketFiles();
        Scripted().failing = c.failing;
        g_connection.long_wait = c.long_wait;
        if (c.reply != nullptr)
            Scripted().files["\\nav\\PACKETRX.DAT"] = c.reply;
        else
            Scripted().files.clear();
        EXPECT_EQ(ZeltoNavPort_Cobertura(), c.result);
        EXPECT_EQ(Scripted().clock, c.clock);
        EXPECT_EQ(Scripted().open.size(), g_connection.reply_event != nullptr ? 1u : 0u);
    }
    SelectPacketFiles();
    g_connection.transport_enabled = 0;
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 6);
    EXPECT_TRUE(CallsOf({"CreateFileW", "PostMessageW"}).empty());
}

TEST_F(PortTest, APacketReplyIsTerminatedOnePastItsBytes) {
    SelectPacketFiles();
    Scripted().files["\\nav\\PACKETRX.DAT"] = std::string(1001, 'A');
    EXPECT_EQ(ZeltoNavPort_Cobertura(), 0);  // the first 1000 bytes are the reply
    char reply[5] = "????";
    uint32_t bytes_read = 0;
    EXPECT_EQ(Transact("F", "0", reply, 3, bytes_read), 0);
    EXPECT_EQ(std::string(reply, 4), std::string("AAA\0", 4));
}

}  // namespace
}  // namespace zelto::test
