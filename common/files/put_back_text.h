// Text that stands in front of a record file's input.

#ifndef ZELTO_COMMON_FILES_PUT_BACK_TEXT_H
#define ZELTO_COMMON_FILES_PUT_BACK_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace zelto {

// In front may stand a line that lives elsewhere, not copied: the rest of a line is put back by
// not taking it. Behind it comes other text that was put back before.
// Thread safety: none; used by the thread of its container.
class PutBackText {
  public:
    bool IsEmpty() const { return !holds_line_ && at_ == text_.size(); }
    void PutBack(std::string_view text);  // copied; a line in front is then text like any other
    void Clear();

    // The text as a whole, the line and its end included.
    std::string_view Unread();
    void Take(size_t count);

    // A line in front, and the character that ends it. Its bytes, and those up to `readable`, must
    // stay as they are until it is taken or anything is put back.
    void HoldLine(std::string_view line, char end, const char* readable);
    bool HoldsLine() const { return holds_line_; }
    std::string_view Line() const { return {line_, static_cast<size_t>(line_stop_ - line_)}; }
    size_t ReadableSize() const { return static_cast<size_t>(readable_ - line_); }
    void TakeOfLine(size_t count) { line_ += count; }
    char TakeLine();  // and its end, which is returned
    void OwnLine();   // the line's bytes may change now

  private:
    std::string text_;
    size_t at_ = 0;
    bool holds_line_ = false;
    char line_end_ = 0;
    const char* line_ = nullptr;
    const char* line_stop_ = nullptr;
    const char* readable_ = nullptr;
};

inline char PutBackText::TakeLine() {
    holds_line_ = false;
    return line_end_;
}

}  // namespace zelto

#endif
