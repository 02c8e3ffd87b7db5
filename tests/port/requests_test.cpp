// What each export sends, and what it makes of the replies.

#include <cfloat>
#include <cmath>
#include <cstring>

#include "plugins/zelto_port_dll/replies.h"
#include "tests/port/port_fixture.h"

namespace zelto::test {
namespace {

struct Request {
    const char* line;  // without the line feed
    int32_t (*call)();
};

const Request kRequests[] = {
    {"R|0", [] { return ZeltoNavPort_CloseZeltoNav(); }},
    {"T|1|\xC3\xA9|b|1|-2", [] { return ZeltoNavPort_MessageBox(u"\u00E9", u"b", 1, -2); }},
    {"T|1|\xE2\x82\xAC|b|1|-2", [] { return ZeltoNavPort_MessageBoxA("\x80", "b", 1, -2); }},
    {"T|1|a|b|70000|-70000", [] { return ZeltoNavPort_MessageBox(u"a", u"b", 70000, -70000); }},
    {"T|1|||0|0", [] { return ZeltoNavPort_MessageBox(nullptr, nullptr, 0, 0); }},
    {"a|0", [] { return ZeltoNavPort_Cobertura(); }},
    {"D|\\\xE2\x82\xAC.map", [] { return ZeltoNavPort_OpenFile(u"\\\u20AC.map"); }},
    {"D|\\\xE2\x82\xAC.map", [] { return ZeltoNavPort_OpenFile("\\\x80.map"); }},
    {"D|", [] { return ZeltoNavPort_OpenFile(static_cast<const char*>(nullptr)); }},
    {"M|a,b,1.500000,-2.000000,0.000000,\xC3\xB1",
     [] { return ZeltoNavPort_New_Waypoint(u"a", u"b", 1.5, -2, 0, u"\u00F1"); }},
    {"M|a,b,1.500000,-2.000000,0.000000,\xF1",
     [] { return ZeltoNavPort_New_WaypointA("a", "b", 1.5, -2, 0, "\xF1"); }},
    {"M|,,0.000000,0.000001,0.000000,",
     [] { return ZeltoNavPort_New_WaypointA(nullptr, nullptr, 0, 1e-6, 0, nullptr); }},
    {"N|x?\xF3\xBD\xB0\x80", [] { return ZeltoNavPort_Delete_Waypoint(u"x\xD800\xDBF4\xDC00"); }},
    {"N|\x80", [] { return ZeltoNavPort_Delete_WaypointA("\x80"); }},
    {"N|", [] { return ZeltoNavPort_Delete_WaypointA(nullptr); }},
    {"O|1.500000,2.000000,0.000000", [] { return ZeltoNavPort_CenterCoordinate(1.5, 2, 0); }},
    {"I|-2147483648", [] { return ZeltoNavPort_ExecCommand(INT32_MIN); }},
    {"S|12.3450000,-0.5000000,,,1", [] { return ZeltoNavPort_Goto(12.345, -0.5, u"text"); }},
    {"S|12.3450000,-0.5000000,,,0", [] { return ZeltoNavPort_Goto(12.345, -0.5, nullptr); }},
    {"S|1.0000000,0.0000000,,,1", [] { return ZeltoNavPort_Goto(1, 0, u""); }},
    {"S|nan,0.5000000,,,0", [] { return ZeltoNavPort_Goto(NAN, 0.5, nullptr); }},
    {"S|0.5000000,nan,,,x", [] { return ZeltoNavPort_GotoA(0.5, NAN, "x"); }},
    {"S|1.0000000,0.0000000,,,\x80", [] { return ZeltoNavPort_GotoA(1, 0, "\x80"); }},
    {"S|1.0000000,0.0000000,,,", [] { return ZeltoNavPort_GotoA(1, 0, nullptr); }},
    {"E|$GPGGA*00\r", [] { return ZeltoNavPort_NewPoint_nmea(u"$GPGGA*00\r", u"not sent"); }},
    {"E|$GPGGA*00", [] { return ZeltoNavPort_NewPoint_nmeaA("$GPGGA*00"); }},
    {"f|r\xC3\xA9", [] { return ZeltoNavPort_GotoRuta(u"r\u00E9"); }},
    {"f|r\xE9", [] { return ZeltoNavPort_GotoRutaA("r\xE9"); }},
};

TEST_F(PortTest, EveryCommandSendsItsLineAndReturnsTheNavigatorsNumber) {
    for (const Request& request : kRequests) {
        SCOPED_TRACE(request.line);
        Restart();
        Scripted().reads = {{"B|70"}, {"A|"}};
        EXPECT_EQ(request.call(), 70);
        EXPECT_EQ(request.call(), 0);
        const std::string line = std::string(request.line) + "\n";
        EXPECT_EQ(Scripted().requests, (Lines{line, line}));
    }
}

TEST_F(PortTest, RepliesBecomeResults) {
    const std::string thousand(1000, 'A');
    const struct {
        std::string reply;
        int32_t status, street;
    } cases[] = {{"", 2, 8},
                 {"A", 2, 8},
                 {"A|", 0, 0},
                 {thousand, 0, 0},
                 {thousand + "A", 10, 10},  // longer than the buffer: lost
                 {"B|", 9, 9},
                 {"B|7", 7, 7},
                 {"B|x", 0, 0},
                 {"B| \t+12,5", 12, 12},
                 {"B|-3", -3, -3},
                 {"B|+-3", 0, 0},
                 {"B|4000000000", INT32_MAX, INT32_MAX},
                 {"B|-4000000000", INT32_MIN, INT32_MIN},
                 {"G|A|", 9, 9},
                 {std::string("\0|", 2), 9, 9}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reply);
        Restart();
        Scripted().reads = {{c.reply}, {c.reply}};
        EXPECT_EQ(ZeltoNavPort_Cobertura(), c.status);
        std::vector<WCHAR> street(1001, u'?');
        EXPECT_EQ(ZeltoNavPort_PositionStreet(street.data()), c.street);
        EXPECT_EQ(wcslen(street.data()), std::min<size_t>(std::strlen(c.reply.c_str()), 1000));
    }
}

TEST_F(PortTest, StreetIsTheWholeReplyAsWideText) {
    WCHAR street[1001];
    Scripted().reads = {{"A|Calle \xC3\x91u\xC3\xB1oa"}};
    EXPECT_EQ(ZeltoNavPort_PositionStreet(street), 0);
    EXPECT_EQ(std::basic_string<WCHAR>(street), u"A|Calle \u00D1u\u00F1oa");
    EXPECT_EQ(Scripted().requests, Lines{"e|0\n"});
    EXPECT_EQ(ZeltoNavPort_PositionStreet(street), ZELTO_NAV_PORT_TIMEOUT);
    EXPECT_EQ(street[0], 0);
    EXPECT_EQ(ZeltoNavPort_PositionStreet(nullptr), ZELTO_NAV_PORT_TIMEOUT);
    EXPECT_EQ(ZeltoNavPort_PositionStreetA(), 1);
}

TEST_F(PortTest, GetStringTakesTheTextAfterTheFirstBar) {
    const struct {
        std::string reply;
        int32_t result;
        const char* text;
    } cases[] = {{"", 3, "-"},
                 {"G", 10, "-"},
                 {"Gxx|abc", 0, "abc"},
                 {"G|", 0, ""},
                 {"G|a|b", 0, "a|b"},
                 {"A|abc", 9, "-"},
                 {"|abc", 9, "-"},
                 {"G|12345678", 0, "12345678"},  // fills all 10 bytes
                 {"G|123456789", 10, "-"},       // one too long: lost
                 {std::string("G\0|x", 4), 10, "-"},
                 {std::string("G|x\0y", 5), 0, "x"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reply);
        Restart();
        Scripted().reads = {{c.reply}};
        char text[10] = "-";
        EXPECT_EQ(ZeltoNavPort_GetString("speed", sizeof(text), text), c.result);
        EXPECT_STREQ(text, c.text);
        EXPECT_EQ(Scripted().requests, Lines{"F|speed\n"});
    }
}

TEST_F(PortTest, UnusualArgumentsAreSafe) {
    Scripted().reads = {{"G|x"}, {"G|y"}, {"G|z"}};
    char text[8];
    EXPECT_EQ(ZeltoNavPort_GetString(nullptr, 8, text), 0);
    EXPECT_EQ(ZeltoNavPort_GetString("0", 8, nullptr), 0);
    const int32_t huge = ZeltoNavPort_GetString("0", UINT32_MAX, text);
    EXPECT_TRUE(huge == 14 || (huge == 0 && std::strcmp(text, "z") == 0)) << huge;

    Scripted().reads = {{"A|"}, {"A|"}};
    EXPECT_EQ(ZeltoNavPort_CenterCoordinate(DBL_MAX, -DBL_MAX, DBL_MAX), 0);
    EXPECT_EQ(Scripted().requests.back().size(), 2 + 316 + 1 + 317 + 1 + 316 + 1u);
    EXPECT_EQ(ZeltoNavPort_New_WaypointA("a", "b", DBL_MAX, -0.0, DBL_MIN, "c"), 0);
    EXPECT_TRUE(Scripted().requests.back().ends_with("000000,-0.000000,0.000000,c\n"));

    // 1024 bytes go out, 1025 do not.
    Scripted().reads = {{"A|"}};
    EXPECT_EQ(ZeltoNavPort_GotoRutaA(std::string(1021, 'r').c_str()), 0);
    EXPECT_EQ(ZeltoNavPort_GotoRutaA(std::string(1022, 'r').c_str()), 122);
    EXPECT_EQ(ZeltoNavPort_OpenFile(std::u16string(100000, u'r').c_str()), 122);
}

TEST_F(PortTest, BeforeInitTextsAreInTheSystemsCodePage) {
    SetCurrentCodepage(0);
    Scripted().reads = {{"A|"}, {"A|"}, {"A|\x80"}};
    EXPECT_EQ(ZeltoNavPort_GotoRuta(u"r\u20AC"), 0);
    EXPECT_EQ(ZeltoNavPort_OpenFile("\x80"), 0);
    WCHAR street[1001];
    EXPECT_EQ(ZeltoNavPort_PositionStreet(street), 0);
    EXPECT_EQ(std::basic_string<WCHAR>(street), u"A|\u20AC");
    EXPECT_EQ(Scripted().requests, (Lines{"f|r\x80\n", "D|\x80\n", "e|0\n"}));
}

}  // namespace
}  // namespace zelto::test
