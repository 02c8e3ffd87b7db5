#include "tools/track/drive.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>
#include <numbers>

namespace zelto::track {

namespace {

using navigator::Moment;
using navigator::Place;

constexpr double kStanding = 0.01;  // metres: less is no movement

double Radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

// Degrees east from one longitude to another, the short way round.
double East(double from, double to) {
    return std::remainder(to - from, 360);
}

// The course at the beginning of the way between two places: degrees, 0 to 360.
double Bearing(const Place& from, const Place& to) {
    const double east = Radians(East(from.longitude, to.longitude));
    const double a = Radians(from.latitude);
    const double b = Radians(to.latitude);
    const double angle =
        std::atan2(std::sin(east) * std::cos(b),
                   std::cos(a) * std::sin(b) - std::sin(a) * std::cos(b) * std::cos(east));
    return std::fmod(angle * 180 / std::numbers::pi + 360, 360);
}

double Between(double a, double b, double part) {
    return a + (b - a) * part;
}

Place PlaceBetween(const Place& a, const Place& b, double part) {
    const double longitude = a.longitude + East(a.longitude, b.longitude) * part;
    return {Between(a.latitude, b.latitude, part), std::remainder(longitude, 360)};
}

// Seconds from the start at which each point is reached.
std::vector<double> TimesOf(const Track& track, double speed) {
    const bool timed =
        std::all_of(track.begin(), track.end(), [](const Point& point) { return point.time; });
    std::vector<double> times = {0};
    for (size_t i = 1; i < track.size(); ++i) {
        const double step =
            timed ? static_cast<double>(*track[i].time - *track[i - 1].time) / 1000
                  : navigator::Distance(track[i - 1].place, track[i].place) / kUsualSpeed;
        if (step < 0)
            throw TrackError(
                fmt::format("point {} is {} s earlier than the one before it", i + 1, -step));
        times.push_back(times.back() + step / speed);
    }
    return times;
}

// A place on the way, moving with the time, which only grows.
class Driver {
  public:
    Driver(const Track& track, const std::vector<double>& times, bool jump)
        : track_(track), times_(times), jump_(jump) {}

    // Fills in place, altitude, speed and course at a number of seconds from the start.
    void MoveTo(double second, Moment& moment) {
        while (next_ + 1 < track_.size() && times_[next_] <= second)
            ++next_;
        if (track_.size() == 1 || (jump_ && times_[next_] <= second))
            Stand(track_[next_], moment);
        else if (jump_)
            Stand(track_[next_ - 1], moment);
        else
            Move(second, moment);
        moment.course = course_;
    }

  private:
    static void Stand(const Point& point, Moment& moment) {
        moment.place = point.place;
        moment.altitude = point.altitude;
    }

    void Move(double second, Moment& moment) {
        const Point& from = track_[next_ - 1];
        const Point& to = track_[next_];
        const double lasts = times_[next_] - times_[next_ - 1];
        const double part = lasts > 0 ? std::min(1., (second - times_[next_ - 1]) / lasts) : 1;
        const double metres = navigator::Distance(from.place, to.place);
        moment.place = PlaceBetween(from.place, to.place, part);
        if (from.altitude && to.altitude)
            moment.altitude = Between(*from.altitude, *to.altitude, part);
        if (metres < kStanding)
            return;
        course_ = Bearing(from.place, to.place);
        moment.speed = lasts > 0 ? metres / lasts : 0;
    }

    const Track& track_;
    const std::vector<double>& times_;
    bool jump_;
    size_t next_ = 0;  // the point ahead
    double course_ = 0;
};

bool InTunnel(const std::vector<Tunnel>& tunnels, double second) {
    return std::any_of(tunnels.begin(), tunnels.end(), [=](const Tunnel& tunnel) {
        return second >= tunnel.from && second <= tunnel.to;
    });
}

}  // namespace

void Drive(const Track& track, const DriveOptions& options,
           const std::function<void(const Moment&)>& take) {
    const std::vector<double> times = TimesOf(track, options.speed);
    // What a rounding adds to the last second is no reason for another fix.
    const double steps = std::ceil(times.back() * options.rate - 1e-6);
    if (!(steps < kMaxFixes))
        throw TrackError(fmt::format("the drive takes {:.0f} s, which makes more than {:.0f} fixes",
                                     times.back(), kMaxFixes));
    Driver driver(track, times, options.jump);
    const int64_t start = track.front().time.value_or(options.start);
    for (double step = 0; step <= steps; ++step) {
        const double second = step / options.rate;
        Moment moment;
        moment.time = start + std::llround(second * 1000);
        moment.valid = !InTunnel(options.tunnels, second);
        driver.MoveTo(second, moment);
        take(moment);
    }
}

}  // namespace zelto::track
