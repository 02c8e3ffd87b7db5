#include "tools/zelto-navigator/place.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zelto::navigator {

namespace {

constexpr double kMeanRadius = 6371008.8;  // metres

double Radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

// The haversine of an angle in degrees.
double Haversine(double degrees) {
    const double sine = std::sin(Radians(degrees) / 2);
    return sine * sine;
}

}  // namespace

bool Place::InWorld() const {
    return std::abs(latitude) <= 90 && std::abs(longitude) <= 180;
}

double Distance(const Place& a, const Place& b) {
    const double h = Haversine(b.latitude - a.latitude) + std::cos(Radians(a.latitude)) *
                                                              std::cos(Radians(b.latitude)) *
                                                              Haversine(b.longitude - a.longitude);
    return 2 * kMeanRadius * std::asin(std::sqrt(std::clamp(h, 0., 1.)));
}

}  // namespace zelto::navigator
