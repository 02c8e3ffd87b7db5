/* Remote control of the navigator application: the one public header, for C11 and C++.
 *
 * Load the library, call ZeltoNavPort_Init once, then the rest in any order.
 *
 * Conventions, for every function unless it says otherwise:
 *  1. Result: 0 is success, anything else a code of the table below. A function that talks to the
 *     navigator sends one request line and waits for one reply; the line is stated as "Sends".
 *  2. Texts are NUL-terminated. ZeltoNavPort_Wide texts are UTF-16; they reach the navigator as
 *     UTF-8 after ZeltoNavPort_Init and in the system's code page before it; a surrogate pair
 *     becomes four bytes of a private form, a lone high surrogate "?". 8-bit texts are sent byte
 *     for byte (write them in UTF-8) unless the function says that it converts them.
 *     A line feed or a field separator inside a text is sent as it is. A request line takes 1024
 *     bytes; a longer one is not sent: system error 122.
 *  3. Nulls: a null text counts as an empty one; with a null destination the answer is discarded.
 *  4. Ownership: the caller owns every argument; no pointer is kept after the call.
 *  5. Sizes and units are stated with each argument. Doubles are written with "." as the decimal
 *     point whatever the locale; which of them is a latitude, a longitude or an altitude is the
 *     navigator's affair.
 *  6. Truth values are integers, zero or not.
 *  7. Threads: the connection is one per process and holds no lock. Call from any thread, but
 *     from one at a time. Two client processes of one device disturb each other: their queues can
 *     have the same names, and then either may get the other's answer or none. `zeltoport trace`
 *     and `zeltoport why` warn wherever that happened.
 *  8. Waits: a request takes at most 4 s to be written (11 s when a second attempt is needed) and
 *     0.5 s to be answered. ZeltoNavPort_Init says its own. Where another process of the device
 *     was stopped in the middle of a call, the first wait for it adds 2 s; calls then fail.
 *  9. Nothing is thrown, nothing is shown to the user, nothing is written to a log.
 */

#ifndef ZELTO_PORT_H
#define ZELTO_PORT_H

#include <stdint.h>

/* One UTF-16 unit: wchar_t where that is 16 bits wide, else char16_t. */
#if WCHAR_MAX <= 0xFFFF
#include <stddef.h>
typedef wchar_t ZeltoNavPort_Wide;
#else
#ifndef __cplusplus
#include <uchar.h>
#endif
typedef char16_t ZeltoNavPort_Wide;
#endif

#if defined(_WIN32) && defined(ZELTO_PORT_BUILDING)
#define ZELTO_PORT_API __declspec(dllexport)
#elif defined(_WIN32)
#define ZELTO_PORT_API __declspec(dllimport)
#else
#define ZELTO_PORT_API __attribute__((visibility("default")))
#endif

/* The library's own results. Any other number is
 *  - the navigator's, sent in its reply "B|<number>" (it may equal one of these), or
 *  - an error number of the system: positive when the request could not be written, negated when
 *    it could not be written on the second attempt; 14: this process is out of memory. */
enum ZeltoNavPort_Result {
    ZELTO_NAV_PORT_OK = 0,
    ZELTO_NAV_PORT_NO_NAVIGATOR = 1,       /* not found and not started; or not supported */
    ZELTO_NAV_PORT_SHORT_REPLY = 2,        /* a reply of fewer than 2 bytes */
    ZELTO_NAV_PORT_EMPTY_REPLY = 3,        /* GetString: a reply of no bytes */
    ZELTO_NAV_PORT_NOT_INSTALLED = 4,      /* Init: registry entry, or device, not to be had */
    ZELTO_NAV_PORT_REQUEST_FILE = 5,       /* the request file could not be created */
    ZELTO_NAV_PORT_NO_WINDOW = 6,          /* no window known; the request file not written */
    ZELTO_NAV_PORT_SHORT_STREET_REPLY = 8, /* PositionStreet: a reply of fewer than 2 bytes */
    ZELTO_NAV_PORT_BAD_REPLY = 9,          /* a reply of no known kind; reply file not read */
    ZELTO_NAV_PORT_READ_FAILED = 10,       /* reply not readable; GetString: reply without "|" */
    ZELTO_NAV_PORT_DISCONNECTED = 11,      /* the navigator's end of the queue is gone */
    ZELTO_NAV_PORT_NOT_ANNOUNCED = 12,     /* the window is gone or takes no more messages */
    ZELTO_NAV_PORT_NO_REPLY_FILE = 88,     /* the reply file could not be opened */
    ZELTO_NAV_PORT_TIMEOUT = 1007,         /* no reply in time */
    ZELTO_NAV_PORT_EVENT_TIMEOUT = 2007    /* no reply event in time */
};

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Finding, starting, showing and closing the navigator -------------------------------- */

