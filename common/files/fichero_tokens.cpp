// Cutting the lines of record files into tokens.
//
// A token takes a whole line, is what stands before its first delimiter, and puts the rest back, to
// be read by the same rules. The rest is held where it is: as long as reading it again would yield
// the same text, the next token is taken from there, at the cost of its own length.

#include "common/files/blanks.h"
#include "common/files/fichero_itv.h"

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

// Drops the blanks at the front of the held line, and a "VOID" that is all of it. Whether a token
// is left there.
bool TFicheroITV::SkipToToken() {
    if (!HoldsPlainLine())
        return false;
    const std::string_view rest = put_back_.Line();
    const size_t blanks = CountBlanks(rest);
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

// Good until the next read.
std::string_view TFicheroITV::NextToken() {
    return ReachToken() ? TakeToken() : "";
}

}  // namespace zelto
