/* A client in C: calls each of the 24 functions once and tells which did not answer as expected. */

#include <stdio.h>
#include <string.h>

#include "zelto_port.h"

static int failures = 0;

static void Expect(const char* call, int32_t result, int32_t expected) {
    if (result != expected) {
        printf("%s: %ld, not %ld\n", call, (long)result, (long)expected);
        ++failures;
    }
}

#define CHECK(call, expected) Expect(#call, call, expected)

int main(void) {
    static const ZeltoNavPort_Wide wide[] = u"caf\u00e9";
    ZeltoNavPort_Wide street[1001];
    char answer[64] = "";

    CHECK(ZeltoNavPort_Version(), 4);
    CHECK(ZeltoNavPort_Show(), ZELTO_NAV_PORT_NO_WINDOW);
    CHECK(ZeltoNavPort_Init(), ZELTO_NAV_PORT_OK);
    CHECK(ZeltoNavPort_IsOpen(), 0);
    CHECK(ZeltoNavPort_Show(), 0);
    CHECK(ZeltoNavPort_Minimize(), 0);
    CHECK(ZeltoNavPort_GetString("echo", sizeof(answer), answer), 0);
    CHECK(strcmp(answer, "echo"), 0);
    CHECK(ZeltoNavPort_PositionStreet(street), 0);
    CHECK(street[0] == u'A' && street[2] == 0, 1);
    CHECK(ZeltoNavPort_MessageBox(wide, wide, 1, 2), 0);
    CHECK(ZeltoNavPort_MessageBoxA("a", "b", 1, 2), 0);
    CHECK(ZeltoNavPort_Cobertura(), 0);
    CHECK(ZeltoNavPort_OpenFile(wide), 0);
    CHECK(ZeltoNavPort_New_Waypoint(wide, wide, 1, 2, 3, wide), 0);
    CHECK(ZeltoNavPort_New_WaypointA("a", "b", 1, 2, 3, "c"), 0);
    CHECK(ZeltoNavPort_Delete_Waypoint(wide), 0);
    CHECK(ZeltoNavPort_Delete_WaypointA("a"), 0);
    CHECK(ZeltoNavPort_CenterCoordinate(1, 2, 3), 0);
    CHECK(ZeltoNavPort_ExecCommand(7), 0);
    CHECK(ZeltoNavPort_Goto(1, 2, wide), 0);
    CHECK(ZeltoNavPort_GotoA(1, 2, "a"), 0);
    CHECK(ZeltoNavPort_NewPoint_nmea(wide, wide), 0);
    CHECK(ZeltoNavPort_NewPoint_nmeaA("$GP"), 0);
    CHECK(ZeltoNavPort_GotoRuta(wide), 0);
    CHECK(ZeltoNavPort_GotoRutaA("r"), 0);
    CHECK(ZeltoNavPort_CloseZeltoNav(), 0);
    CHECK(ZeltoNavPort_Minimize(), ZELTO_NAV_PORT_NO_WINDOW);
    return failures != 0;
}
