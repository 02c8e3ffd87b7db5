// Text that stands in front of a text reader's input.

#ifndef ZELTO_COMMON_FILES_PUT_BACK_TEXT_H
#define ZELTO_COMMON_FILES_PUT_BACK_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zelto {

// Pieces of it are in the current codepage already, as what comes from a line that was read is.
// Thread safety: none; used by the thread of its reader.
class PutBackText {
  public:
    bool IsEmpty() const { return pieces_.empty(); }
    void PutBack(std::string_view text, bool is_converted);  // copied
    void Clear() { pieces_.clear(); }

    // The piece in front. There must be one for Front and Take.
    std::string_view Front() const;
    bool FrontIsConverted() const { return !IsEmpty() && pieces_.back().is_converted; }
    void Take(size_t count);

  private:
    struct Piece {
        std::string text;
        size_t at;  // what is before is taken
        bool is_converted;
    };
    std::vector<Piece> pieces_;  // the last one is in front; none is empty
};

}  // namespace zelto

#endif
