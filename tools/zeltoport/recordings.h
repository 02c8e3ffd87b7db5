// The recordings that subcommands show, and where runs on devices of their own keep those of what
// failed.

#ifndef ZELTO_TOOLS_ZELTOPORT_RECORDINGS_H
#define ZELTO_TOOLS_ZELTOPORT_RECORDINGS_H

#include <optional>
#include <string>

#include "tools/wire/recording.h"

namespace zelto::tools {

// The recording in the file, or what the device in use remembers where `path` is "". Throws
// CommandError.
wire::Recording ReadRecording(const std::string& path);

// A file that is not there yet, in a folder of this user's that is: "zeltoport" in the user's
// folder for state (XDG_STATE_HOME, else ~/.local/state), or in the device where that cannot be
// had. Its name ends in the words, "late.jsonl". The oldest of more than kKeptRecordings go. Throws
// CommandError.
inline constexpr size_t kKeptRecordings = 100;
std::string NewRecordingPath(const std::string& words);

// Writes the recording to `path`, a new one where that is "", and its page beside it; says where
// they are, or why they could not be kept.
std::string KeepRecording(const wire::Recording& recording, const std::string& path,
                          const std::string& words);

struct KeptRecording {
    std::string path;
    int64_t wall_ns;  // when it was written, since 1970
};
std::optional<KeptRecording> NewestRecording();

}  // namespace zelto::tools

#endif
