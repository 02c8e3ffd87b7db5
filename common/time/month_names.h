// The names of the months, shared by the date parsers and formatters.

#ifndef ZELTO_COMMON_TIME_MONTH_NAMES_H
#define ZELTO_COMMON_TIME_MONTH_NAMES_H

#include <cstdint>

namespace zelto {

// Three upper-case letters: "NUL" for 0, "JAN" to "DEC" for 1 to 12, "XX1" and "XX2" for 13 and
// 14; "" for any other index.
const char* MonthAbbreviation(int32_t month);

// Abbreviations as written in twelve languages, bytes in ISO-8859-1, columns January to December.
// The rows: German, Catalan, Danish, Spanish, Finnish, French, English, Italian, Norwegian,
// Portuguese, Swedish, Basque.
extern const char* const MonthNames[12][12];

}  // namespace zelto

#endif
