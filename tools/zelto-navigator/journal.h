// A record of all requests, one JSON object a line.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_JOURNAL_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_JOURNAL_H

#include <cstdint>
#include <fstream>
#include <string>

namespace zelto::navigator {

struct JournalEntry {
    int generation = 0;  // 0: by packet file
    std::string request;
    std::string reply;  // empty: none went out
    int64_t microseconds = 0;
};

// Thread safety: none; used by one thread.
class Journal {
  public:
    // Opens the file for appending. False when it cannot be written.
    bool Open(const std::string& path);

    // Appends one line and hands it to the system. Nothing happens without an open file. False
    // when the line could not be written.
    //   time          device time, universal, "2010-05-01T09:30:00.125Z"
    //   generation    of the queue pair; 0 by packet file
    //   bytes         the request as text; bytes that are not UTF-8 appear as U+FFFD
    //   hex           the request in hexadecimal; only where `bytes` does not tell it all
    //   reply         the reply as text; null when none went out
    //   microseconds  from the announcement being taken to the reply going out
    bool Append(const JournalEntry& entry);

  private:
    std::ofstream file_;
};

}  // namespace zelto::navigator

#endif
