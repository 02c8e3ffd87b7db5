// Reading the integer fields of record files.

#include "common/files/blanks.h"
#include "common/files/fichero_itv.h"
#include "common/files/swar.h"
#include "common/text/numbers.h"

namespace zelto {

// Takes a token that is digits with or without a sign, and the blanks before it, off the held line.
// False, and nothing taken, when there stands anything else or the line's end is too near.
inline bool TFicheroITV::TakeDecimal(uint64_t& value) {
    const std::string_view line = put_back_.Line();
    const char* end = line.data() + line.size();
    const size_t blanks = CountBlanks(line);
    if (put_back_.ReadableSize() < blanks + kDecimalRoom)
        return false;
    const char* digits = line.data() + blanks;
    const char* stop = ReadDecimal(digits, end, value);
    if (stop == end && stop != digits) {
        TakeHeldLine();
        return true;
    }
    if (stop == digits || stop > end || !delimiters_.Contains(*stop))
        return false;
    put_back_.TakeOfLine(static_cast<size_t>(stop - line.data()));
    return true;
}

// The next token as an integer, modulo 2^64: what a field of any width keeps its low bits of.
uint64_t TFicheroITV::ReadInteger() {
    uint64_t value = 0;
    if (!ReachToken())
        return 0;
    if (TakeDecimal(value))
        return value;
    const std::string_view token = TakeToken();
    return token.starts_with("0x") ? HexValue(token.substr(2))
                                   : static_cast<uint64_t>(DecimalValue64(token));
}

// The same, with a short cut for the usual case. Only text reading leaves a line held.
inline uint64_t TFicheroITV::NextInteger() {
    uint64_t value = 0;
    return HoldsPlainLine() && TakeDecimal(value) ? value : ReadInteger();
}

template <class Value>
TFicheroITV& TFicheroITV::GetInteger(Value& value) {
    if ((mode_ & FICH_TEXT) != 0)
        value = static_cast<Value>(NextInteger());
    if ((mode_ & FICH_BINARY) != 0)
        Read(&value, sizeof value);
    return *this;
}

TFicheroITV& TFicheroITV::operator>>(short& value) {
    return GetInteger(value);
}
TFicheroITV& TFicheroITV::operator>>(unsigned short& value) {
    return GetInteger(value);
}
TFicheroITV& TFicheroITV::operator>>(int& value) {
    return GetInteger(value);
}
TFicheroITV& TFicheroITV::operator>>(unsigned int& value) {
    return GetInteger(value);
}
TFicheroITV& TFicheroITV::operator>>(long& value) {
    return GetInteger(value);
}
TFicheroITV& TFicheroITV::operator>>(unsigned long& value) {
    return GetInteger(value);
}
TFicheroITV& TFicheroITV::operator>>(long long& value) {
    return GetInteger(value);
}
TFicheroITV& TFicheroITV::operator>>(unsigned long long& value) {
    return GetInteger(value);
}

}  // namespace zelto
