// How a failed check shows a date.

#ifndef ZELTO_TESTS_TIME_DATE_PRINTING_H
#define ZELTO_TESTS_TIME_DATE_PRINTING_H

#include <ostream>

#include "common/time/date_time.h"

namespace zelto {

inline void PrintTo(const DDateTime& value, std::ostream* out) {
    *out << value.year << '-' << value.month << '-' << value.day << ' ' << value.hour << ':'
         << value.minute << ':' << value.seconds;
}

}  // namespace zelto

#endif
