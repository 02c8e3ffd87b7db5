// Top-level windows and their message queues, enough for two programs to find and post to each
// other. Classes need no registration and there are no window procedures: the owner takes its
// messages with GetMessageW.

#ifndef ZELTO_PLATFORM_COREDLL_API_WINDOWS_H
#define ZELTO_PLATFORM_COREDLL_API_WINDOWS_H

#include "platform/coredll/api/base.h"

// Message parameters are 32 bits, as on the device.
typedef uint32_t WPARAM;
typedef int32_t LPARAM;

enum : UINT {
    WM_SIZE = 0x0005,      // wParam SIZE_RESTORED or SIZE_MINIMIZED
    WM_ACTIVATE = 0x0006,  // wParam 1: brought to the front
    WM_CLOSE = 0x0010,
    WM_QUIT = 0x0012,
    WM_SHOWWINDOW = 0x0018,  // wParam 1 shown, 0 hidden
    WM_USER = 0x0400,
};
enum : WPARAM { SIZE_RESTORED = 0, SIZE_MINIMIZED = 1 };

// The device's numbers; RESTORE differs from the desktop's.
enum : int {
    SW_HIDE = 0,
    SW_SHOW = 5,
    SW_MINIMIZE = 6,
    SW_SHOWNA = 8,
    SW_RESTORE = 13,
};

enum : DWORD { WS_VISIBLE = 0x10000000 };

struct POINT {
    LONG x;
    LONG y;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;  // GetTickCount of the post
    POINT pt;    // always 0, 0
};

extern "C" {

// Creates a top-level window owned by the calling process; only class, title and WS_VISIBLE are
// looked at. Class and title: at most 63 units, the class not empty (else 87). Null on failure:
// 87, 8 (no free window).
HWND CreateWindowExW(DWORD extended_style, LPCWSTR class_name, LPCWSTR title, DWORD style, int x,
                     int y, int width, int height, HWND parent, void* menu, HINSTANCE instance,
                     void* parameter);

// Errors: 1400 no such window, 5 not this process's window. Messages not yet taken are lost.
BOOL DestroyWindow(HWND window);

// The first window of a live process with that class and title (null: any), compared without case.
// Null when there is none; the last error is left alone.
HWND FindWindowW(LPCWSTR class_name, LPCWSTR title);

// Appends a message to the window's queue and returns at once; one thread's posts keep their
// order. Errors: 1400 no such window or its process is gone, 1816 the queue is full.
BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

// Waits for the next message of the window (null: of any window of this process). Filters must be
// 0 (else -1, 87). Result: 1; 0 for WM_QUIT; -1 on error (1400).
BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last);

// Shows, hides or minimises any window and tells its owner with WM_SHOWWINDOW and WM_SIZE.
// Result: nonzero when it was visible before; not a success flag. Errors: 1400.
BOOL ShowWindow(HWND window, int command);

// Brings the window to the front and tells its owner with WM_ACTIVATE. Bit 0 of the handle asks
// for a minimised window to be restored. Errors: 1400.
BOOL SetForegroundWindow(HWND window);
}

#endif
