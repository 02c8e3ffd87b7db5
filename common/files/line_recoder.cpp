#include "common/files/line_recoder.h"

#include <algorithm>

#include "common/files/text_scan.h"
#include "common/text/codepage.h"

namespace zelto {
namespace {

constexpr int kBytes = 256;
constexpr int kAsciiBytes = 128;

DString Converted(std::string_view line, int32_t mark, int32_t target) {
    DString text;
    text.assign(line.data(), static_cast<int>(line.size()));
    text.set_codepage(mark);
    text.recode(target);
    return text;
}

// Every byte from 1 on, each in front of a blank, so that none makes a character with the next.
std::string EveryByte(int end) {
    std::string text;
    for (int byte = 1; byte < end; ++byte) {
        text.push_back(static_cast<char>(byte));
        text.push_back(' ');
    }
    return text;
}

bool IsAscii(std::string_view text) {
    size_t at = 0;
    for (; text.size() - at >= 8; at += 8) {
        if ((LoadEight(text.data() + at) & kHighBits) != 0)
            return false;
    }
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < kAsciiBytes; });
}

}  // namespace

bool LineRecoder::Recode(std::string_view& line, int32_t mark) {
    const int32_t target = CurrentCodepage();
    if (mark < 0 || mark == target)
        return false;
    const Kept kept = WhatIsKept(mark, target);
    if (kept == Kept::kEveryByte || (kept == Kept::kAscii && IsAscii(line)))
        return false;
    converted_ = Converted(line, mark, target).c_str();
    line = converted_;
    return true;
}

void LineRecoder::Tag(DString& text, int32_t mark) {
    const int32_t target = CurrentCodepage();
    if (mark >= 0 && mark != target)
        text.set_codepage(mark == 0 ? 0 : target);
}

LineRecoder::Kept LineRecoder::WhatIsKept(int32_t mark, int32_t target) {
    if (mark == mark_ && target == target_)
        return kept_;
    mark_ = mark;
    target_ = target;
    const auto keeps = [mark, target](const std::string& bytes) {
        return Converted(bytes, mark, target).compare(bytes.c_str()) == 0;
    };
    kept_ = Kept::kNothing;
    if (keeps(EveryByte(kAsciiBytes)))
        kept_ = keeps(EveryByte(kBytes)) ? Kept::kEveryByte : Kept::kAscii;
    return kept_;
}

}  // namespace zelto
