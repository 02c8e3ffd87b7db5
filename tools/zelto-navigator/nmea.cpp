#include "tools/zelto-navigator/nmea.h"

#include <charconv>
#include <cmath>
#include <vector>

#include "tools/zelto-navigator/fields.h"

namespace zelto::navigator {

namespace {

using Fields = std::vector<std::string_view>;

// The sentence's checksum: all bytes between "$" and "*" combined by exclusive or.
bool ChecksumHolds(std::string_view body, std::string_view digits) {
    unsigned sum = 0;
    for (const char byte : body)
        sum ^= static_cast<unsigned char>(byte);
    unsigned stated = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, stated, 16);
    return digits.size() == 2 && error == std::errc{} && stop == end && stated == sum;
}

// "ddmm.mmmm" or "dddmm.mmmm" with its hemisphere letter, as signed degrees.
std::optional<double> ReadAngle(std::string_view digits, std::string_view hemisphere, char positive,
                                char negative) {
    const auto value = ReadNumber(digits);
    if (!value || *value < 0 || hemisphere.size() != 1)
        return std::nullopt;
    const double degrees = std::floor(*value / 100);
    const double minutes = *value - degrees * 100;
    if (minutes >= 60 || (hemisphere[0] != positive && hemisphere[0] != negative))
        return std::nullopt;
    const double angle = degrees + minutes / 60;
    return hemisphere[0] == positive ? angle : -angle;
}

// The four fields from `first` on: latitude, N or S, longitude, E or W.
std::optional<Place> ReadPlace(const Fields& fields, size_t first) {
    const auto latitude = ReadAngle(fields[first], fields[first + 1], 'N', 'S');
    const auto longitude = ReadAngle(fields[first + 2], fields[first + 3], 'E', 'W');
    if (!latitude || !longitude)
        return std::nullopt;
    const Place place{*latitude, *longitude};
    return place.InWorld() ? std::optional(place) : std::nullopt;
}

// A time or date as it stands, or nothing where it is not made of digits.
std::string_view Digits(std::string_view field) {
    return ReadNumber(field) ? field : std::string_view();
}

// $--RMC,time,A|V,latitude,N|S,longitude,E|W,knots,course,date,...
Sentence ReadRmc(const Fields& fields, Fix& fix) {
    if (fields.size() < 10 || (fields[2] != "A" && fields[2] != "V"))
        return Sentence::kUnreadable;
    if (fields[2] == "V") {
        fix.valid = false;
        return Sentence::kVoid;
    }
    const auto place = ReadPlace(fields, 3);
    if (!place)
        return Sentence::kUnreadable;
    fix.valid = true;
    fix.place = *place;
    fix.time = Digits(fields[1]);
    fix.speed = ReadNumber(fields[7]);
    fix.course = ReadNumber(fields[8]);
    fix.date = Digits(fields[9]);
    return Sentence::kPosition;
}

// $--GGA,time,latitude,N|S,longitude,E|W,quality,satellites,dilution,altitude,M,...
Sentence ReadGga(const Fields& fields, Fix& fix) {
    const auto quality = fields.size() < 11 ? std::nullopt : ReadInteger(fields[6]);
    if (!quality || *quality < 0)
        return Sentence::kUnreadable;
    if (*quality == 0) {
        fix.valid = false;
        return Sentence::kVoid;
    }
    const auto place = ReadPlace(fields, 2);
    if (!place)
        return Sentence::kUnreadable;
    fix.valid = true;
    fix.place = *place;
    fix.time = Digits(fields[1]);
    fix.satellites = ReadInteger(fields[7]);
    fix.altitude = ReadNumber(fields[9]);
    return Sentence::kPosition;
}

// Two letters of the talker, three of the kind. "P" begins a maker's own sentences.
bool IsKind(std::string_view address, std::string_view kind) {
    return address.size() == 5 && address.ends_with(kind) && address[0] != 'P';
}

Fields Split(std::string_view body) {
    Fields fields;
    while (body.find(',') != std::string_view::npos)
        fields.push_back(TakeField(body, ','));
    fields.push_back(body);
    return fields;
}

}  // namespace

Sentence ReadSentence(std::string_view text, Fix& fix) {
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    if (text.size() < 2 || text[0] != '$')
        return Sentence::kUnreadable;
    text.remove_prefix(1);
    const std::string_view body = TakeField(text, '*');
    if (!ChecksumHolds(body, text))
        return Sentence::kBadChecksum;
    const Fields fields = Split(body);
    if (IsKind(fields[0], "RMC"))
        return ReadRmc(fields, fix);
    if (IsKind(fields[0], "GGA"))
        return ReadGga(fields, fix);
    return Sentence::kOther;
}

}  // namespace zelto::navigator
