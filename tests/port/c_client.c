/* A client in C: calls each of the 24 functions and tells which did not answer as expected. */

#include <stdio.h>
#include <string.h>

#include "zelto_port.h"

static int failures = 0;

#define CHECK(call, expected)                                              \
    do {                                                                   \
        const long result = (call);                                        \
        if (result != (expected) && ++failures)                            \
            printf("%s: %ld, not %ld\n", #call, result, (long)(expected)); \
    } while (0)

int main(void) {
    const ZeltoNavPort_Wide* const name = u"caf\u00e9";
    const char* const sentence = "$GPGGA,1,4200.0,N,1.0,E,1,07,1,1,M,1,M,,*5C";
    ZeltoNavPort_Wide street[1001];
    char answer[64] = "";

    CHECK(ZeltoNavPort_Version(), 4);
    CHECK(ZeltoNavPort_Show(), ZELTO_NAV_PORT_NO_WINDOW);
    CHECK(ZeltoNavPort_Init(), ZELTO_NAV_PORT_OK);
    CHECK(ZeltoNavPort_IsOpen(), 0);
    CHECK(ZeltoNavPort_Show(), 0);
    CHECK(ZeltoNavPort_Minimize(), 0);
    CHECK(ZeltoNavPort_NewPoint_nmeaA(sentence), 0);
    CHECK(ZeltoNavPort_NewPoint_nmea(u"$GP*00", name), 306);
    CHECK(ZeltoNavPort_Cobertura(), 0);
    CHECK(ZeltoNavPort_PositionStreet(street), 0);
    CHECK(street[0] == u'A' && street[1] == u'|', 1);
    CHECK(ZeltoNavPort_New_Waypoint(name, u"", 1, 2, 3, u""), 0);
    CHECK(ZeltoNavPort_Delete_Waypoint(name), 0);
    CHECK(ZeltoNavPort_New_WaypointA("a", "b", 1, 2, 3, "c"), 0);
    CHECK(ZeltoNavPort_Delete_WaypointA("a"), 0);
    CHECK(ZeltoNavPort_OpenFile(u"\\bin\\sh"), 0);
    CHECK(ZeltoNavPort_CenterCoordinate(1, 2, 3), 0);
    CHECK(ZeltoNavPort_ExecCommand(7), 0);
    CHECK(ZeltoNavPort_Goto(1, 2, name), 0);
    CHECK(ZeltoNavPort_GotoA(1, 2, "a"), 0);
    CHECK(ZeltoNavPort_GotoRuta(name), 0);
    CHECK(ZeltoNavPort_GotoRutaA("r"), 0);
    CHECK(ZeltoNavPort_MessageBoxA("a", "b", 1, 2), 0);
    CHECK(ZeltoNavPort_MessageBox(u"title", name, 1, 2), 0);
    CHECK(ZeltoNavPort_GetString("box", sizeof(answer), answer), 0);
    CHECK(strcmp(answer, "title|caf\xC3\xA9"), 0);
    CHECK(ZeltoNavPort_CloseZeltoNav(), 0);
    return failures != 0;
}
