#include "plugins/zelto_port_dll/process_objects.h"

#include "common/text/codepage.h"

namespace zelto {

ProcessObjects::Registry::Registry() {
    if (GlobalCodepageRegistry() == nullptr)
        GlobalCodepageRegistry() = new CodepageRegistry;
}

ProcessObjects::FileSystem::FileSystem() {
    FileSystemLock() = &lock;
}

ProcessObjects::FileSystem::~FileSystem() {
    FileSystemLock() = nullptr;
}

// The entry's own address stands for the module: there is one entry in each.
ProcessObjects::Entry::Entry() {
    if (!kLoaderCallsDllMain)
        DllMain(reinterpret_cast<HINSTANCE>(this), kProcessAttach, nullptr);
}

ProcessObjects::Entry::~Entry() {
    if (!kLoaderCallsDllMain)
        DllMain(reinterpret_cast<HINSTANCE>(this), kProcessDetach, nullptr);
}

}  // namespace zelto

BOOL DllMain(HINSTANCE module, DWORD reason, void* /*reserved*/) {
    if (reason == zelto::kProcessAttach)
        DisableThreadLibraryCalls(module);
    return TRUE;
}
