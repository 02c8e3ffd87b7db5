// The stand-in navigator's answers, without any process.

#include <gtest/gtest.h>

#include "tests/support/temp_device.h"
#include "tools/text/wide.h"
#include "tools/zelto-navigator/queries.h"
#include "tools/zelto-navigator/requests.h"

namespace zelto::navigator {
namespace {

struct Step {
    std::string line;
    std::string reply;
};

void Expect(Navigator& navigator, const std::vector<Step>& steps) {
    for (const Step& step : steps)
        EXPECT_EQ(Answer(navigator, step.line), step.reply) << step.line;
}

TEST(Requests, AreDeclaredOnceAndDispatched) {
    std::string letters;
    for (const Request& request : Requests()) {
        EXPECT_EQ(letters.find(request.letter), std::string::npos) << request.letter;
        letters += request.letter;
        EXPECT_EQ(FindRequest(std::string{request.letter, '|', '\n'}), &request);
    }
    EXPECT_EQ(letters.size(), 13u);
    Navigator navigator;
    Expect(navigator, {{"?|0\n", "B|301"},
                       {"S|1,2,,,0", "B|301"},
                       {"0\n", "B|301"},
                       {"SS|1,2,,,0\n", "B|301"},
                       {"\n", "B|301"},
                       {"", "B|301"}});
    EXPECT_EQ(navigator.requests, 6u);
}

TEST(Requests, ChangeTheModelOrAreRefused) {
    Navigator navigator;
    Expect(navigator, {{"F|0\n", "G|zelto-navigator"},
                       {"F|centre\n", "G|"},
                       {"O|42.500000,-2.250000,1500.000000\n", "A|0"},
                       {"O|43.000000,-2.000000,0.000000\n", "A|0"},
                       {"F|centre\n", "G|43.000000,-2.000000,1500"},
                       {"O|91.000000,0.000000,0.000000\n", "B|303"},
                       {"O|1,2\n", "B|302"},
                       {"O|nan,2,0\n", "B|302"},
                       {"S|42.8467000,-2.6727000,,,Calle Mayor, 3\n", "A|0"},
                       {"F|destination\n", "G|42.846700,-2.672700,Calle Mayor, 3"},
                       {"S|1,180.1,,,0\n", "B|303"},
                       {"S|1,2,0\n", "B|302"},
                       {"f|a la playa\n", "A|0"},
                       {"F|destination\n", "G|"},
                       {"F|route\n", "G|a la playa"},
                       {"f|\n", "B|302"},
                       {"I|12\n", "A|0"},
                       {"I|-5\n", "B|310"},
                       {"I|x\n", "B|302"},
                       {"F|command\n", "G|12"},
                       {"T|1|t|a|b|3|-4\n", "A|0"},
                       {"F|box\n", "G|t|a|b"},
                       {"T|1|t|3|4\n", "B|302"},
                       {"T|2|t|x|3|4\n", "B|302"},
                       {"T|1|t|x|3|4s\n", "B|302"},
                       {"F|boxes\n", "G|1"},
                       {"F|box-answer\n", "G|"},
                       {"F|track 0\n", "G|"},
                       {"F|track -1\n", "B|302"},
                       {"M|b,,1,2,3,\n", "A|0"},
                       {"M|a,,1,2,3,\n", "A|0"},
                       {"F|waypoint-names 0\n", "G|a,b"},
                       {"F|waypoint-names 1\n", "G|b"},
                       {"F|waypoint-names 2\n", "G|"},
                       {"F|no such query\n", "B|304"},
                       {"F|route x\n", "B|304"}});
    EXPECT_FALSE(navigator.closing);
    Expect(navigator, {{"R|0\n", "A|0"}});
    EXPECT_TRUE(navigator.closing);
}

TEST(Requests, KeepWaypointsByName) {
    Navigator navigator;
    Expect(navigator, {{"M|casa,mi casa,42.850000,-2.670000,525.000000,i,2\n", "A|0"},
                       {"F|waypoint casa\n", "G|42.850000,-2.670000,525.0,i,2,mi casa"},
                       {"M|casa,,1.000000,2.000000,3.000000,\n", "A|0"},
                       {"F|waypoint casa\n", "G|1.000000,2.000000,3.0,,"},
                       {"M|,,1,2,3,\n", "B|302"},
                       {"M|a,b,c,1,2,3\n", "B|302"},
                       {"M|far,,1,-200,3,\n", "B|303"},
                       {"F|waypoints\n", "G|1"},
                       {"N|nadie\n", "B|304"},
                       {"N|casa\n", "A|0"},
                       {"F|waypoint casa\n", "B|304"}});
    for (size_t i = 0; i < kMaxWaypoints; ++i)
        navigator.waypoints[std::to_string(i)];
    Expect(navigator, {{"M|new,,1,2,3,\n", "B|309"}, {"M|77,,1,2,3,\n", "A|0"}});
}

TEST(Requests, OpenOnlyFilesThatExist) {
    const test::TempDevice device;
    const std::string file = device.Path() + "/mapa ñ.itv";
    fclose(fopen(file.c_str(), "w"));
    Navigator navigator;
    Expect(navigator, {{"D|" + file + "\n", "A|0"},
                       {"F|file\n", "G|" + file},
                       {"D|" + file + "x\n", "B|305"},
                       {"D|" + device.Path() + "\n", "B|305"},
                       {"D|\xFF\n", "B|302"},
                       {"D|\n", "B|302"}});
}

TEST(Requests, ReadPositionsFromSentences) {
    Navigator navigator;
    Expect(navigator,
           {{"a|0\n", "B|308"},
            {"e|0\n", "B|308"},
            {"F|fix\n", "G|none"},
            {"E|$GPRMC,093000.000,A,4250.8020,N,00240.3620,W,10.5,35.00,150510,,,A*4C\n", "A|0"},
            {"F|position\n", "G|42.846700,-2.672700"},
            {"E|$GNGGA,093001.5,3400.0000,S,15030.6000,E,1,07,1.1,527.7,M,50.9,M,,*5B\r\n", "A|0"},
            {"F|position\n", "G|-34.000000,150.510000,527.7"},
            {"F|fix\n", "G|valid 150510 093001.5"},
            {"a|0\n", "A|0"},
            {"e|0\n", "A|-34.000000,150.510000,no street known"},
            {"M|Sydney,,-34,150.5,0,\n", "A|0"},
            {"e|0\n", "A|-34.000000,150.510000,922 m from Sydney"},
            {"E|$GPGSV,1,1,00*79\n", "A|0"},
            {"E|$PGRMC,A,100.0,100*38\n", "A|0"},  // a maker's own, for all its letters
            {"E|$GPRMC,151605.053,V,,,,,,,260705,,*29\n", "A|0"},
            {"F|position\n", "G|"},
            {"F|fix\n", "G|void 150510 093001.5"},
            {"a|0\n", "B|308"},
            {"F|sentences\n", "G|5"}});
}

TEST(Requests, RefuseSentencesThatCannotBeTrusted) {
    Navigator navigator;
    Expect(navigator, {{"E|$GPGSV,1,1,00*78\n", "B|306"},
                       {"E|$GPGSV,1,1,00\n", "B|306"},
                       {"E|$GPGSV,1,1,00*7\n", "B|306"},
                       {"E|$GPGSV,1,1,00*7G\n", "B|306"},
                       {"E|GPGSV,1,1,00*79\n", "B|307"},
                       {"E|\n", "B|307"},
                       {"E|$GPRMC,1,A*3B\n", "B|307"},
                       {"E|$GPGGA,1,4260.0,N,1.0,E,1,07,1,1,M,1,M,,*5A\n", "B|307"},
                       {"E|$GPGGA,1,9100.0,N,1.0,E,1,07,1,1,M,1,M,,*52\n", "B|307"},
                       {"E|$GPGGA,1,4200.0,E,1.0,E,1,07,1,1,M,1,M,,*57\n", "B|307"},
                       {"F|sentences\n", "G|0"},
                       {"F|fix\n", "G|none"}});
}

TEST(Requests, KeepRepliesWithinWhatCallersRead) {
    Navigator navigator;
    std::string route = "x";
    for (int i = 0; i < 510; ++i)
        route += "ñ";
    Answer(navigator, "f|" + route + "\n");
    const std::string reply = Answer(navigator, "F|route\n");
    EXPECT_EQ(reply, "G|" + route.substr(0, 997));  // 999 bytes, no half character
    EXPECT_LE(Answer(navigator, "F|0\n").size(), 20u);
}

TEST(Printable, EscapesWhatATerminalWouldObey) {
    EXPECT_EQ(tools::Printable("a\n\x1B[1m\xFFñ\u0085\\"), "a\\n\\x1b[1m\\xffñ\\xc2\\x85\\");
}

}  // namespace
}  // namespace zelto::navigator
