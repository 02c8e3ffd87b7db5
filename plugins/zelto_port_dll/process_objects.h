// What the library builds at load, in this order, and takes down in reverse at unload.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_PROCESS_OBJECTS_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_PROCESS_OBJECTS_H

#include <cstdint>
#include <memory>

#include "common/sys/sync.h"
#include "common/text/dstring.h"
#include "common/time/date_time.h"
#include "platform/coredll/coredll.h"

namespace zelto {

// The object that the text utilities keep for their process-wide state.
// Thread safety: the lock is what other threads may use.
struct TextUtility {
    int32_t first_word = 0;
    std::unique_ptr<Lock> lock = std::make_unique<Lock>();
    int32_t last_word = 0;
};

// One object a process. It touches no navigator, queue or event. A process that links the parts
// statically makes one of these first of all.
// Thread safety: built and destroyed by the thread that loads and unloads the library.
class ProcessObjects {
  public:
    // Makes the codepage registry unless there is one. It is used until the very end of the
    // process, so nothing ever destroys it.
    struct Registry {
        Registry();
    };

    // The lock behind FileSystemLock(), for as long as it lives.
    struct FileSystem {
        FileSystem();
        ~FileSystem();
        FileSystem(const FileSystem&) = delete;
        FileSystem& operator=(const FileSystem&) = delete;
        Lock lock;
    };

    struct PathObject {
        DString text;
    };

    // Runs the library entry where the loader does not: attach when everything before it stands,
    // detach before it falls.
    struct Entry {
        Entry();
        ~Entry();
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;
    };

    Registry registry;
    TextUtility text_utility;
    FileSystem file_system;
    DString folders[6];  // folder and path texts of the path macros
    PathObject path_object;
    DDateTime date;
    Entry entry;
};

inline constexpr DWORD kProcessDetach = 0;
inline constexpr DWORD kProcessAttach = 1;

}  // namespace zelto

// The library entry. Switches off thread notifications at attach; always 1.
extern "C" BOOL DllMain(HINSTANCE module, DWORD reason, void* reserved);

#endif
