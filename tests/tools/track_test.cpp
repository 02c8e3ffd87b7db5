// Tracks, as files tell them and as a receiver on the way would.

#include <gtest/gtest.h>

#include "tools/track/drive.h"
#include "tools/track/iso_time.h"
#include "tools/zelto-navigator/nmea.h"
#ifdef ZELTO_HAS_GPX
#include "tools/track/gpx.h"
#endif

namespace zelto::track {
namespace {

using navigator::Moment;
using navigator::Place;

std::string Refusal(const std::function<void()>& read) {
    try {
        read();
    } catch (const TrackError& error) {
        return error.what();
    }
    return "";
}

TEST(IsoTime, IsReadInEveryFormAndWritten) {
    const struct {
        const char* text;
        std::optional<int64_t> time;
    } cases[] = {{"2010-05-15T09:30:00Z", 1273915800000},
                 {"2010-05-15T09:30:00.1259Z", 1273915800125},
                 {"2010-05-15T11:30:00+02:00", 1273915800000},
                 {"2010-05-15T09:30:00", 1273915800000},
                 {"1969-12-31T23:59:59Z", -1000},
                 {"2010-02-29T09:30:00Z", {}},
                 {"2010-05-15T09:30Z", {}},
                 {"2010-05-15T09:30:00+2", {}},
                 {"yesterday", {}}};
    for (const auto& each : cases)
        EXPECT_EQ(ReadIsoTime(each.text), each.time) << each.text;
    EXPECT_EQ(WriteIsoTime(1273915800125), "2010-05-15T09:30:00.125Z");
    EXPECT_EQ(WriteIsoTime(-1), "1969-12-31T23:59:59.999Z");
}

TEST(Places, AreNumbersInPairs) {
    const Track places = ReadPlaces("42.5,-2.25 # home\n43 -3;\n-89.5\t180\n");
    ASSERT_EQ(places.size(), 3u);
    EXPECT_EQ(places[2].place.latitude, -89.5);
    EXPECT_EQ(Refusal([] { ReadPlaces("# nothing"); }), "there are no places");
    EXPECT_EQ(Refusal([] { ReadPlaces("1,2,3"); }), "the last place has a latitude alone");
    EXPECT_EQ(Refusal([] { ReadPlaces("1,2 91,0"); }), "place 2, 91,0, is not on earth");
    EXPECT_EQ(Refusal([] { ReadPlaces("1,x"); }), "\"x\" is not a number");
}

// What the navigator reads of a moment is the moment; that its checksums hold, too.
TEST(Sentences, SayWhatTheMomentIs) {
    for (const Place& place : {Place{42.84669999, -2.6727}, Place{-0.0000001, 179.9999999},
                               Place{-89.999999999, -180}, Place{0, 9.9999999999}}) {
        Moment moment{1273967999999, true, place, 525.25, 10, 359.996};
        navigator::Fix fix;
        for (const std::string& sentence : navigator::SentencesOf(moment))
            EXPECT_LE(navigator::ReadSentence(sentence, fix), navigator::Sentence::kOther)
                << sentence;
        EXPECT_NEAR(fix.place.latitude, place.latitude, 1e-7);
        EXPECT_NEAR(fix.place.longitude, place.longitude, 1e-7);
        EXPECT_EQ(fix.date + fix.time, "150510235959.999");
        EXPECT_NEAR(*fix.speed, 19.44, 1e-9);
        EXPECT_EQ(fix.course, 0);
        moment.valid = false;
        EXPECT_EQ(navigator::ReadSentence(navigator::SentencesOf(moment)[1], fix),
                  navigator::Sentence::kVoid);
        EXPECT_FALSE(fix.valid);
    }
}

std::vector<Moment> Driven(const Track& track, const DriveOptions& options) {
    std::vector<Moment> moments;
    Drive(track, options, [&](const Moment& moment) { moments.push_back(moment); });
    return moments;
}

TEST(Drive, KeepsTheTracksTimesAndAgreesWithItself) {
    // North for 10 s, standing for 5, over the antimeridian for 10.
    const Track track = {{{10, 179.999}, 100, 1000},
                         {{10.001, 179.999}, 200, 11000},
                         {{10.001, 179.999}, 200, 16000},
                         {{10.001, -179.999}, {}, 26000}};
    const auto moments = Driven(track, {.speed = 2, .rate = 4, .tunnels = {{1, 1.5}}});
    ASSERT_EQ(moments.size(), 51u);  // 12.5 s
    EXPECT_EQ(moments[10].time, 1000 + 2500);
    EXPECT_NEAR(moments[10].place.latitude, 10.0005, 1e-9);
    EXPECT_NEAR(*moments[10].altitude, 150, 1e-9);
    EXPECT_NEAR(moments[10].speed, 2 * 11.12, 0.01);
    EXPECT_EQ(moments[10].course, 0);
    EXPECT_EQ(moments[25].speed, 0);
    EXPECT_NEAR(moments[40].course, 90, 0.001);
    EXPECT_NEAR(std::abs(moments[40].place.longitude), 180, 1e-9);
    EXPECT_NEAR(moments[50].place.longitude, -179.999, 1e-9);
    for (size_t i = 0; i < moments.size(); ++i)
        EXPECT_EQ(moments[i].valid, i < 4 || i > 6) << i;
}

TEST(Drive, JumpsStandsAndRefuses) {
    const Track untimed = {{{0, 0}, {}, {}}, {{0, 0.001}, {}, {}}};  // 111.2 m: 8.006 s
    const auto jumped = Driven(untimed, {.jump = true, .start = 5000});
    ASSERT_EQ(jumped.size(), 10u);
    EXPECT_EQ(jumped[8].place.longitude, 0);
    EXPECT_EQ(jumped[9].place.longitude, 0.001);
    EXPECT_EQ(jumped[9].time, 14000);
    EXPECT_EQ(Driven({untimed[0]}, {}).size(), 1u);
    const auto none = [](const Moment&) {};
    EXPECT_NE(Refusal([&] {
                  Drive({{{0, 0}, {}, 2000}, {{0, 1}, {}, 500}}, {}, none);
              }).find("point 2 is 1.5 s earlier"),
              std::string::npos);
    EXPECT_NE(Refusal([&] {
                  Drive({{{0, 0}, {}, 0}, {{0, 1}, {}, 1'000'000'000'000}}, {}, none);
              }).find("more than 10000000 fixes"),
              std::string::npos);
}

#ifdef ZELTO_HAS_GPX
TEST(Gpx, GivesItsPointsOrSaysWhyNot) {
    const auto gpx = [](const std::string& inside) { return "<gpx>" + inside + "</gpx>"; };
    const std::string tracks =
        "<trk><trkseg><trkpt lat='1' lon='2'><ele>3.5</ele></trkpt></trkseg><trkseg><trkpt "
        "lat='4' lon='5'><time>2010-05-15T09:30:00Z</time><fix>none</fix></trkpt></trkseg></trk>";
    const Track track = ReadGpx(gpx("<wpt lat='7' lon='8'/>" + tracks));
    ASSERT_EQ(track.size(), 1u);
    EXPECT_EQ(track[0].altitude, 3.5);
    EXPECT_EQ(ReadGpx(gpx("<rte><rtept lat='1' lon='2'/></rte>")).size(), 1u);
    const struct {
        std::string text;
        const char* words;
    } bad[] = {{"<gpx><trk>", "it is not XML"},
               {"<kml/>", "is not <gpx>"},
               {gpx(""), "it has no points"},
               {gpx("<wpt lat='91' lon='2'/>"), "point 1 has no place on earth"},
               {gpx("<wpt lat='1'/>"), "point 1 has no place on earth"},
               {gpx("<wpt lat='1' lon='1'><time>noon</time></wpt>"), "a time that cannot be read"},
               {gpx("<wpt lat='1' lon='1'><fix>none</fix></wpt>"), "all of its 1 points are void"},
               {gpx("<wpt lat='0' lon='0'/><wpt lat='0' lon='0'/>"), "are void (at 0,0)"}};
    for (const auto& each : bad)
        EXPECT_NE(Refusal([&] { ReadGpx(each.text); }).find(each.words), std::string::npos)
            << each.text;
}

TEST(Gpx, IsWrittenInTheOrderOfItsSchema) {
    const GpxFile file{
        {{"a<\x01\xFF", "d", "s", {{1, 179.99999996}, 5.0, 0}}}, {{"r", {}}}, {{{3, 4}, {}, {}}}};
    const std::string text = WriteGpx(file, "me");
    size_t at = 0;
    for (const char* part : {"version=\"1.1\"", "http://www.topografix.com/GPX/1/1",
                             "lon=\"-180.0000000\"", "<ele>5.0", "<time>1970-01-01T00:00:00.000Z",
                             "<name>a&lt;\xEF\xBF\xBD\xEF\xBF\xBD</name>", "<desc>d", "<sym>s",
                             "<rte>", "<trk>", "<trkseg>", "<trkpt lat=\"3.0000000\""}) {
        const size_t next = text.find(part, at);
        ASSERT_NE(next, std::string::npos) << part << " in " << text;
        at = next;
    }
    EXPECT_EQ(ReadGpx(text)[0].place.longitude, 4);
}
#endif

}  // namespace
}  // namespace zelto::track
