// zeltoport clock: each run a process of its own on one device, so what is set must have been kept.

#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/tools/processes.h"

namespace zelto::test {
namespace {

using nlohmann::json;

json Clock(Words arguments) {
    arguments.insert(arguments.begin(), {"--json", "clock"});
    const Outcome outcome = Port(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return json::parse(outcome.output);
}

// Without the seconds, which pass.
std::string Minute(const json& moment) {
    return moment.get<std::string>().substr(0, 16);
}

TEST(ClockCommand, KeepsWhatWasSet) {
    const TempDevice device;
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    for (const char* text : {"25-12-09  10:20:00", "2009-12-25T10:20:00", "25-dec-2009 10:20:00"})
        EXPECT_EQ(Minute(Clock({"set", text})["local"]), "2009-12-25 10:20") << text;
    EXPECT_EQ(Minute(Clock({"set", "25.12.2009", "10:20:30"})["local"]), "2009-12-25 10:20");
    const json shown = Clock({});
    EXPECT_EQ(Minute(shown["universal"]), "2009-12-25 09:20");
    EXPECT_EQ(shown["offset"], -3600.0);
    EXPECT_EQ(shown["daylight_in_force"], false);
    EXPECT_EQ(shown["next_change"]["local"], "2010-03-28 02:00:00");
    const json summer = Clock({"set", "--universal", "1.7.2010"});  // the time of day stays
    EXPECT_EQ(Minute(summer["local"]), "2010-07-01 11:20");
    EXPECT_EQ(summer["daylight_in_force"], true);
    EXPECT_EQ(summer["next_change"]["local"], "2010-10-31 03:00:00");

    const json moved = Clock({"zone", "-19800"});
    EXPECT_EQ(Minute(moved["universal"]), "2010-07-01 09:20");
    EXPECT_EQ(moved["offset"], -23400.0);
    EXPECT_NE(Port({"clock", "show"}).output.find("01-JUL-2010 15:50:"), std::string::npos);
}

TEST(ClockCommand, RefusesWhatItCannotSet) {
    const TempDevice device;
    for (const char* text : {"tomorrow", "2009-12-25 10:20", "2009-12-25 24:00:00", "25.12"})
        EXPECT_EQ(Port({"clock", "set", text}).status, 2) << text;
    EXPECT_EQ(Port({"clock", "set", "31.2.2009"}).status, 1);
    EXPECT_EQ(Port({"clock", "zone", "1e9"}).status, 1);
    setenv("TZ", "MST7", 1);
    EXPECT_TRUE(Clock({"show"})["next_change"].is_null());
}

}  // namespace
}  // namespace zelto::test
