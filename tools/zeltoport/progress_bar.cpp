#include "tools/zeltoport/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <fmt/core.h>
#include <utility>

#include "platform/coredll/linux/device_admin.h"

namespace zelto::tools {

namespace {

constexpr int64_t kCells = 40;

}  // namespace

ProgressBar::ProgressBar(std::string label, int64_t total)
    : label_(std::move(label)), total_(total), visible_(coredll::IsTerminal(stderr)) {}

ProgressBar::~ProgressBar() {
    if (!shown_.empty())
        fmt::print(stderr, "\r{:{}}\r", "", shown_.size());
}

void ProgressBar::Update(int64_t done) {
    if (!visible_)
        return;
    std::string line = Line(done);
    if (line == shown_)
        return;
    fmt::print(stderr, "\r{:{}}", line, shown_.size());
    std::fflush(stderr);
    shown_ = std::move(line);
}

std::string ProgressBar::Line(int64_t done) const {
    if (total_ <= 0)
        return fmt::format("{} {}", label_, done);
    const double share =
        std::clamp(static_cast<double>(done) / static_cast<double>(total_), 0., 1.);
    const auto cells = static_cast<size_t>(share * kCells);
    return fmt::format("{} [{:<{}}] {:3}%", label_, std::string(cells, '#'), kCells,
                       static_cast<int>(share * 100));
}

}  // namespace zelto::tools
