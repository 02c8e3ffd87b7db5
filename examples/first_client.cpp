#include <cstdio>

#include "zelto_port.h"

int main() {
    char answer[1024] = "";
    if (ZeltoNavPort_Init() != 0 || ZeltoNavPort_Goto(42.8467, -2.6727, nullptr) != 0)
        return 1;
    const bool told = ZeltoNavPort_GetString("destination", sizeof answer, answer) == 0;
    std::printf("on the way to %s\n", told ? answer : "an unknown place");
}
