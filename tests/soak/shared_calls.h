// Every call on windows, queues and events, in one order, for trials in which any may fail.

#ifndef ZELTO_TESTS_SOAK_SHARED_CALLS_H
#define ZELTO_TESTS_SOAK_SHARED_CALLS_H

#include "tests/soak/soak.h"

namespace zelto::soak {

// Makes every call once, on objects of its own and on those that LeaveObjects leaves, each with a
// time-out of 10 ms at most. Returns how many calls failed that succeed on a sound device; ends
// early once a call has taken over a second. `longest` takes the time of each.
int MakeEveryCall(Longest& longest);

// Opens shared objects and leaves them open, messages in them.
void LeaveObjects();

}  // namespace zelto::soak

#endif
