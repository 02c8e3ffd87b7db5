// Feeding position sentences to the navigator, as fast as it takes them or by their own clock.

#ifndef ZELTO_TOOLS_ZELTOPORT_SENTENCE_FEED_H
#define ZELTO_TOOLS_ZELTOPORT_SENTENCE_FEED_H

#include <istream>

#include "tools/zeltoport/export_caller.h"

namespace zelto::tools {

struct Feed {
    DWORD interval = 0;  // ms between two sentences
    double speed = 0;    // of the sentences' own clock; 0: as fast as they are taken
    bool narrow = false;

    const char* ExportName() const {
        return narrow ? "ZeltoNavPort_NewPoint_nmeaA" : "ZeltoNavPort_NewPoint_nmea";
    }
};

// Feeds every line of `input` and reports the outcome; `caller` is prepared. A refused sentence is
// named on standard error and does not stop the feed, a lost navigator does. `size` is the input's
// in bytes, for the progress bar; 0: not known.
void FeedNavigator(ExportCaller& caller, const Feed& feed, std::istream& input, int64_t size);

}  // namespace zelto::tools

#endif
