#include "tools/track/track.h"

#include <fmt/core.h>

#include "tools/text/wide.h"
#include "tools/zelto-navigator/fields.h"

namespace zelto::track {

namespace {

constexpr const char* kBetween = ", ;\t\r\n";

std::string WithoutComments(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        std::string_view line = navigator::TakeField(text, '\n');
        plain += navigator::TakeField(line, '#');
        plain += '\n';
    }
    return plain;
}

std::vector<double> ReadNumbers(std::string_view text) {
    std::vector<double> numbers;
    for (size_t begin = text.find_first_not_of(kBetween); begin != text.npos;
         begin = text.find_first_not_of(kBetween)) {
        text.remove_prefix(begin);
        const std::string_view word = text.substr(0, text.find_first_of(kBetween));
        const auto number = navigator::ReadNumber(word);
        if (!number)
            throw TrackError(fmt::format("\"{}\" is not a number", tools::Printable(word)));
        numbers.push_back(*number);
        text.remove_prefix(word.size());
    }
    return numbers;
}

}  // namespace

Track ReadPlaces(std::string_view text) {
    const std::vector<double> numbers = ReadNumbers(WithoutComments(text));
    if (numbers.empty())
        throw TrackError("there are no places");
    if (numbers.size() % 2 != 0)
        throw TrackError("the last place has a latitude alone");
    Track places;
    for (size_t i = 0; i < numbers.size(); i += 2) {
        const navigator::Place place{numbers[i], numbers[i + 1]};
        if (!place.InWorld())
            throw TrackError(fmt::format("place {}, {},{}, is not on earth", i / 2 + 1,
                                         place.latitude, place.longitude));
        places.push_back({place, {}, {}});
    }
    return places;
}

}  // namespace zelto::track
