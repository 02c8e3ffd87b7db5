#include "tests/support/scripted_coredll.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace zelto::test {

ScriptedSystem& Scripted() {
    static ScriptedSystem system;
    return system;
}

std::vector<std::string> CallsOf(const std::set<std::string>& names) {
    std::vector<std::string> found;
    for (const std::string& call : Scripted().calls)
        if (names.contains(call.substr(0, call.find(' '))))
            found.push_back(call);
    return found;
}

}  // namespace zelto::test

namespace {

using zelto::test::Scripted;

std::string Narrow(const WCHAR* text) {
    return {text, text + (text != nullptr ? wcslen(text) : 0)};
}

std::string NameOf(HANDLE handle) {
    const auto found = Scripted().open.find(handle);
    return found != Scripted().open.end() ? found->second : "?";
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// Writes a call down and tells whether it succeeds; `error` is the last error if it does not.
template <class... Parts>
BOOL Answer(DWORD error, const char* call, const Parts&... parts) {
    std::ostringstream line;
    line << call;
    ((line << ' ' << parts), ...);
    Scripted().calls.push_back(line.str());
    return Scripted().failing.contains(call) ? Fail(error) : TRUE;
}

HANDLE Open(const std::string& name) {
    static char handles[1000];
    static size_t used = 0;
    HANDLE handle = &handles[used++ % sizeof(handles)];
    Scripted().open[handle] = name;
    return handle;
}

BOOL Close(HANDLE handle) {
    return Scripted().open.erase(handle) != 0 ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

// What a read leaves in the caller's buffer.
void Deliver(const std::string& data, void* buffer, DWORD size, DWORD* read) {
    *read = std::min(size, static_cast<DWORD>(data.size()));
    std::memcpy(buffer, data.data(), *read);
}

}  // namespace

extern "C" {

BOOL CloseHandle(HANDLE handle) {
    Answer(0, "CloseHandle", NameOf(handle));
    return Close(handle);
}

void Sleep(DWORD milliseconds) {
    Answer(0, "Sleep", milliseconds);
    Scripted().clock += milliseconds;
}

BOOL DisableThreadLibraryCalls(HMODULE /*module*/) {
    return Answer(0, "DisableThreadLibraryCalls");
}

void InitializeCriticalSection(CRITICAL_SECTION* /*section*/) {
    Answer(0, "InitializeCriticalSection");
}

void DeleteCriticalSection(CRITICAL_SECTION* /*section*/) {
    Answer(0, "DeleteCriticalSection");
}

void EnterCriticalSection(CRITICAL_SECTION* /*section*/) {}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* /*section*/) {
    return TRUE;
}

void LeaveCriticalSection(CRITICAL_SECTION* /*section*/) {}

LONG RegOpenKeyExW(HKEY /*key*/, LPCWSTR sub_key, DWORD /*options*/, DWORD access, HKEY* result) {
    *result = HKEY_LOCAL_MACHINE;
    return Answer(0, "RegOpenKeyExW", Narrow(sub_key), access) ? LONG{0} : LONG{2};
}

LONG RegQueryValueExW(HKEY /*key*/, LPCWSTR name, DWORD* /*reserved*/, DWORD* /*type*/, BYTE* data,
                      DWORD* size) {
    Answer(0, "RegQueryValueExW", Narrow(name), *size);
    const auto& value = Scripted().registry_value;
    if (!value)
        return ERROR_FILE_NOT_FOUND;
    const DWORD room = *size;
    Deliver(*value, data, room, size);
    return value->size() <= room ? LONG{0} : LONG{ERROR_MORE_DATA};
}

LONG RegCloseKey(HKEY /*key*/) {
    Answer(0, "RegCloseKey");
    return 0;
}

HWND FindWindowW(LPCWSTR class_name, LPCWSTR title) {
    static char window;
    Answer(0, "FindWindowW", Narrow(class_name), title == nullptr ? "any" : "titled");
    return Scripted().finds_without_window-- > 0 ? nullptr : reinterpret_cast<HWND>(&window);
}

BOOL ShowWindow(HWND /*window*/, int command) {
    return Answer(0, "ShowWindow", command);
}

BOOL SetForegroundWindow(HWND /*window*/) {
    return Answer(0, "SetForegroundWindow");
}

BOOL PostMessageW(HWND /*window*/, UINT message, WPARAM wparam, LPARAM lparam) {
    return Answer(ERROR_INVALID_WINDOW_HANDLE, "PostMessageW", message, wparam, lparam);
}

BOOL ShellExecuteEx(SHELLEXECUTEINFO* info) {
    return Answer(ERROR_FILE_NOT_FOUND, "ShellExecuteEx", info->cbSize == sizeof(*info),
                  Narrow(info->lpVerb), Narrow(info->lpFile), info->nShow);
}

HANDLE CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) {
    Answer(0, "CreateMsgQueue", Narrow(name), options->dwSize, options->dwFlags,
           options->dwMaxMessages, options->cbMaxMessage, options->bReadAccess);
    return Open(Narrow(name));
}

BOOL CloseMsgQueue(HANDLE queue) {
    Answer(0, "CloseMsgQueue", NameOf(queue));
    return Close(queue);
}

BOOL WriteMsgQueue(HANDLE queue, const void* buffer, DWORD size, DWORD timeout, DWORD flags) {
    Answer(0, "WriteMsgQueue", NameOf(queue), size, timeout, flags);
    if (size > 1024)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    if (buffer == nullptr)
        return Scripted().takes_null_message ? TRUE : Fail(ERROR_INVALID_PARAMETER);
    DWORD error = 0;
    if (auto& errors = Scripted().write_errors; !errors.empty()) {
        error = errors.front();
        errors.pop_front();
    }
    if (error == ERROR_TIMEOUT)
        Scripted().clock += timeout;
    if (error != 0)
        return Fail(error);
    Scripted().requests.emplace_back(static_cast<const char*>(buffer), size);
    return TRUE;
}

BOOL ReadMsgQueue(HANDLE queue, void* buffer, DWORD size, DWORD* read, DWORD timeout,
                  DWORD* /*flags*/) {
    Answer(0, "ReadMsgQueue", NameOf(queue), size, timeout);
    zelto::test::ScriptedRead next{{}, ERROR_TIMEOUT};
    if (auto& reads = Scripted().reads; !reads.empty()) {
        next = reads.front();
        reads.pop_front();
    }
    Deliver(next.message, buffer, size, read);
    if (next.error == ERROR_TIMEOUT)
        Scripted().clock += timeout;
    if (next.error != 0)
        return Fail(next.error);
    return next.message.size() <= size ? TRUE : Fail(ERROR_INSUFFICIENT_BUFFER);
}

HANDLE CreateEventW(SECURITY_ATTRIBUTES* /*security*/, BOOL manual_reset, BOOL initial,
                    LPCWSTR name) {
    Answer(0, "CreateEventW", Narrow(name), manual_reset, initial);
    return Open(Narrow(name));
}

BOOL EventModify(HANDLE event, DWORD operation) {
    return Answer(0, "EventModify", NameOf(event), operation);
}

DWORD WaitForSingleObject(HANDLE handle, DWORD timeout) {
    if (Answer(0, "WaitForSingleObject", NameOf(handle), timeout))
        return WAIT_OBJECT_0;
    Scripted().clock += timeout;
    return WAIT_TIMEOUT;
}

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* /*security*/,
                   DWORD disposition, DWORD attributes, HANDLE /*template_file*/) {
    const std::string path = Narrow(name);
    auto& files = Scripted().files;
    if (!Answer(5, "CreateFileW", path, access, share, disposition, attributes) ||
        (disposition == OPEN_EXISTING && !files.contains(path)))
        return INVALID_HANDLE_VALUE;
    if (disposition == CREATE_ALWAYS)
        files[path].clear();
    return Open(path);
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* /*overlapped*/) {
    if (!Answer(ERROR_DISK_FULL, "WriteFile", NameOf(file), size))
        return FALSE;
    if (!Scripted().open.contains(file))
        return Fail(ERROR_INVALID_HANDLE);
    Scripted().files[NameOf(file)].append(static_cast<const char*>(buffer), size);
    *written = size;
    return TRUE;
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* /*overlapped*/) {
    if (!Answer(ERROR_GEN_FAILURE, "ReadFile", NameOf(file), size))
        return FALSE;
    Deliver(Scripted().files[NameOf(file)], buffer, size, read);
    return TRUE;
}

}  // extern "C"
