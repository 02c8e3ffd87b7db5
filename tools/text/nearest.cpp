#include "tools/text/nearest.h"

#include <algorithm>
#include <numeric>

namespace zelto::tools {

namespace {

// Letters to insert, drop or change between the two; none where b begins with a.
size_t Distance(std::string_view a, std::string_view b) {
    if (!a.empty() && b.starts_with(a))
        return 0;
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string Nearest(std::string_view word, const std::vector<std::string>& known) {
    const auto nearest = std::min_element(
        known.begin(), known.end(),
        [word](const auto& a, const auto& b) { return Distance(word, a) < Distance(word, b); });
    return nearest == known.end() ? "" : *nearest;
}

}  // namespace zelto::tools
