#include "common/files/put_back_text.h"

namespace zelto {

void PutBackText::PutBack(std::string_view text) {
    OwnLine();
    if (text.size() <= at_) {
        at_ -= text.size();
        text.copy(text_.data() + at_, text.size());
        return;
    }
    text_.replace(0, at_, std::string(text));  // a copy: it may be part of the text
    at_ = 0;
}

void PutBackText::Clear() {
    text_.clear();
    at_ = 0;
    holds_line_ = false;
}

std::string_view PutBackText::Unread() {
    OwnLine();
    return std::string_view(text_).substr(at_);
}

void PutBackText::Take(size_t count) {
    OwnLine();
    at_ += count;
}

void PutBackText::HoldLine(std::string_view line, char end, const char* readable) {
    holds_line_ = true;
    line_ = line.data();
    line_stop_ = line.data() + line.size();
    line_end_ = end;
    readable_ = readable;
}

void PutBackText::OwnLine() {
    if (!holds_line_)
        return;
    holds_line_ = false;
    std::string line(Line());
    line.push_back(line_end_);
    PutBack(line);
}

}  // namespace zelto
