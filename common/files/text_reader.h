// Reading text: lines without blanks and comments, tokens and numbers. docs/record-files.md states
// the rules.

#ifndef ZELTO_COMMON_FILES_TEXT_READER_H
#define ZELTO_COMMON_FILES_TEXT_READER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/files/line_recoder.h"
#include "common/files/put_back_text.h"
#include "common/text/token_scanner.h"

namespace zelto {

// Where a TextReader's characters come from.
class TextSource {
  public:
    // The characters that come next, which are behind the source's position from then on: in
    // `room`, of TextReader::kRoom bytes, or elsewhere, kept there by `owner`. None at the end.
    virtual std::string_view Fetch(char* room, std::shared_ptr<const void>& owner) = 0;

  protected:
    ~TextSource() = default;
};

// Cuts the characters of a source, behind what was put back. What it holds of them is its own or
// kept by it: nothing that happens to the source touches it. Each character of the source is
// converted to the current codepage once.
// Thread safety: none; used by the thread of its container.
class TextReader {
  public:
    static constexpr size_t kRoom = size_t{64} << 10;  // bytes

    explicit TextReader(TextSource& source) : source_(source) {}

    // The codepage of the source's text, as which lines are converted; below 0: they are not.
    void SetCodepage(int32_t codepage) { codepage_ = codepage; }
    int32_t Codepage() const { return codepage_; }
    void SetDelimiters(std::string_view delimiters) { delimiters_ = ByteSet(delimiters); }
    bool Delimits(char c) const { return delimiters_.Contains(c); }

    // The next line that is not blank, without its comment, of its first `limit` - 1 characters
    // (below 1: 19,999); empty at the end of the input. Views are good until the next call.
    // `lines` receives the counter in front of the line's end.
    std::string_view ReadLine(int32_t limit, int32_t& lines);

    // The next token: what stands before the first delimiter of the line. Empty at the end.
    std::string_view ReadToken();
    uint64_t ReadInteger();  // the next token, modulo 2^64
    double ReadNumber();     // sign, digits, point, digits

    void PutBack(std::string_view text) { PutInFront(text, false); }

    // Characters fetched and not read: the source's position is ahead by so many.
    size_t Unread() const { return window_.size(); }
    void DropUnread() { window_ = {}; }

    void Clear();  // the unread, and what was put back
    void ForgetPrevious() { previous_ = 0; }
    void ResetLineCount() { line_count_ = 0; }
    int32_t LineCount() const { return line_count_; }

  private:
    // The rest of a line that a token was taken from: put back by not taking it.
    struct HeldLine {
        bool is_held = false;
        bool is_plain = false;  // it reads as it stands there
        char end = 0;           // the character that ends it
        const char* at = nullptr;
        const char* stop = nullptr;
        const char* readable = nullptr;  // bytes up to here may be read

        std::string_view Rest() const { return {at, static_cast<size_t>(stop - at)}; }
    };
    struct Run {
        size_t end;  // in the collected line; it begins where the one before ends
        bool is_converted;
    };

    // text_reader.cpp
    std::string_view Segment() {
        return !held_.is_held && put_back_.IsEmpty() && !window_.empty() ? window_ : NextSegment();
    }
    std::string_view NextSegment();
    void Take(size_t count);
    void PutInFront(std::string_view text, bool is_converted);
    void CountEnd(char end);
    int32_t CollectLine(int32_t limit);
    void SkipWhite();
    bool CollectText(size_t kept);
    bool JoinText(size_t kept);
    void AddRun(bool is_converted);
    void ShowCollected();
    bool EndText(std::string_view segment, size_t size);
    bool SkipComment();
    bool Convert();
    bool ConvertRuns();

    // text_tokens.cpp
    bool ReachToken();
    bool SkipToToken();
    bool HoldNextLine();
    std::string_view TakeToken();
    inline void TakeOfHeld(size_t count);
    inline void TakeHeldLine();
    void OwnHeldLine();
    inline bool EndNumber(const char* stop);
    inline bool TakeInteger(uint64_t& value);
    inline bool TakeFixedPoint(double& value);

    TextSource& source_;
    int32_t codepage_ = -1;
    ByteSet delimiters_{" \t\n"};
    int32_t line_count_ = 0;
    char previous_ = 0;  // the last character that was taken
    HeldLine held_;
    PutBackText put_back_;
    std::string_view window_;
    std::unique_ptr<char[]> room_;
    std::shared_ptr<const void> owner_;  // of what the window shows, or a held line
    std::string_view line_;              // the last line that was collected, wherever it lies;
    const char* readable_ = nullptr;     // bytes up to here may be read,
    std::string collected_;              // here, when it was in several segments,
    std::vector<Run> runs_;              // and how that one is put together;
    char line_end_ = 0;                  // the CR or LF behind it, else 0
    bool line_was_recoded_ = false;
    LineRecoder recoder_;
};

// Counts what may be a line end: CR, and LF unless it follows a CR.
inline void TextReader::CountEnd(char end) {
    if (end == '\r' || (end == '\n' && previous_ != '\r'))
        ++line_count_;
    previous_ = end;
}

}  // namespace zelto

#endif
