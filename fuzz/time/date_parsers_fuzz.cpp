// Every date parser, the splitting below them and the formatters after them, on any bytes.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/text/text_utils.h"
#include "common/time/date_format.h"
#include "common/time/date_parse.h"

using namespace zelto;

// The first byte is the limit of a split and the separator of the caller's form.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const char* text = bytes.c_str();
    const char separator[] = {static_cast<char>(data[0]), 0};
    DDateTime value;
    ParseYearMonthDayTime(value, text, separator);
    ParseDayMonthNameYear(value, text);
    ParseTimeOfDay(value, text);
    ParseDayMonthYearThenTime(value, text);
    ParseDayMonthNameYearThenTime(value, text);
    DString out;
    FormatDateTimeMonthNameShortYearMillis(value, out);
    value.Normalize();
    FormatDateTimeIso(value, out);
    DDuration span;
    ParseDuration(span, text);
    FormatDuration(span, out);

    // The date parser's short cut reads what the forms read.
    DDateTime by_forms;
    DDateTime by_date;
    const bool accepted = ParseYearMonthDayTime(by_forms, text) ||
                          ParseYearMonthDay(by_forms, text) || ParseDayMonthYear(by_forms, text);
    if (accepted != ParseDate(by_date, text) || by_forms != by_date)
        std::abort();

    FieldList fields;
    SplitTokensKeepSeparators(text, separator, fields, data[0] % 8, data[0] % 2 != 0);
    if (fields.Count() > data[0] % 8)
        std::abort();
    return 0;
}
