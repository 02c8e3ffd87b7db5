// Bringing lines from a file's codepage to the current one.

#ifndef ZELTO_COMMON_FILES_LINE_RECODER_H
#define ZELTO_COMMON_FILES_LINE_RECODER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "common/text/codepage.h"
#include "common/text/dstring.h"

namespace zelto {

// Converts by DString::recode; lines that the conversion is known to leave as they are cost one
// look at their bytes.
// Thread safety: none; used by the thread of its container.
class LineRecoder {
  public:
    // From codepage `mark` (below 0: no conversion) to the current one. True when the conversion
    // was made: the line is then one of the recoder's, until the next call. False when it would
    // have changed nothing.
    bool Recode(std::string_view& line, int32_t mark) {
        const int32_t target = CurrentCodepage();
        if (mark < 0 || mark == target)
            return false;
        if (mark == mark_ && target == target_ && kept_ == Kept::kEveryByte)
            return false;
        return RecodeTo(target, line, mark);
    }

    // Gives the text the tag that a converted one has.
    static void Tag(DString& text, int32_t mark) {
        const int32_t target = CurrentCodepage();
        if (mark >= 0 && mark != target)
            text.set_codepage(mark == 0 ? 0 : target);
    }

  private:
    bool RecodeTo(int32_t target, std::string_view& line, int32_t mark);
    enum class Kept { kNothing, kAscii, kEveryByte };
    Kept WhatIsKept(int32_t mark, int32_t target);

    std::string converted_;
    int32_t mark_ = -1;
    int32_t target_ = -1;
    Kept kept_ = Kept::kNothing;
};

}  // namespace zelto

#endif
