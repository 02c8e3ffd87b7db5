// Starting programs, the module's own name, sleeping.

#ifndef ZELTO_PLATFORM_COREDLL_API_PROCESS_H
#define ZELTO_PLATFORM_COREDLL_API_PROCESS_H

#include "platform/coredll/api/base.h"
#include "platform/coredll/api/windows.h"

// Whether the loader calls a library's DllMain by itself, as on the device. Here a library has to.
inline constexpr bool kLoaderCallsDllMain = false;

struct SHELLEXECUTEINFO {
    DWORD cbSize;  // sizeof(SHELLEXECUTEINFO), checked
    DWORD fMask;   // without effect: no box is shown, hProcess stays null
    HWND hwnd;
    LPCWSTR lpVerb;        // null or "open", without regard to case
    LPCWSTR lpFile;        // the program's full path
    LPCWSTR lpParameters;  // null or arguments, parted by blanks, "quoted" where they hold one
    LPCWSTR lpDirectory;   // without effect
    int nShow;
    HINSTANCE hInstApp;  // out: above 32 on success, else the failure's number
    void* lpIDList;
    LPCWSTR lpClass;
    HKEY hkeyClass;
    DWORD dwHotKey;
    HANDLE hIcon;
    HANDLE hProcess;
};
// Fifteen fields of one word each: 60 bytes on the device.
static_assert(sizeof(void*) != 4 || sizeof(SHELLEXECUTEINFO) == 60);

extern "C" {

// Starts a detached program: a session of its own, and no file of ours, not even standard input,
// output and errors. Errors: 87 (cbSize, no file), 2 no such file, 3 no such folder, 5 not
// executable or a folder, 193 not a program, 1155 a verb other than open, 8 no process to be had.
BOOL ShellExecuteEx(SHELLEXECUTEINFO* info);

// Full path of a module (null: the running program). Result: units written without the NUL;
// `size` when it was cut to fit (always terminated); 0 on failure (6 for another module).
DWORD GetModuleFileNameW(HMODULE module, LPWSTR name, DWORD size);

// Switches off thread notifications for the module; there are none here. Nonzero.
BOOL DisableThreadLibraryCalls(HMODULE module);

void Sleep(DWORD milliseconds);
}

#endif
