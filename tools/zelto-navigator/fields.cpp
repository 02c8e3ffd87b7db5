#include "tools/zelto-navigator/fields.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace zelto::navigator {

namespace {

template <class Number>
std::optional<Number> ReadWhole(std::string_view text) {
    Number value{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end)
        return std::nullopt;
    return value;
}

}  // namespace

std::string_view TakeField(std::string_view& rest, char separator) {
    const size_t at = rest.find(separator);
    const std::string_view field = rest.substr(0, at);
    rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + 1);
    return field;
}

std::optional<double> ReadNumber(std::string_view text) {
    const auto value = ReadWhole<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<int> ReadInteger(std::string_view text) {
    return ReadWhole<int>(text);
}

}  // namespace zelto::navigator
