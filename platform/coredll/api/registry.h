// The device's registry. Results are error numbers, not the last error.

#ifndef ZELTO_PLATFORM_COREDLL_API_REGISTRY_H
#define ZELTO_PLATFORM_COREDLL_API_REGISTRY_H

#include "platform/coredll/api/base.h"

#define HKEY_CLASSES_ROOT (reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000000u)))
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000001u)))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000002u)))
#define HKEY_USERS (reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000003u)))

enum : DWORD {
    KEY_QUERY_VALUE = 0x1,
    KEY_SET_VALUE = 0x2,

    REG_SZ = 1,
    REG_BINARY = 3,
    REG_DWORD = 4,

    REG_CREATED_NEW_KEY = 1,
    REG_OPENED_EXISTING_KEY = 2,
};

extern "C" {

// Opens an existing key; null or "" opens the parent again. 0; 2 missing; 6 bad parent; 87 null
// result or a sub-key that begins with a backslash; 1009 the registry file is damaged or not ours;
// 5 the device directory or its registry may not be read.
LONG RegOpenKeyExW(HKEY key, LPCWSTR sub_key, DWORD options, DWORD access, HKEY* result);

// Reads a value; null or "" is the unnamed one. Sizes are bytes; a text's size includes its NUL
// only if the writer stored it. 0; 2 missing; 87 reserved or size misused; 234 buffer too small
// (the needed size is stored); 6. With a null buffer only the size and type are stored.
LONG RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size);

// Opens a key, made with its missing parents where needed. Names: at most 255 units, 16 levels
// (else 87). `disposition` (may be null) tells which.
LONG RegCreateKeyExW(HKEY key, LPCWSTR sub_key, DWORD reserved, LPWSTR class_name, DWORD options,
                     DWORD access, SECURITY_ATTRIBUTES* security, HKEY* result, DWORD* disposition);

// Stores a value of at most 4096 bytes (else 87). The file is replaced as a whole or not at all;
// 5 or 112 when it cannot be.
LONG RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD size);

// 0; 6. Root keys need no closing.
LONG RegCloseKey(HKEY key);
}

#endif
