// What the device's run-time library has beyond the standard one, or does differently. Results do
// not depend on the host's locale.

#ifndef ZELTO_PLATFORM_COREDLL_API_CRT_H
#define ZELTO_PLATFORM_COREDLL_API_CRT_H

#include <cstdarg>
#include <cstdio>
#include <string>

#include "platform/coredll/api/base.h"

extern "C" {

// The standard library's FILE on a wide name (mapped as in files.h) and mode: r, w or a, then any
// of + b t (text mode translates nothing here). Null on failure, with the last error: 2, 3, 5 not
// permitted, a folder, or read-only and not opened for reading alone; 87 mode, and those of the
// name.
FILE* _wfopen(const WCHAR* name, const WCHAR* mode);
int _fseeki64(FILE* file, int64_t offset, int origin);  // 0 on success
int64_t _ftelli64(FILE* file);                          // -1 on failure

// Compare with A-Z folded to lower case; only the sign of the result means anything.
int _stricmp(const char* a, const char* b);
int _strnicmp(const char* a, const char* b, size_t count);

// Formats with the device's "%I64d" understood. Result: bytes without the NUL; negative when the
// text did not fit, and then no NUL is written; nor after a text of exactly `size` bytes, which
// fits.
int _vsnprintf(char* buffer, size_t size, const char* format, va_list arguments);
}

// The wide text functions, on 16-bit units.
inline size_t wcslen(const WCHAR* text) {
    return std::char_traits<WCHAR>::length(text);
}

inline const WCHAR* wcsrchr(const WCHAR* text, WCHAR unit) {
    const WCHAR* last = nullptr;
    for (;; ++text) {
        if (*text == unit)
            last = text;
        if (*text == 0)
            return last;
    }
}

#endif
