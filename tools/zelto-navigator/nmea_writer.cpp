#include "tools/zelto-navigator/nmea_writer.h"

#include <chrono>
#include <cmath>
#include <fmt/core.h>

namespace zelto::navigator {

namespace {

constexpr double kKnots = 3600. / 1852;                             // in a metre a second
constexpr double kKilometresAnHour = 3.6;                           // likewise
constexpr const char* kSatellites = "02,05,09,12,17,21,25,29,,,,";  // eight, as GGA counts them

// "$body*checksum"
std::string Sentence(const std::string& body) {
    unsigned sum = 0;
    for (const char byte : body)
        sum ^= static_cast<unsigned char>(byte);
    return fmt::format("${}*{:02X}", body, sum);
}

// "ddmm.mmmmm,N": rounded as a whole, so that the minutes stay below 60.
std::string Angle(double degrees, int width, const char* letters) {
    constexpr int64_t kUnits = 100'000;  // a minute
    const int64_t units = std::llround(std::abs(degrees) * 60 * kUnits);
    const int64_t minutes = units / kUnits;
    return fmt::format("{:0{}}{:02}.{:05},{}", minutes / 60, width, minutes % 60, units % kUnits,
                       letters[degrees < 0 ? 1 : 0]);
}

// Two digits behind the point, and never 360.00.
std::string Course(double degrees) {
    return fmt::format("{:.2f}", std::fmod(std::round(degrees * 100) / 100, 360));
}

struct Clock {
    std::string time;  // hhmmss.sss
    std::string date;  // ddmmyy
};

Clock ClockOf(int64_t milliseconds) {
    using namespace std::chrono;
    const sys_time<std::chrono::milliseconds> point{std::chrono::milliseconds(milliseconds)};
    const auto day = floor<days>(point);
    const year_month_day date(day);
    const hh_mm_ss time(point - day);
    return {fmt::format("{:02}{:02}{:02}.{:03}", time.hours().count(), time.minutes().count(),
                        time.seconds().count(), time.subseconds().count()),
            fmt::format("{:02}{:02}{:02}", static_cast<unsigned>(date.day()),
                        static_cast<unsigned>(date.month()),
                        (static_cast<int>(date.year()) % 100 + 100) % 100)};
}

std::vector<std::string> VoidSentences(const Clock& clock) {
    return {Sentence(fmt::format("GPRMC,{},V,,,,,,,{},,,N", clock.time, clock.date)),
            Sentence(fmt::format("GPGGA,{},,,,,0,00,,,M,,M,,", clock.time)),
            Sentence("GPVTG,,T,,M,,N,,K,N"), Sentence("GPGSA,A,1,,,,,,,,,,,,,,,")};
}

}  // namespace

std::vector<std::string> SentencesOf(const Moment& moment) {
    const Clock clock = ClockOf(moment.time);
    if (!moment.valid)
        return VoidSentences(clock);
    const std::string place =
        Angle(moment.place.latitude, 2, "NS") + "," + Angle(moment.place.longitude, 3, "EW");
    const std::string altitude = moment.altitude ? fmt::format("{:.1f}", *moment.altitude) : "";
    const double knots = moment.speed * kKnots;
    return {
        Sentence(fmt::format("GPRMC,{},A,{},{:.2f},{},{},,,A", clock.time, place, knots,
                             Course(moment.course), clock.date)),
        Sentence(fmt::format("GPGGA,{},{},1,08,1.0,{},M,,M,,", clock.time, place, altitude)),
        Sentence(fmt::format("GPVTG,{},T,,M,{:.2f},N,{:.2f},K,A", Course(moment.course), knots,
                             moment.speed * kKilometresAnHour)),
        Sentence(fmt::format("GPGSA,A,{},{},1.8,1.0,1.5", moment.altitude ? 3 : 2, kSatellites))};
}

}  // namespace zelto::navigator
