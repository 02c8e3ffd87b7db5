#include "common/files/text_reader.h"

#include <algorithm>

#include "common/files/text_scan.h"

namespace zelto {
namespace {

constexpr int32_t kDefaultLimit = 20000;
constexpr char kNoLineEnd = '\0';

bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

size_t CountComment(std::string_view segment) {
    return static_cast<size_t>(std::find_if(segment.begin(), segment.end(), IsLineEnd) -
                               segment.begin());
}

}  // namespace

// Characters at the front of the input; none only at its end.
std::string_view TextReader::NextSegment() {
    OwnHeldLine();
    if (!put_back_.IsEmpty())
        return put_back_.Front();
    if (window_.empty()) {
        if (room_ == nullptr)
            room_ = std::make_unique_for_overwrite<char[]>(kRoom);
        owner_.reset();
        window_ = source_.Fetch(room_.get(), owner_);
    }
    return window_;
}

// Takes characters off the front. They must all be of one segment.
void TextReader::Take(size_t count) {
    if (put_back_.IsEmpty())
        window_.remove_prefix(count);
    else
        put_back_.Take(count);
}

void TextReader::PutInFront(std::string_view text, bool is_converted) {
    OwnHeldLine();
    put_back_.PutBack(text, is_converted);
}

void TextReader::Clear() {
    DropUnread();
    room_.reset();
    owner_.reset();
    held_.is_held = false;
    put_back_.Clear();
}

std::string_view TextReader::ReadLine(int32_t limit, int32_t& lines) {
    lines = CollectLine(limit);
    return line_;
}

// Leaves the next line in line_, and in line_end_ the line end behind it. The result is the line
// counter before that end.
int32_t TextReader::CollectLine(int32_t limit) {
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
    line_was_recoded_ = Convert();
    if (line_was_recoded_)
        readable_ = line_.data() + line_.size();
    return count;
}

void TextReader::SkipWhite() {
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
bool TextReader::CollectText(size_t kept) {
    const std::string_view segment = Segment();
    const size_t size = CountText(segment);
    if (size == segment.size() || !put_back_.IsEmpty())
        return JoinText(kept);
    // As a rule the line lies in one segment, and is shown where it is.
    runs_.clear();
    line_ = segment.substr(0, std::min(size, kept));
    readable_ = segment.data() + segment.size();
    return EndText(segment, size);
}

bool TextReader::JoinText(size_t kept) {
    collected_.clear();
    runs_.clear();
    std::string_view segment;
    size_t size = 0;
    do {
        Take(size);
        segment = Segment();
        size = CountText(segment);
        collected_.append(segment, 0, std::min(size, kept - collected_.size()));
        if (size > 0) {
            AddRun(put_back_.FrontIsConverted());
            previous_ = segment[size - 1];
        }
    } while (size == segment.size() && size > 0);
    ShowCollected();
    return EndText(segment, size);
}

// What was collected last joins what has the same need of being converted: a character may lie
// across two segments.
void TextReader::AddRun(bool is_converted) {
    if (runs_.empty() || runs_.back().is_converted != is_converted)
        runs_.push_back({0, is_converted});
    runs_.back().end = collected_.size();
}

void TextReader::ShowCollected() {
    line_ = collected_;
    readable_ = collected_.data() + collected_.size();
}

// Takes the text and the character that stops it.
bool TextReader::EndText(std::string_view segment, size_t size) {
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

bool TextReader::SkipComment() {
    for (;;) {
        if (window_.empty() && line_.data() != collected_.data()) {  // its segment goes
            collected_ = line_;
            ShowCollected();
        }
        const std::string_view segment = Segment();
        const size_t size = CountComment(segment);
        if (size < segment.size()) {
            line_end_ = segment[size];
            Take(size + 1);
            return true;
        }
        if (segment.empty())
            return false;
        Take(size);
    }
}

// Brings the line to the current codepage, but for what was brought there before. Whether that
// changed where it lies.
bool TextReader::Convert() {
    if (runs_.size() > 1)
        return ConvertRuns();
    const bool is_converted = !runs_.empty() && runs_[0].is_converted;
    return !is_converted && recoder_.Recode(line_, codepage_);
}

bool TextReader::ConvertRuns() {
    std::string whole;
    std::string_view left = line_;
    size_t start = 0;
    for (const Run& run : runs_) {
        std::string_view part = left.substr(0, run.end - start);
        left.remove_prefix(part.size());
        start = run.end;
        if (!run.is_converted)
            recoder_.Recode(part, codepage_);
        whole += part;
    }
    collected_ = std::move(whole);
    line_ = collected_;
    return true;
}

}  // namespace zelto
