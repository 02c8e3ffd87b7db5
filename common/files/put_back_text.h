// Text that stands in front of a record file's input.

#ifndef ZELTO_COMMON_FILES_PUT_BACK_TEXT_H
#define ZELTO_COMMON_FILES_PUT_BACK_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace zelto {

// Taking characters moves an index: the rest of a line is put back by not taking it. What stands
// in front may be known to be a line; what comes behind its end is other text put back before.
// Thread safety: none; used by the thread of its container.
class PutBackText {
  public:
    bool IsEmpty() const { return at_ == text_.size(); }
    std::string_view Unread() const { return std::string_view(text_).substr(at_); }
    void Take(size_t count);  // the line in front is then no line any more
    void PutBack(std::string_view text);
    void Clear();

    // Puts a line, and the character that ends it, in front. Takes the line's storage and leaves
    // it some other.
    void HoldLine(std::string& line, char end);
    bool HoldsLine() const { return line_end_ != kNoLine; }
    std::string_view Line() const { return {text_.data() + at_, line_end_ - at_}; }
    void TakeOfLine(size_t count) { at_ += count; }
    char TakeLine();  // and its end, which is returned

  private:
    static constexpr size_t kNoLine = std::string::npos;

    std::string text_;
    size_t at_ = 0;
    size_t line_end_ = kNoLine;  // index of the character that ends the line in front
};

}  // namespace zelto

#endif
