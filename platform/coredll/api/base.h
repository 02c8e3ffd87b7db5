// Basic types, error numbers, the last error and handles.

#ifndef ZELTO_PLATFORM_COREDLL_API_BASE_H
#define ZELTO_PLATFORM_COREDLL_API_BASE_H

#include <cstddef>
#include <cstdint>

// Widths are the device's: BOOL, LONG and DWORD are 32 bits whatever the host's long is.
typedef int32_t BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef int64_t LONGLONG;
typedef char16_t WCHAR;  // a 16-bit unit, never the host's wchar_t

typedef void* HANDLE;
typedef void* HMODULE;
typedef void* HINSTANCE;
struct HWND__;
typedef HWND__* HWND;  // 0 is no window
struct HKEY__;
typedef HKEY__* HKEY;

typedef const WCHAR* LPCWSTR;
typedef WCHAR* LPWSTR;
typedef void SECURITY_ATTRIBUTES;  // always passed as null

// Wide literals: TEXT("abc") is an array of WCHAR.
#define TEXT(literal) u##literal

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define INFINITE 0xFFFFFFFFu
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1)))

// Error numbers, from the public system error code list.
enum : DWORD {
    ERROR_SUCCESS = 0,
    ERROR_FILE_NOT_FOUND = 2,
    ERROR_PATH_NOT_FOUND = 3,
    ERROR_TOO_MANY_OPEN_FILES = 4,
    ERROR_ACCESS_DENIED = 5,
    ERROR_INVALID_HANDLE = 6,
    ERROR_NOT_ENOUGH_MEMORY = 8,
    ERROR_OUTOFMEMORY = 14,
    ERROR_NOT_SAME_DEVICE = 17,
    ERROR_NO_MORE_FILES = 18,
    ERROR_WRITE_PROTECT = 19,
    ERROR_GEN_FAILURE = 31,
    ERROR_SHARING_VIOLATION = 32,
    ERROR_FILE_EXISTS = 80,
    ERROR_INVALID_PARAMETER = 87,
    ERROR_DISK_FULL = 112,
    ERROR_INSUFFICIENT_BUFFER = 122,
    ERROR_INVALID_NAME = 123,
    ERROR_NEGATIVE_SEEK = 131,
    ERROR_DIR_NOT_EMPTY = 145,
    ERROR_BUSY = 170,
    ERROR_ALREADY_EXISTS = 183,
    ERROR_BAD_EXE_FORMAT = 193,
    ERROR_FILENAME_EXCED_RANGE = 206,
    ERROR_PIPE_NOT_CONNECTED = 233,
    ERROR_MORE_DATA = 234,
    ERROR_INVALID_FLAGS = 1004,
    ERROR_BADDB = 1009,
    ERROR_KEY_DELETED = 1018,
    ERROR_NO_UNICODE_TRANSLATION = 1113,
    ERROR_NO_ASSOCIATION = 1155,
    ERROR_INVALID_WINDOW_HANDLE = 1400,
    ERROR_TIMEOUT = 1460,
    ERROR_NOT_ENOUGH_QUOTA = 1816,
};
#define NO_ERROR ERROR_SUCCESS

extern "C" {

// The last error is kept per thread.
DWORD GetLastError();
void SetLastError(DWORD error);

// Closes a file, event, thread or message-queue handle. Errors: 6.
BOOL CloseHandle(HANDLE handle);
}

#endif
