// Every date parser and the splitting below them, on any bytes.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/text/text_utils.h"
#include "common/time/date_format.h"
#include "common/time/date_parse.h"

namespace {

using zelto::DDateTime;
using zelto::DString;

void Require(bool holds) {
    if (!holds)
        std::abort();
}

bool ParseByForms(DDateTime& out, const char* text) {
    return zelto::ParseYearMonthDayTime(out, text) || zelto::ParseYearMonthDay(out, text) ||
           zelto::ParseDayMonthYear(out, text);
}

void CheckParsers(const char* text) {
    DDateTime value;
    zelto::ParseDayMonthNameYear(value, text);
    zelto::ParseTimeOfDay(value, text);
    zelto::ParseDayMonthYearThenTime(value, text);
    zelto::ParseDayMonthNameYearThenTime(value, text);
    DString out;
    zelto::FormatDateTimeMonthNameShortYearMillis(value, out);
    value.Normalize();
    zelto::FormatDateTimeIso(value, out);
    zelto::DDuration span;
    zelto::ParseDuration(span, text);
    zelto::FormatDuration(span, out);

    // The date parser's short cut reads what the forms read.
    DDateTime by_forms;
    DDateTime by_date;
    Require(ParseByForms(by_forms, text) == ParseDate(by_date, text));
    Require(by_forms == by_date);
}

// Without a limit, the fields joined again are the text, all its separators made the same and one
// at the very end dropped. With a limit there are no more fields than that.
void CheckSplitting(const char* text, int32_t limit) {
    zelto::FieldList fields;
    zelto::SplitTokens(text, "-:", fields, limit, true);
    if (limit >= 0) {
        Require(fields.Count() <= limit);
        return;
    }
    std::string joined;
    for (int32_t i = 0; i < fields.Count(); ++i)
        joined.append(i > 0 ? "-" : "").append(fields[i].c_str());
    std::string expected = text;
    std::replace(expected.begin(), expected.end(), ':', '-');
    if (expected.ends_with('-'))
        expected.pop_back();
    Require(joined == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The first byte is the limit of the split and the separator set of the caller's form.
    if (size == 0)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    CheckParsers(text.c_str());
    CheckSplitting(text.c_str(), data[0] % 8 - 1);
    const char separator[] = {static_cast<char>(data[0]), 0};
    DDateTime value;
    zelto::ParseYearMonthDayTime(value, text.c_str(), separator);
    return 0;
}
