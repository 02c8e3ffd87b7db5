// Starting programs, the module's own name, sleeping.

#include "platform/coredll/api/process.h"

#include <algorithm>
#include <cerrno>
#include <limits.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

#include "platform/coredll/linux/base/ascii.h"
#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/base/time_scale.h"
#include "platform/coredll/linux/files/folded_name.h"
#include "platform/coredll/linux/objects/witness_ring.h"
#include "platform/coredll/linux/process/launch.h"

namespace zelto::coredll {
namespace {

// hInstApp: what a success answers, and the numbers below 33 for failures that lie above.
constexpr uintptr_t kStarted = 42;
constexpr uintptr_t kInstanceBadFormat = 11;
constexpr uintptr_t kInstanceNoAssociation = 31;

uintptr_t InstanceOfError(DWORD error) {
    if (error == ERROR_BAD_EXE_FORMAT)
        return kInstanceBadFormat;
    if (error == ERROR_NO_ASSOCIATION)
        return kInstanceNoAssociation;
    return error <= ERROR_SHARING_VIOLATION ? error : uintptr_t{ERROR_FILE_NOT_FOUND};
}

HINSTANCE ToInstance(uintptr_t number) {
    return reinterpret_cast<HINSTANCE>(number);
}

bool IsOpenVerb(LPCWSTR verb) {
    return verb == nullptr || *verb == 0 || SameFolded(verb, u"open");
}

// Cuts at blanks outside of quotes. A backslash is an ordinary character, as paths need it.
std::vector<std::u16string> SplitParameters(std::u16string_view text) {
    std::vector<std::u16string> words;
    bool in_word = false;
    bool quoted = false;
    for (const WCHAR unit : text) {
        if (!quoted && IsAsciiBlank(unit)) {
            in_word = false;
            continue;
        }
        if (!in_word)
            words.emplace_back();
        in_word = true;
        if (unit == u'"')
            quoted = !quoted;
        else
            words.back().push_back(unit);
    }
    return words;
}

DWORD ReadArguments(LPCWSTR parameters, std::vector<std::string>& arguments) {
    if (parameters == nullptr)
        return ERROR_SUCCESS;
    for (const std::u16string& word : SplitParameters(parameters)) {
        if (!NarrowName(word, arguments.emplace_back()))
            return ERROR_INVALID_PARAMETER;
    }
    return ERROR_SUCCESS;
}

DWORD StartError(int failed, const std::string& path) {
    switch (failed) {
        case EMFILE:
        case ENFILE:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EINVAL:
        case ELIBBAD:
            return ERROR_BAD_EXE_FORMAT;
        default:
            return PathError(failed, path);
    }
}

DWORD Start(const SHELLEXECUTEINFO& info) {
    std::string path;
    std::vector<std::string> arguments;
    DWORD error = HostProgramPath(info.lpFile, path);
    if (error == ERROR_SUCCESS)
        error = ReadArguments(info.lpParameters, arguments);
    if (error != ERROR_SUCCESS)
        return error;
    if (!IsOpenVerb(info.lpVerb))
        return ERROR_NO_ASSOCIATION;
    if (!CheckDevice(nullptr))
        return ERROR_ACCESS_DENIED;  // it could do nothing
    int failed = StartDetached(path, arguments);
    if (failed == ENOENT && FindFolded(path))
        failed = StartDetached(path, arguments);
    error = failed == 0 ? DWORD{ERROR_SUCCESS} : StartError(failed, path);
    WitnessProgram(path, error);
    return error;
}

// The running program's path with backslashes; empty when the host does not tell.
std::u16string ProgramName() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0)
        return u"";
    std::u16string name = WideName({path, static_cast<size_t>(length)});
    std::replace(name.begin(), name.end(), u'/', u'\\');
    return name;
}

}  // namespace
}  // namespace zelto::coredll

using namespace zelto::coredll;

BOOL ShellExecuteEx(SHELLEXECUTEINFO* info) {
    if (info == nullptr || info->cbSize != sizeof(SHELLEXECUTEINFO))
        return Fail(ERROR_INVALID_PARAMETER);
    info->hProcess = nullptr;
    const DWORD error = Start(*info);
    info->hInstApp = ToInstance(error == ERROR_SUCCESS ? kStarted : InstanceOfError(error));
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR name, DWORD size) {
    if (module != nullptr)
        return Fail(ERROR_INVALID_HANDLE, DWORD{0});
    if (name == nullptr || size == 0)
        return Fail(ERROR_INVALID_PARAMETER, DWORD{0});
    const std::u16string path = ProgramName();
    if (path.empty())
        return Fail(ERROR_FILE_NOT_FOUND, DWORD{0});
    const size_t copied = path.copy(name, size - 1);
    name[copied] = 0;
    return copied < path.size() ? size : static_cast<DWORD>(copied);
}

BOOL DisableThreadLibraryCalls(HMODULE /*module*/) {
    return TRUE;
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    const int64_t wait = ScaledWait(milliseconds);
    timespec left = {static_cast<time_t>(wait / 1'000'000'000),
                     static_cast<long>(wait % 1'000'000'000)};
    if (milliseconds == INFINITE) {
        for (;;)
            pause();
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}
