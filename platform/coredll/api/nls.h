// Code-page conversion. Pages of one byte a character are built in, UTF-8 too; those of two bytes
// (932, 936, 949, 950, 1361) are there where the host has them.

#ifndef ZELTO_PLATFORM_COREDLL_API_NLS_H
#define ZELTO_PLATFORM_COREDLL_API_NLS_H

#include "platform/coredll/api/base.h"

enum : UINT { CP_ACP = 0, CP_OEMCP = 1, CP_UTF8 = 65001 };
enum : DWORD { MB_PRECOMPOSED = 1, MB_ERR_INVALID_CHARS = 8 };

extern "C" {

// Both directions: a negative count takes the source up to and including its NUL, and the result
// counts it; a positive one exactly that many units, without a NUL. A destination size of 0
// measures. Result: units written or needed; 0 on failure: 87 null or equal pointers, count 0,
// negative size, code page not to be had; 1004 flags; 122 too small (what fits, never half a
// character, has been written); 1113 with MB_ERR_INVALID_CHARS (any
// such byte).
// The system's default pages are 1252 (CP_ACP) and 437 (CP_OEMCP). A unit that the page does not
// have becomes its best fit where there is one, else `default_char` (null: "?") and *used_default
// TRUE; either half of a surrogate pair counts as one. A page may lack a byte, too: it becomes a
// private-use unit that becomes this byte again; bytes that are no pair become U+FFFD.
// UTF-8 (both of those arguments must be null): half a surrogate pair and ill-formed bytes become
// U+FFFD. UTF-7 is not to be had.
// Flags: those above for MultiByteToWideChar (UTF-8: not MB_PRECOMPOSED), none for the other.
int WideCharToMultiByte(UINT code_page, DWORD flags, const WCHAR* source, int count, char* target,
                        int size, const char* default_char, BOOL* used_default);
int MultiByteToWideChar(UINT code_page, DWORD flags, const char* source, int count, WCHAR* target,
                        int size);
}

#endif
