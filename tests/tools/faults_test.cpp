// What clients see when something is wrong: with the device, with the navigator, between the two.

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/tools/processes.h"
#include "tools/zelto-navigator/channel.h"

namespace zelto::test {
namespace {

void ExpectSays(const Outcome& outcome, int status, const std::string& words) {
    EXPECT_EQ(outcome.status, status) << outcome.output;
    EXPECT_NE(outcome.output.find(words), std::string::npos) << outcome.output;
}

TEST(Device, IsExplainedWhenItCannotBeUsed) {
    const TempDevice device;
    const std::string directory = device.Device();
    ExpectSays(Port({"init"}), 4, ": 4 (no navigator, or");
    ExpectSays(Port({"--json", "device", "init", "--navigator", device.Path()}), 2,
               "not a program");
    chmod(directory.c_str(), 0755);
    ExpectSays(Port({"init"}), 3, "open to other users");
    ExpectSays(RunProgram({ZELTO_NAVIGATOR_PROGRAM}), 1, "open to other users");
    std::filesystem::remove_all(directory);
    ExpectSays(Port({"get", "version"}), 3, "is not there");
    ExpectSays(Port({"device", "show"}), 3, "is not there");
    ExpectSays(Port({"device", "init"}), 0, ZELTO_NAVIGATOR_PROGRAM);
    EXPECT_EQ(std::filesystem::status(directory).permissions(), std::filesystem::perms::owner_all);
}

TEST(Device, DamagedRegistryAndForeignStoreAreRefused) {
    const NavigatorTest test;
    const std::string registry = test.device.Device() + "/registry";
    ASSERT_TRUE(std::filesystem::exists(registry));
    const std::string whole = ReadWholeFile(registry);
    WriteWholeFile(registry, whole.substr(0, whole.size() / 2));
    for (const Words& command : {Words{"init"}, {"device", "show"}, {"device", "init"}})
        EXPECT_EQ(Port(command).status, 3);
    WriteWholeFile(registry, whole);
    EXPECT_EQ(Port({"init"}).status, 0);
    test.navigator->Kill();
    WriteWholeFile(test.device.Device() + "/store", "not a store");
    EXPECT_EQ(Port({"init"}).status, 3);
    ExpectSays(RunProgram({ZELTO_NAVIGATOR_PROGRAM}), 1, "remove the file");
}

TEST(Device, NavigatorsPathHasALimit) {
    const TempDevice device;
    const std::string folder = device.Path() + "/" + std::string(80, 'f');
    std::filesystem::create_directory(folder);
    const std::string fitting = folder + "/" + std::string(98 - folder.size(), 'n');
    for (const std::string& path : {fitting, fitting + "n"})
        std::filesystem::copy("/bin/true", path);
    ExpectSays(Port({"device", "init", "--navigator", fitting}), 0, fitting);
    ExpectSays(Port({"device", "init", "--navigator", fitting + "n"}), 2, "99 at most");
    ExpectSays(Port({"device", "show"}), 0, std::string(98 - folder.size(), 'n'));
}

TEST(Navigator, MissingOneIsReportedAtOnce) {
    const NavigatorTest test;
    std::filesystem::copy("/bin/true", test.device.Path() + "/gone");
    EXPECT_EQ(Port({"device", "init", "--navigator", test.device.Path() + "/gone"}).status, 0);
    std::filesystem::remove(test.device.Path() + "/gone");
    ExpectSays(RunProgram({ZELTO_NAVIGATOR_PROGRAM}), 1, "runs on this device already");
    test.navigator->Kill();
    test.navigator->Wait();
    ExpectSays(Port({"goto", "1", "2"}), 4, "ZeltoNavPort_Init: 1 (");
    ExpectSays(Port({"show", "--connect", "none"}), 4, "ZeltoNavPort_Show: 6 (");
}

TEST(Navigator, DyingInARequestLeavesTheDeviceUsable) {
    NavigatorTest test({"--delay-ms", "30000", "--fault-for", "S"});
    Program client({ZELTO_PORT_PROGRAM, "goto", "1", "2"});
    test.navigator->ReadUntil("held back");
    test.navigator->Kill();
    const std::string outcome = client.ReadAll();
    EXPECT_EQ(client.Wait(), 5);
    EXPECT_NE(outcome.find(": 1007 ("), std::string::npos) << outcome;
    test.Restart({});
    EXPECT_EQ(Port({"goto", "1", "2"}).status, 0);
}

TEST(Navigator, SilentOrLateIsATimeOutAndNoMore) {
    NavigatorTest test({"--delay-ms", "700", "--fault-for", "S"});
    ExpectSays(Port({"goto", "3", "4"}), 5, ": 1007 (");
    // The late reply goes to queues that its client has left; the next client must not see it.
    ExpectSays(Port({"get", "destination"}), 0, "3.000000,4.000000");
    // Connecting has more patience: a second read, then an announcement without a request.
    test.Restart({"--delay-ms", "700", "--fault-for", "F"});
    ExpectSays(Port({"init"}), 0, "success");
    test.Restart({"--silent"});
    ExpectSays(Port({"init"}), 5, "ZeltoNavPort_Init: 1007 (");
}

TEST(Navigator, TakesNoHarmFromAnnouncementsWithoutARequest) {
    const NavigatorTest test;
    HWND window = FindWindowW(TEXT("ZELTOPOCKETMAINW"), nullptr);
    MSGQUEUEOPTIONS options = {20, MSGQUEUE_ALLOW_BROKEN, 20, 1024, FALSE};
    HANDLE tx = CreateMsgQueue(TEXT("ZeltoApiMsgQ109_tx"), &options);
    options.bReadAccess = TRUE;
    HANDLE rx = CreateMsgQueue(TEXT("ZeltoApiMsgQ109_rx"), &options);
    for (const LPARAM detail : {112, 113, 3, 0, -7})  // 112: our queues; 113: nobody's
        EXPECT_TRUE(PostMessageW(window, kAnnouncement, 15, detail));
    EXPECT_TRUE(PostMessageW(window, kAnnouncement, 16, 112));
    EXPECT_EQ(Port({"goto", "1", "2"}).status, 0);
    const std::string watched = test.navigator->ReadUntil("announcement -7 ignored");
    EXPECT_NE(watched.find("#109 no request came\n#110 the client has closed its queues\n"),
              std::string::npos)
        << watched;
    CloseMsgQueue(tx);
    CloseMsgQueue(rx);
    EXPECT_TRUE(PostMessageW(window, WM_CLOSE, 0, 0));
    EXPECT_EQ(test.navigator->Wait(), 0);
}

TEST(Navigator, AnswersByPacketFile) {
    NavigatorTest test;
    const std::string copy = test.device.Path() + "/navigator";
    std::filesystem::copy(ZELTO_NAVIGATOR_PROGRAM, copy);
    ASSERT_EQ(Port({"device", "init", "--navigator", copy}).status, 0);
    test.navigator.reset();
    test.navigator = std::make_unique<Program>(Words{copy, "--packet-files"});
    test.navigator->ReadUntil("ready");
    ASSERT_EQ(ZeltoNavPort_Init(), 0);
    g_connection.queue_channel = 0;
    char answer[64] = "";
    EXPECT_EQ(ZeltoNavPort_Goto(1, 2, nullptr), 0);
    EXPECT_EQ(ZeltoNavPort_GetString("destination", sizeof answer, answer), 0);
    EXPECT_STREQ(answer, "1.000000,2.000000,0");
    EXPECT_EQ(ZeltoNavPort_ExecCommand(-1), 310);
    EXPECT_NE(test.navigator->ReadUntil("#0 ExecCommand").find("#0 Goto"), std::string::npos);
}

}  // namespace
}  // namespace zelto::test
