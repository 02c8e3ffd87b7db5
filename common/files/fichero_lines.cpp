// Reading record files line by line.

#include <algorithm>

#include "common/files/blanks.h"
#include "common/files/fichero_itv.h"
#include "common/files/swar.h"

namespace zelto {
namespace {

constexpr int32_t kDefaultLimit = 20000;
constexpr char kNoLineEnd = '\0';

bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

// The characters that end the text of a line. 0xFF is the value -1 of a signed character.
constexpr ByteSet kStops(std::string_view("\n\r;\0\xFF", 5));

// The high bits of bytes that may be stops, among them all that are: those below 0x0E, which has
// tabs in it, and the two above.
uint64_t MaybeStops(uint64_t word) {
    constexpr uint64_t kBelow = kOnes * ('\r' + 1);
    return ((word - kBelow) & ~word & kHighBits) | BytesEqual(word, ';') | BytesEqual(word, 0xFF);
}

size_t CountUpTo(std::string_view segment, size_t size, size_t limit) {
    while (size < limit && !kStops.Contains(segment[size]))
        ++size;
    return size;
}

size_t CountText(std::string_view segment) {
    size_t size = 0;
    for (; segment.size() - size >= 8; size += 8) {
        const uint64_t maybe = MaybeStops(LoadEight(segment.data() + size));
        if (maybe == 0)
            continue;
        const size_t stop = CountUpTo(segment, size + FirstMarked(maybe), size + 8);
        if (stop < size + 8)
            return stop;
    }
    return CountUpTo(segment, size, segment.size());
}

size_t CountComment(std::string_view segment) {
    return static_cast<size_t>(std::find_if(segment.begin(), segment.end(), IsLineEnd) -
                               segment.begin());
}

}  // namespace

int32_t TFicheroITV::ReadLine(DString& target, int32_t limit) {
    const int32_t count = CollectLine(limit);
    target.assign(line_.data(), static_cast<int>(line_.size()));
    LineRecoder::Tag(target, encoding_mark_);
    return count;
}

// Leaves the next line in line_, and in line_end_ the line end behind it. The result is the line
// counter before that end.
int32_t TFicheroITV::CollectLine(int32_t limit) {
    const auto kept = static_cast<size_t>((limit < 1 ? kDefaultLimit : limit) - 1);
    int32_t count = 0;
    bool more = true;
    do {
        SkipWhite();
        more = CollectText(kept);
        count = line_count_;
        CountEnd(line_end_);
    } while (more && line_.empty());
    while (!line_.empty() && IsBlank(line_.back()))
        line_.remove_suffix(1);
    if (line_ == "VOID")
        line_ = "";
    line_was_recoded_ = recoder_.Recode(line_, encoding_mark_);
    if (line_was_recoded_)
        readable_ = line_.data() + line_.size();
    return count;
}

void TFicheroITV::SkipWhite() {
    for (;;) {
        const std::string_view segment = Segment();
        size_t size = 0;
        for (; size < segment.size() && (IsBlank(segment[size]) || IsLineEnd(segment[size]));
             ++size)
            CountEnd(segment[size]);
        Take(size);
        if (segment.empty() || size < segment.size())
            return;
    }
}

// Takes a line's text, of which line_ shows at most `kept` characters, and what ends it, the
// comment included. False when that was the end of the input.
bool TFicheroITV::CollectText(size_t kept) {
    std::string_view segment = Segment();
    size_t size = CountText(segment);
    if (size == segment.size())
        return JoinText(kept);
    // As a rule the line lies in one segment, and is shown where it is.
    line_ = segment.substr(0, std::min(size, kept));
    readable_ = segment.data() + segment.size();
    return EndText(segment, size);
}

bool TFicheroITV::JoinText(size_t kept) {
    collected_.clear();
    std::string_view segment;
    size_t size = 0;
    do {
        Take(size);
        segment = Segment();
        size = CountText(segment);
        collected_.append(segment, 0, std::min(size, kept - collected_.size()));
        if (size > 0)
            previous_ = segment[size - 1];
    } while (size == segment.size() && size > 0);
    ShowCollected();
    return EndText(segment, size);
}

void TFicheroITV::ShowCollected() {
    line_ = collected_;
    readable_ = collected_.data() + collected_.size();
}

// Takes the text and the character that stops it.
bool TFicheroITV::EndText(std::string_view segment, size_t size) {
    line_end_ = kNoLineEnd;
    if (segment.empty())
        return false;
    const char stop = segment[size];
    if (size > 0)
        previous_ = segment[size - 1];
    Take(size + 1);
    if (IsLineEnd(stop))
        line_end_ = stop;
    else
        previous_ = stop;
    return stop != ';' || SkipComment();
}

bool TFicheroITV::SkipComment() {
    for (;;) {
        const std::string_view segment = Segment();
        const size_t size = CountComment(segment);
        if (size < segment.size()) {
            line_end_ = segment[size];
            Take(size + 1);
            return true;
        }
        if (segment.empty())
            return false;
        if (line_.data() != collected_.data()) {  // the segment goes
            collected_ = line_;
            ShowCollected();
        }
        Take(size);
    }
}

}  // namespace zelto
