#include "tests/support/scripted_coredll.h"

#include <algorithm>
#include <cstring>
#include <sstream>

using zelto::test::Scripted;
using zelto::test::ScriptedRead;

namespace zelto::test {

ScriptedSystem& Scripted() {
    static ScriptedSystem system;
    return system;
}

std::vector<std::string> CallsOf(std::initializer_list<std::string> names) {
    std::vector<std::string> found;
    for (const std::string& call : Scripted().calls)
        if (std::ranges::count(names, call.substr(0, call.find(' '))) != 0)
            found.push_back(call);
    return found;
}

std::string RawBytes(const std::basic_string<WCHAR>& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR)};
}

}  // namespace zelto::test

namespace {

HWND const kWindow = reinterpret_cast<HWND>(uintptr_t{0x700});
HKEY const kKey = reinterpret_cast<HKEY>(uintptr_t{0x900});

std::string Narrow(const WCHAR* text) {
    std::string narrow;
    for (; text != nullptr && *text != 0; ++text)
        narrow += static_cast<char>(*text);
    return narrow;
}

template <typename... Parts>
void Record(const char* call, const Parts&... parts) {
    std::ostringstream line;
    line << call;
    ((line << ' ' << parts), ...);
    Scripted().calls.push_back(line.str());
}

HANDLE Open(const std::string& name) {
    static uintptr_t next = 0x1000;
    HANDLE handle = reinterpret_cast<HANDLE>(++next);
    Scripted().open[handle] = name;
    return handle;
}

std::string NameOf(HANDLE handle) {
    const auto found = Scripted().open.find(handle);
    return found != Scripted().open.end() ? found->second : "?";
}

BOOL Fail(DWORD error) {
    Scripted().last_error = error;
    return FALSE;
}

BOOL Close(const char* call, HANDLE handle) {
    Record(call, NameOf(handle));
    return Scripted().open.erase(handle) != 0 ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

}  // namespace

extern "C" {

DWORD GetLastError() {
    return Scripted().last_error;
}

void SetLastError(DWORD error) {
    Scripted().last_error = error;
}

BOOL CloseHandle(HANDLE handle) {
    return Close("CloseHandle", handle);
}

void Sleep(DWORD milliseconds) {
    Record("Sleep", milliseconds);
    Scripted().clock += milliseconds;
}

BOOL DisableThreadLibraryCalls(HMODULE /*module*/) {
    Record("DisableThreadLibraryCalls");
    return TRUE;
}

void InitializeCriticalSection(CRITICAL_SECTION* /*section*/) {
    Record("InitializeCriticalSection");
}

void DeleteCriticalSection(CRITICAL_SECTION* /*section*/) {
    Record("DeleteCriticalSection");
}

void EnterCriticalSection(CRITICAL_SECTION* /*section*/) {}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* /*section*/) {
    return TRUE;
}

void LeaveCriticalSection(CRITICAL_SECTION* /*section*/) {}

LONG RegOpenKeyExW(HKEY key, LPCWSTR sub_key, DWORD /*options*/, DWORD access, HKEY* result) {
    Record("RegOpenKeyExW", key == HKEY_LOCAL_MACHINE ? "HKLM" : "?", Narrow(sub_key), access);
    *result = kKey;
    return Scripted().key_present ? LONG{0} : LONG{ERROR_FILE_NOT_FOUND};
}

LONG RegQueryValueExW(HKEY /*key*/, LPCWSTR name, DWORD* /*reserved*/, DWORD* /*type*/, BYTE* data,
                      DWORD* size) {
    Record("RegQueryValueExW", Narrow(name), *size);
    const auto& value = Scripted().registry_value;
    if (!value)
        return ERROR_FILE_NOT_FOUND;
    const DWORD room = *size;
    *size = static_cast<DWORD>(value->size());
    std::memcpy(data, value->data(), std::min(room, *size));
    return *size <= room ? LONG{0} : LONG{ERROR_MORE_DATA};
}

LONG RegCloseKey(HKEY /*key*/) {
    Record("RegCloseKey");
    return 0;
}

HWND FindWindowW(LPCWSTR class_name, LPCWSTR title) {
    Record("FindWindowW", Narrow(class_name), title == nullptr ? "any" : "titled");
    return Scripted().finds_without_window-- > 0 ? nullptr : kWindow;
}

BOOL ShowWindow(HWND /*window*/, int command) {
    Record("ShowWindow", command);
    return FALSE;
}

BOOL SetForegroundWindow(HWND /*window*/) {
    Record("SetForegroundWindow");
    return TRUE;
}

BOOL PostMessageW(HWND /*window*/, UINT message, WPARAM wparam, LPARAM lparam) {
    Record("PostMessageW", message, wparam, lparam);
    return Scripted().post_succeeds ? TRUE : Fail(ERROR_INVALID_WINDOW_HANDLE);
}

BOOL ShellExecuteEx(SHELLEXECUTEINFO* info) {
    Record("ShellExecuteEx", info->cbSize == sizeof(*info), Narrow(info->lpVerb),
           Narrow(info->lpFile), info->nShow);
    return Scripted().start_succeeds ? TRUE : Fail(ERROR_FILE_NOT_FOUND);
}

HANDLE CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) {
    Record("CreateMsgQueue", Narrow(name), options->dwSize, options->dwFlags,
           options->dwMaxMessages, options->cbMaxMessage, options->bReadAccess);
    return Open(Narrow(name));
}

