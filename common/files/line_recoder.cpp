#include "common/files/line_recoder.h"

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

// In blocks that compilers take in wide registers.
bool IsAscii(std::string_view text) {
    constexpr size_t kBlock = 32;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    size_t at = 0;
    unsigned char all = 0;
    for (; text.size() - at >= kBlock && all < kAsciiBytes; at += kBlock) {
        for (size_t i = 0; i < kBlock; ++i)
            all |= bytes[at + i];
    }
    for (; at < text.size(); ++at)
        all |= bytes[at];
    return all < kAsciiBytes;
}

}  // namespace

bool LineRecoder::RecodeTo(int32_t target, std::string_view& line, int32_t mark) {
    const Kept kept = WhatIsKept(mark, target);
    if (kept == Kept::kEveryByte || (kept == Kept::kAscii && IsAscii(line)))
        return false;
    converted_ = Converted(line, mark, target).c_str();
    line = converted_;
    return true;
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
