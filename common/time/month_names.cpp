#include "common/time/month_names.h"

namespace zelto {
namespace {

constexpr const char* kAbbreviations[] = {"NUL", "JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL",
                                          "AUG", "SEP", "OCT", "NOV", "DEC", "XX1", "XX2"};
constexpr int32_t kAbbreviationCount = sizeof kAbbreviations / sizeof kAbbreviations[0];

}  // namespace

const char* MonthAbbreviation(int32_t month) {
    return month >= 0 && month < kAbbreviationCount ? kAbbreviations[month] : "";
}

// clang-format off
const char* const MonthNames[12][12] = {
    {"Jan", "Feb", "Mrz", "Apr", "Mai", "Jun", "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"},
    {"gen", "feb", "mar\xE7", "abr", "maig", "juny", "jul", "ag", "set", "oct", "nov", "des"},
    {"jan", "feb", "mar", "apr", "maj", "jun", "jul", "aug", "sep", "okt", "nov", "dec"},
    {"ene", "feb", "mar", "abr", "may", "jun", "jul", "ago", "sep", "oct", "nov", "dic"},
    {"tammi", "helmi", "maalis", "huhti", "touko", "kes\xE4", "hein\xE4", "elo", "syys", "loka",
     "marras", "joulu"},
    {"janv", "f\xE9vr", "mars", "avr", "mai", "juin", "juil", "ao\xFBt", "sept", "oct", "nov",
     "d\351c"},
    {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"},
    {"gen", "feb", "mar", "apr", "mag", "giu", "lug", "ago", "set", "ott", "nov", "dic"},
    {"jan", "feb", "mar", "apr", "mai", "jun", "jul", "aug", "sep", "okt", "nov", "des"},
    {"Jan", "Fev", "Mar", "Abr", "Mai", "Jun", "Jul", "Ago", "Set", "Out", "Nov", "Dez"},
    {"jan", "feb", "mar", "apr", "maj", "jun", "jul", "aug", "sep", "okt", "nov", "dec"},
    {"urt", "ots", "mar", "api", "mai", "eka", "uzt", "abu", "ira", "urr", "aza", "abe"},
};
// clang-format on

}  // namespace zelto