BOOL CloseMsgQueue(HANDLE queue) {
    return Close("CloseMsgQueue", queue);
}

BOOL WriteMsgQueue(HANDLE queue, const void* buffer, DWORD size, DWORD timeout, DWORD flags) {
    Record("WriteMsgQueue", NameOf(queue), size, timeout, flags);
    DWORD error = 0;
    if (size > 1024)
        error = ERROR_INSUFFICIENT_BUFFER;
    if (buffer == nullptr && !Scripted().takes_null_message)
        error = ERROR_INVALID_PARAMETER;
    if (auto& errors = Scripted().write_errors; error == 0 && !errors.empty()) {
        error = errors.front();
        errors.pop_front();
    }
    if (error == ERROR_TIMEOUT)
        Scripted().clock += timeout;
    if (error != 0)
        return Fail(error);
    if (buffer != nullptr)
        Scripted().requests.emplace_back(static_cast<const char*>(buffer), size);
    return TRUE;
}

BOOL ReadMsgQueue(HANDLE queue, void* buffer, DWORD size, DWORD* read, DWORD timeout,
                  DWORD* flags) {
    Record("ReadMsgQueue", NameOf(queue), size, timeout);
    ScriptedRead next{{}, ERROR_TIMEOUT};
    if (auto& reads = Scripted().reads; !reads.empty()) {
        next = reads.front();
        reads.pop_front();
    }
    *read = 0;
    *flags = 0;
    if (next.error == ERROR_TIMEOUT)
        Scripted().clock += timeout;
    if (next.error != 0)
        return Fail(next.error);
    *read = std::min(size, static_cast<DWORD>(next.message.size()));
    std::memcpy(buffer, next.message.data(), *read);
    return next.message.size() <= size ? TRUE : Fail(ERROR_INSUFFICIENT_BUFFER);
}

HANDLE CreateEventW(SECURITY_ATTRIBUTES* /*security*/, BOOL manual_reset, BOOL initial,
                    LPCWSTR name) {
    Record("CreateEventW", Narrow(name), manual_reset, initial);
    return Open(Narrow(name));
}

BOOL EventModify(HANDLE event, DWORD operation) {
    Record("EventModify", NameOf(event), operation);
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD timeout) {
    Record("WaitForSingleObject", NameOf(handle), timeout);
    if (Scripted().wait_result == WAIT_TIMEOUT)
        Scripted().clock += timeout;
    return Scripted().wait_result;
}

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* /*security*/,
                   DWORD disposition, DWORD attributes, HANDLE /*template_file*/) {
    const std::string path = Narrow(name);
    Record("CreateFileW", path, access, share, disposition, attributes);
    auto& system = Scripted();
    const bool create = disposition == CREATE_ALWAYS;
    const bool refused =
        !system.read_only_folder.empty() && path.starts_with(system.read_only_folder);
    if (create ? refused : !system.files.contains(path)) {
        Fail(create ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    if (create)
        system.files[path].clear();
    return Open(path);
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* /*overlapped*/) {
    Record("WriteFile", NameOf(file), size);
    auto& system = Scripted();
    if (!system.file_writes_succeed)
        return Fail(ERROR_DISK_FULL);
    if (!system.open.contains(file) && !system.invalid_file_works)
        return Fail(ERROR_INVALID_HANDLE);
    system.files[NameOf(file)].append(static_cast<const char*>(buffer), size);
    *written = size;
    return TRUE;
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* /*overlapped*/) {
    Record("ReadFile", NameOf(file), size);
    auto& system = Scripted();
    if (!system.file_reads_succeed)
        return Fail(ERROR_GEN_FAILURE);
    const std::string& content = system.files[NameOf(file)];
    *read = std::min(size, static_cast<DWORD>(content.size()));
    std::memcpy(buffer, content.data(), *read);
    return TRUE;
}

}  // extern "C"
