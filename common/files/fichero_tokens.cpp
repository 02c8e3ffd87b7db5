// Cutting the lines of record files into tokens.
//
// A token takes a whole line, is what stands before its first delimiter, and puts the rest back, to
// be read by the same rules. The rest is held where it is: as long as reading it again would yield
// the same text, the next token is taken from there, at the cost of its own length.

#include "common/files/fichero_itv.h"
#include "common/files/swar.h"
#include "common/text/codepage.h"
#include "common/text/numbers.h"

namespace zelto {

void TFicheroITV::get_dato_texto(DString& out) {
    const std::string_view token = NextToken();
    out.assign(token.data(), static_cast<int>(token.size()));
    LineRecoder::Tag(out, encoding_mark_);
}

// Has a line held whose next token stands at its front. False at the end of the input, and for a
// line that is "VOID".
bool TFicheroITV::ReachToken() {
    constexpr uint32_t kTextReading = FICH_TEXT | FICH_READ;
    if ((mode_ & kTextReading) != kTextReading)
        throw "Error en get_dato_texto";
    return SkipToToken() || HoldNextLine();
}

// Whether a line is held whose rest reads as it stands there; blanks at its front are then gone,
// and so is a "VOID" that is all of it.
bool TFicheroITV::SkipToToken() {
    if (!put_back_.HoldsLine() || !held_is_plain_ || held_codepage_ != CurrentCodepage())
        return false;
    const std::string_view rest = put_back_.Line();
    size_t blanks = 0;
    while (blanks < rest.size() && (rest[blanks] == ' ' || rest[blanks] == '\t'))
        ++blanks;
    put_back_.TakeOfLine(rest.substr(blanks) == "VOID" ? rest.size() : blanks);
    return blanks < rest.size();
}

// Reads a line and puts all of it back, uncounted, with the end that it had, so that an LF behind
// a CR is still met behind it. A line without one gets an LF.
bool TFicheroITV::HoldNextLine() {
    CollectLine(0);
    if (line_.empty())
        return false;
    held_is_plain_ = !line_was_recoded_;
    held_codepage_ = CurrentCodepage();
    put_back_.HoldLine(line_, line_end_ == '\r' ? '\r' : '\n', readable_);
    --line_count_;
    return true;
}

std::string_view TFicheroITV::TakeToken() {
    const std::string_view line = put_back_.Line();
    size_t size = 0;
    while (size < line.size() && !delimiters_.Contains(line[size]))
        ++size;
    if (size < line.size())
        put_back_.TakeOfLine(size);
    else
        TakeHeldLine();
    return line.substr(0, size);
}

// Takes the held line up to `at` when a token ends there.
bool TFicheroITV::EndToken(const char* at, const char* end) {
    const std::string_view line = put_back_.Line();
    if (at == end) {
        TakeHeldLine();
        return true;
    }
    if (at == line.data() || at > end || !delimiters_.Contains(*at))
        return false;
    put_back_.TakeOfLine(static_cast<size_t>(at - line.data()));
    return true;
}

void TFicheroITV::TakeHeldLine() {
    previous_ = '\0';
    CountEnd(put_back_.TakeLine());
}

// Good until the next read.
std::string_view TFicheroITV::NextToken() {
    return ReachToken() ? TakeToken() : "";
}

// The next token as an integer, modulo 2^64: what a field of any width keeps its low bits of.
uint64_t TFicheroITV::NextInteger() {
    if (!ReachToken())
        return 0;
    if (put_back_.ReadableSize() >= kDecimalRoom) {
        const std::string_view line = put_back_.Line();
        const char* end = line.data() + line.size();
        uint64_t value = 0;
        const char* at = ReadDecimal(line.data(), end, value);
        if (EndToken(at, end))
            return value;
    }
    const std::string_view token = TakeToken();
    return token.starts_with("0x") ? HexValue(token.substr(2))
                                   : static_cast<uint64_t>(DecimalValue64(token));
}

}  // namespace zelto