/* Connects: reads the navigator's path from the registry (HKEY_LOCAL_MACHINE, key
 * "SOFTWARE\ZeltoNav\General", value "Path_EXE", at most 200 bytes), starts the navigator unless
 * its window is there, and makes the first exchange. Sends "F|0".
 * Waits up to 15 s for a navigator it has to start, always the last 5 s of them, and up to five
 * reads of 0.5 s for its answer: a silent navigator is 1007 after 2.5 s. May be called again:
 * everything is done anew.
 * Result: 4 not installed, 1 not found and not started, else that of the exchange, as
 * ZeltoNavPort_GetString. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_Init(void);

/* Looks the navigator's window up and remembers what it found. Result: 0 found, 6 not there.
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_IsOpen(void);

/* The version of this interface: always 4, which is no error here. Threads: any. */
ZELTO_PORT_API int32_t ZeltoNavPort_Version(void);

/* Shows the window, brings it to the front. Result: 6 no window known (it is not looked up), else
 * 0 whether or not the window still lives. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_Show(void);

/* Minimises the window. Result: as ZeltoNavPort_Show. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_Minimize(void);

/* Asks the navigator to end and, at success, forgets its window. Sends "R|0".
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_CloseZeltoNav(void);

/* ---- Questions and messages -------------------------------------------------------------- */

/* Asks for a text; connects first when no window is known. Sends "F|<request>".
 * request: 8-bit. size: the largest reply taken, in bytes, kind and separator ("G|") included; a
 * longer one is lost, with result 10. destination: receives the reply's text after its first "|"
 * and a NUL, and is not checked: it must hold `size` bytes.
 * Result: 3 empty reply, 9 not a text reply, 10 a text reply without "|". At any result but 0 the
 * destination is left alone and the reply's memory (size + 10 bytes) is kept until the process
 * ends. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_GetString(const char* request, uint32_t size,
                                              char* destination);

/* Asks for the position and its street. Sends "e|0".
 * destination: receives the whole reply as text, kind byte included, whatever the result; empty
 * when there was none. It must hold 1001 units.
 * Result: 8 for a reply of fewer than 2 bytes. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_PositionStreet(ZeltoNavPort_Wide* destination);

/* Shows a message box in the navigator, two texts and two numbers of the navigator's choice.
 * Sends "T|1|<first>|<second>|<number>|<number>". Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_MessageBox(const ZeltoNavPort_Wide* first,
                                               const ZeltoNavPort_Wide* second,
                                               int32_t first_number, int32_t second_number);

/* The same with 8-bit texts, converted from the system's code page.
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_MessageBoxA(const char* first, const char* second,
                                                int32_t first_number, int32_t second_number);

/* Asks whether there is coverage; 0 when the navigator says yes. Sends "a|0".
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_Cobertura(void);

/* ---- Commands ---------------------------------------------------------------------------- */

/* Opens a file in the navigator. Sends "D|<path>". C++ has an 8-bit form of the same name, below.
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_OpenFile(const ZeltoNavPort_Wide* path);

/* Creates a waypoint. Sends "M|<first>,<second>,<x>,<y>,<z>,<third>", six decimals each.
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_New_Waypoint(const ZeltoNavPort_Wide* first,
                                                 const ZeltoNavPort_Wide* second, double x,
                                                 double y, double z,
                                                 const ZeltoNavPort_Wide* third);

/* The same with 8-bit texts. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_New_WaypointA(const char* first, const char* second, double x,
                                                  double y, double z, const char* third);

/* Deletes a waypoint. Sends "N|<name>". Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_Delete_Waypoint(const ZeltoNavPort_Wide* name);

/* The same with an 8-bit text. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_Delete_WaypointA(const char* name);

/* Centres the map. Sends "O|<x>,<y>,<z>", six decimals each. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_CenterCoordinate(double x, double y, double z);

/* Runs one of the navigator's numbered commands. Sends "I|<number>". Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_ExecCommand(int32_t number);

/* Starts navigation to a point. Sends "S|<x>,<y>,,,1", the last field 0 for a null text; the text
 * itself is not sent. Seven decimals each, cut and not rounded; beyond 2^63 the largest double
 * below it is sent, and "nan" for what is not a number. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_Goto(double x, double y, const ZeltoNavPort_Wide* text);

/* As ZeltoNavPort_Goto, but the 8-bit text is sent: "S|<x>,<y>,,,<text>".
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_GotoA(double x, double y, const char* text);

/* Feeds a position sentence. Sends "E|<sentence>". The second text is not looked at.
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_NewPoint_nmea(const ZeltoNavPort_Wide* sentence,
                                                  const ZeltoNavPort_Wide* unused);

/* The same with one 8-bit text. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_NewPoint_nmeaA(const char* sentence);

/* Starts navigation along a route. Sends "f|<route>". Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_GotoRuta(const ZeltoNavPort_Wide* route);

/* The same with an 8-bit text. Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_GotoRutaA(const char* route);

#ifdef __cplusplus
} /* extern "C" */

/* ---- Two functions with C++ names -------------------------------------------------------- */

/* ZeltoNavPort_OpenFile with an 8-bit path, converted from the system's code page.
 * Threads: one at a time. */
ZELTO_PORT_API int32_t ZeltoNavPort_OpenFile(const char* path);

/* The 8-bit form of ZeltoNavPort_PositionStreet is not supported: always 1. Threads: any. */
ZELTO_PORT_API int32_t ZeltoNavPort_PositionStreetA();
#endif

#endif
