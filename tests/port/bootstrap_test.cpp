// Finding, starting, showing and closing the navigator; the objects built at load.

#include "common/sys/sync.h"
#include "plugins/zelto_port_dll/process_objects.h"
#include "tests/port/port_fixture.h"

namespace zelto::test {
namespace {

std::string RawBytes(const std::u16string& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

class BootstrapTest : public PortTest {
  protected:
    // A process that has called nothing yet, on a device where the navigator runs and answers.
    static void Install() {
        Restart();
        g_connection = {};
        SetCurrentCodepage(0);
        Scripted().registry_value = RawBytes(u"\\nav\\bin\\n.exe");
        Scripted().reads = {{"G|0"}};
    }
};

TEST_F(BootstrapTest, InitFindsARunningNavigatorAndMakesTheFirstExchange) {
    Install();
    g_connection.transport_enabled = 0;
    g_connection.queue_channel = 0;
    g_connection.reconnect_every_request = 0;
    EXPECT_EQ(ZeltoNavPort_Init(), 0);
    EXPECT_EQ(CurrentCodepage(), 65001);
    EXPECT_EQ(g_connection.folder, std::u16string(u"\\nav\\bin"));
    EXPECT_EQ(Scripted().requests, Lines{"F|0\n"});
    EXPECT_EQ(
        CallsOf({"RegOpenKeyExW", "RegQueryValueExW", "RegCloseKey", "FindWindowW",
                 "ShellExecuteEx", "Sleep", "WriteMsgQueue", "ReadMsgQueue"}),
        (Lines{"RegOpenKeyExW SOFTWARE\\ZeltoNav\\General 1", "RegQueryValueExW Path_EXE 200",
               "RegCloseKey", "FindWindowW ZELTOPOCKETMAINW any",
               "WriteMsgQueue ZeltoApiMsgQ2_tx 4 4000 0", "ReadMsgQueue ZeltoApiMsgQ2_rx 20 500"}));
}

TEST_F(BootstrapTest, InitStartsAnAbsentNavigatorAndWaitsForIt) {
    const struct {
        bool starts;
        int finds_without_window;
        int32_t result;
        size_t searches;
        DWORD clock;
    } cases[] = {{false, 1, 1, 1, 0},
                 {true, 1, 0, 2, 100 + 5000},
                 {true, 100, 0, 101, 100 * 100 + 5000},
                 {true, 101, 1, 101, 100 * 100 + 5000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.finds_without_window);
        Install();
        Scripted().finds_without_window = c.finds_without_window;
        if (!c.starts)
            Scripted().failing = {"ShellExecuteEx"};
        EXPECT_EQ(ZeltoNavPort_Init(), c.result);
        EXPECT_EQ(CallsOf({"ShellExecuteEx"}), Lines{"ShellExecuteEx 1 OPEN \\nav\\bin\\n.exe 0"});
        EXPECT_EQ(CallsOf({"FindWindowW"}).size(), c.searches);
        EXPECT_EQ(Scripted().clock, c.clock);
    }
}

TEST_F(BootstrapTest, InitPassesOnWhatTheFirstExchangeGave) {
    const struct {
        std::deque<ScriptedRead> reads;
        int32_t result;
        DWORD clock;
    } cases[] = {{{{""}}, 3, 0},
                 {{{"A|"}}, 9, 0},
                 {{{"G|345678901234567890"}}, 0, 0},  // 20 bytes, the most that is taken
                 {{{"G|3456789012345678901"}}, 10, 0},
                 {{}, 1007, 2500},
                 {{{"", 1460}, {"", 1460}, {"G|late"}}, 0, 1000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.result);
        Install();
        Scripted().takes_null_message = true;
        Scripted().reads = c.reads;
        EXPECT_EQ(ZeltoNavPort_Init(), c.result);
        EXPECT_EQ(Scripted().clock, c.clock);
        EXPECT_EQ(g_connection.long_wait, 0);
    }
}

TEST_F(BootstrapTest, InitIsSafeWhateverTheRegistryHolds) {
    const std::u16string longest = u"\\" + std::u16string(99, u'x');
    const struct {
        std::optional<std::string> value;
        int32_t result;
        std::u16string path, folder;
    } cases[] = {{RawBytes(longest), 0, longest, u""},  // 200 bytes, no terminator
                 {RawBytes(longest + u"x"), 4, u"", u""},
                 {RawBytes(std::u16string(u"\\a\\b\0junk", 9)), 0, u"\\a\\b", u"\\a"},
                 {RawBytes(u"\\a\\b") + "c", 0, u"\\a\\b", u"\\a"},  // half a unit too many
                 {RawBytes(u"no-backslash"), 0, u"no-backslash", u"no-backslash"},
                 {"", 0, u"", u""},
                 {std::nullopt, 4, u"", u""}};
    for (const auto& c : cases) {
        Install();
        Scripted().registry_value = c.value;
        EXPECT_EQ(ZeltoNavPort_Init(), c.result);
        EXPECT_EQ(g_connection.executable_path, c.path);
        EXPECT_EQ(g_connection.folder, c.folder);
        EXPECT_EQ(CallsOf({"RegCloseKey"}).size(), 1u);
    }
}

TEST_F(BootstrapTest, GetStringConnectsWhenNoWindowIsKnown) {
    Install();
    Scripted().failing = {"RegOpenKeyExW"};
    char text[8] = "-";
    g_connection.transport_enabled = g_connection.queue_channel = 0;
    EXPECT_EQ(ZeltoNavPort_GetString("a", 8, text), 4);
    EXPECT_EQ(CurrentCodepage(), 65001);  // set before the registry is read
    EXPECT_EQ(g_connection.transport_enabled + g_connection.queue_channel, 2);
    Scripted().failing.clear();
    Scripted().reads = {{"G|0"}, {"G|abc"}};
    EXPECT_EQ(ZeltoNavPort_GetString("a", 8, text), 0);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(Scripted().requests, (Lines{"F|0\n", "F|a\n"}));
}

TEST_F(BootstrapTest, TheWindowIsShownMinimisedAndForgotten) {
    Install();
    EXPECT_EQ(ZeltoNavPort_Version(), 4);
    EXPECT_EQ(ZeltoNavPort_Show(), 6);
    EXPECT_EQ(ZeltoNavPort_Minimize(), 6);
    EXPECT_TRUE(Scripted().calls.empty());
    EXPECT_EQ(ZeltoNavPort_IsOpen(), 0);
    EXPECT_EQ(ZeltoNavPort_Show(), 0);
    EXPECT_EQ(ZeltoNavPort_Minimize(), 0);
    EXPECT_EQ(CallsOf({"ShowWindow", "SetForegroundWindow"}),
              (Lines{"ShowWindow 5", "ShowWindow 13", "SetForegroundWindow", "ShowWindow 6"}));
    Scripted().reads = {{"B|5"}, {"A|"}};
    EXPECT_EQ(ZeltoNavPort_CloseZeltoNav(), 5);
    EXPECT_EQ(ZeltoNavPort_Show(), 0);
    EXPECT_EQ(ZeltoNavPort_CloseZeltoNav(), 0);
    EXPECT_EQ(ZeltoNavPort_Show(), 6);
    EXPECT_EQ(ZeltoNavPort_IsOpen(), 0);
    Scripted().finds_without_window = 1;
    EXPECT_EQ(ZeltoNavPort_IsOpen(), 6);
    EXPECT_EQ(ZeltoNavPort_Minimize(), 6);
}

TEST_F(BootstrapTest, ProcessObjectsStandWhenTheEntryRuns) {
    EXPECT_EQ(GlobalCodepageRegistry(), nullptr);
    {
        ProcessObjects objects;
        EXPECT_EQ(Scripted().calls, (Lines{"InitializeCriticalSection", "InitializeCriticalSection",
                                           "DisableThreadLibraryCalls"}));
        EXPECT_EQ(FileSystemLock(), &objects.file_system.lock);
        EXPECT_TRUE(objects.date.IsNull());
    }
    EXPECT_EQ(FileSystemLock(), nullptr);
    CodepageRegistry* const registry = GlobalCodepageRegistry();
    EXPECT_NE(registry, nullptr);
    const ProcessObjects again;
    EXPECT_EQ(GlobalCodepageRegistry(), registry);
    EXPECT_EQ(CallsOf({"DisableThreadLibraryCalls"}).size(), 2u);  // at attach alone
}

}  // namespace
}  // namespace zelto::test
