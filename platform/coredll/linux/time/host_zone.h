// The host's time zone, which a fresh device takes over.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_HOST_ZONE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_HOST_ZONE_H

#include "platform/coredll/api/clock.h"

namespace zelto::coredll {

// The zone of the host's C library (the environment variable TZ, else the system's own) as the
// record that tells the local time of the moment's year; `ticks` is UTC.
//
// Where the year has two changes that fall on the same weekday of a month in the years to come,
// they are given so, else as dates of that year. A change that has no such weekday at 00:00, but
// the day before has one, is told as 23:59:59.999 of that day, the end of the day in this record's
// terms. A year with other than two changes has a record without any, true for the moment.
//
// Thread safety: any thread.
TIME_ZONE_INFORMATION HostZone(int64_t ticks);

}  // namespace zelto::coredll

#endif
