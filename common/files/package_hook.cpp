#include "common/files/package_hook.h"

namespace zelto {
namespace {

TPackageHook* g_hook = nullptr;

}  // namespace

void SetPackageHook(TPackageHook* hook) {
    g_hook = hook;
}

TPackageHook* PackageHook() {
    return g_hook;
}

}  // namespace zelto
