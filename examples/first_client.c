/* The same library from C: feeds one position and asks for it back. */
#include <stdio.h>

#include "zelto_port.h"

static const char kSentence[] =
    "$GPRMC,093000.000,A,4250.8020,N,00240.3620,W,0.00,35.00,150510,,,A*48";

int main(void) {
    char answer[1024] = "";
    int32_t result = ZeltoNavPort_Init();
    if (result == ZELTO_NAV_PORT_OK)
        result = ZeltoNavPort_NewPoint_nmeaA(kSentence);
    if (result == ZELTO_NAV_PORT_OK)
        result = ZeltoNavPort_GetString("position", sizeof answer, answer);
    printf("result %d, position %s\n", (int)result, answer);
    return result == ZELTO_NAV_PORT_OK ? 0 : 1;
}
