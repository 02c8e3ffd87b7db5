// A progress bar on standard error, for runs that take a while.

#ifndef ZELTO_TOOLS_ZELTOPORT_PROGRESS_BAR_H
#define ZELTO_TOOLS_ZELTOPORT_PROGRESS_BAR_H

#include <cstdint>
#include <string>

namespace zelto::tools {

// Draws only where standard error is a terminal; elsewhere it does nothing. The line is wiped
// when the bar goes, so what is printed afterwards starts in a clean line.
// Thread safety: none; used by one thread.
class ProgressBar {
  public:
    // `total` in whatever unit Update counts; 0 or less: unknown, and only the count is shown.
    ProgressBar(std::string label, int64_t total);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // Redraws when there is something new to see.
    void Update(int64_t done);

  private:
    std::string Line(int64_t done) const;

    std::string label_;
    int64_t total_;
    bool visible_;
    std::string shown_;
};

}  // namespace zelto::tools

#endif
