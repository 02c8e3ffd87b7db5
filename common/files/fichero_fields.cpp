// The typed fields of record files.

#include <charconv>
#include <type_traits>

#include "common/files/fichero_itv.h"
#include "common/time/date_format.h"
#include "common/time/date_parse.h"

namespace zelto {
namespace {

// What an integer is written as: signed, of its own width, an unsigned one with its bits.
template <class Value>
using Written = std::conditional_t<sizeof(Value) == 8, int64_t,
                                   std::conditional_t<sizeof(Value) == 4, int32_t, int16_t>>;

// A date in binary: four bytes that readers ignore, then the six fields.
struct DateRecord {
    int32_t ignored;
    int32_t day;
    int32_t month;
    int32_t year;
    int32_t hour;
    int32_t minute;
    float seconds;
};
static_assert(sizeof(DateRecord) == 28);

}  // namespace

// What text fields are read from.
TextReader& TFicheroITV::Tokens() {
    constexpr uint32_t kTextReading = FICH_TEXT | FICH_READ;
    if ((mode_ & kTextReading) != kTextReading)
        throw "Error en get_dato_texto";
    return reader_;
}

void TFicheroITV::WriteField(const char* text, size_t size) {
    Write(text, static_cast<int32_t>(size));
    if (separator_ != '\0')
        Write(&separator_, 1);
}

template <class Value>
TFicheroITV& TFicheroITV::PutInteger(Value value) {
    if ((mode_ & FICH_TEXT) != 0) {
        char text[24];
        const auto result =
            std::to_chars(text, text + sizeof text, static_cast<Written<Value>>(value));
        WriteField(text, static_cast<size_t>(result.ptr - text));
    } else if ((mode_ & FICH_BINARY) != 0) {
        Write(&value, sizeof value);
    }
    return *this;
}

template <class Value>
TFicheroITV& TFicheroITV::PutDecimal(Value value) {
    if ((mode_ & FICH_TEXT) != 0) {
        DString text;
        text.set_decimals(precision_);
        text += static_cast<double>(value);
        WriteField(text.c_str(), static_cast<size_t>(text.length()));
    } else if ((mode_ & FICH_BINARY) != 0) {
        Write(&value, sizeof value);
    }
    return *this;
}

TFicheroITV& TFicheroITV::PutByte(unsigned char value) {
    const char character = static_cast<char>(value);
    if ((mode_ & FICH_TEXT) != 0)
        WriteField(&character, 1);
    else if ((mode_ & FICH_BINARY) != 0)
        Write(&character, 1);
    return *this;
}

// A variable of any width keeps the low bits.
template <class Value>
TFicheroITV& TFicheroITV::GetInteger(Value& value) {
    if ((mode_ & FICH_TEXT) != 0)
        value = static_cast<Value>(Tokens().ReadInteger());
    if ((mode_ & FICH_BINARY) != 0)
        Read(&value, sizeof value);
    return *this;
}

template <class Value>
TFicheroITV& TFicheroITV::GetDecimal(Value& value) {
    if ((mode_ & FICH_TEXT) != 0)
        value = static_cast<Value>(Tokens().ReadNumber());
    if ((mode_ & FICH_BINARY) != 0)
        Read(&value, sizeof value);
    return *this;
}

// A character is the first of its token, 0 for an empty one.
unsigned char TFicheroITV::GetByte(unsigned char value) {
    if ((mode_ & FICH_TEXT) != 0) {
        const std::string_view token = Tokens().ReadToken();
        value = token.empty() ? 0 : static_cast<unsigned char>(token[0]);
    }
    if ((mode_ & FICH_BINARY) != 0)
        Read(&value, 1);
    return value;
}

TFicheroITV& TFicheroITV::operator<<(char value) {
    return PutByte(static_cast<unsigned char>(value));
}
TFicheroITV& TFicheroITV::operator<<(signed char value) {
    return PutByte(static_cast<unsigned char>(value));
}
TFicheroITV& TFicheroITV::operator<<(unsigned char value) {
    return PutByte(value);
}
TFicheroITV& TFicheroITV::operator<<(bool value) {
    return PutByte(value ? 1 : 0);
}
TFicheroITV& TFicheroITV::operator<<(short value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(unsigned short value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(int value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(unsigned int value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(long value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(unsigned long value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(long long value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(unsigned long long value) {
    return PutInteger(value);
}
TFicheroITV& TFicheroITV::operator<<(float value) {
    return PutDecimal(value);
}
TFicheroITV& TFicheroITV::operator<<(double value) {
    return PutDecimal(value);
}

TFicheroITV& TFicheroITV::operator<<(const DDateTime& value) {
    if ((mode_ & FICH_TEXT) != 0) {
        DString text;
        FormatDateTime(value, text);
        WriteField(text.c_str(), static_cast<size_t>(text.length()));
    } else if ((mode_ & FICH_BINARY) != 0) {
        const DateRecord record = {0,          value.day,    value.month,  value.year,
                                   value.hour, value.minute, value.seconds};
        Write(&record, sizeof record);
    }
    return *this;
}

TFicheroITV& TFicheroITV::operator>>(char& value) {
    value = static_cast<char>(GetByte(static_cast<unsigned char>(value)));
    return *this;
}
TFicheroITV& TFicheroITV::operator>>(signed char& value) {
    value = static_cast<signed char>(GetByte(static_cast<unsigned char>(value)));
    return *this;
}
TFicheroITV& TFicheroITV::operator>>(unsigned char& value) {
    value = GetByte(value);
    return *this;
}
TFicheroITV& TFicheroITV::operator>>(bool& value) {
    value = GetByte(value ? 1 : 0) != 0;
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
TFicheroITV& TFicheroITV::operator>>(float& value) {
    return GetDecimal(value);
}
TFicheroITV& TFicheroITV::operator>>(double& value) {
    return GetDecimal(value);
}

// The text of a date has blanks between date and time: where these delimit, it is two tokens.
TFicheroITV& TFicheroITV::operator>>(DDateTime& value) {
    if ((mode_ & FICH_TEXT) != 0) {
        DString text;
        get_dato_texto(text);
        if (reader_.Delimits(' ')) {
            DString time;
            get_dato_texto(time);
            text += ' ';
            text += time.c_str();
        }
        if (!ParseDayMonthYearThenTime(value, text))
            value = DDateTime();
    }
    if ((mode_ & FICH_BINARY) != 0) {
        DateRecord record = {0,          value.day,    value.month,  value.year,
                             value.hour, value.minute, value.seconds};
        Read(&record, sizeof record);
        value = DDateTime(record.day, record.month, record.year, record.hour, record.minute,
                          record.seconds);
    }
    return *this;
}

}  // namespace zelto
