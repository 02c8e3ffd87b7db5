#include "common/files/put_back_text.h"

namespace zelto {

void PutBackText::PutBack(std::string_view text, bool is_converted) {
    if (text.empty())
        return;
    if (!IsEmpty() && pieces_.back().is_converted == is_converted &&
        pieces_.back().at >= text.size()) {
        Piece& front = pieces_.back();
        front.at -= text.size();
        text.copy(front.text.data() + front.at, text.size());
        return;
    }
    pieces_.push_back({std::string(text), 0, is_converted});
}

std::string_view PutBackText::Front() const {
    const Piece& front = pieces_.back();
    return std::string_view(front.text).substr(front.at);
}

void PutBackText::Take(size_t count) {
    Piece& front = pieces_.back();
    front.at += count;
    if (front.at == front.text.size())
        pieces_.pop_back();
}

}  // namespace zelto
