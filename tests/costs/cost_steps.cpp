// Does one thing as often as it is told, for check_costs.py to count what that takes.
//   cost_steps request|clock|field TIMES

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/request/responder.h"
#include "common/files/fichero_itv.h"
#include "common/time/device_clock.h"
#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/support/temp_device.h"

namespace {

int Request(int times) {
    zelto::bench::RegisterNavigator();
    const pid_t responder = fork();
    if (responder == 0) {
        alarm(60);
        zelto::bench::RunResponder();
        _exit(1);
    }
    while (FindWindowW(TEXT("ZELTOPOCKETMAINW"), nullptr) == nullptr)
        Sleep(1);
    int failed = ZeltoNavPort_Init();
    for (int i = 0; i < times && failed == 0; ++i)
        failed = ZeltoNavPort_Goto(42.5, 1.5, nullptr);
    kill(responder, SIGKILL);
    waitpid(responder, nullptr, 0);
    return failed;
}

int Clock(int times) {
    constexpr int kUntilConnected = 300;
    for (int i = 0; i < kUntilConnected + times; ++i)
        zelto::NowLocal();
    return 0;
}

int Field(int times, const zelto::test::TempDevice& device) {
    constexpr int kInFile = 20'000;
    const std::string host = device.Device() + "/fields";
    const std::string path = std::filesystem::path(host).string();
    const zelto::DString name(zelto::test::WidePath(path).c_str());
    {
        zelto::TFicheroITV out(name, zelto::FICH_WRITE | zelto::FICH_BINARY);
        for (int i = 0; i < kInFile; ++i)
            out << i;
    }
    zelto::TFicheroITV in(name, zelto::FICH_READ | zelto::FICH_BINARY | zelto::FICH_PACKAGE);
    int value = 0;
    for (int i = 0; i < times; ++i)
        in >> value;
    return value == times - 1 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3)
        return 2;
    const zelto::test::TempDevice device;
    const int times = std::atoi(arguments[2]);
    if (std::strcmp(arguments[1], "request") == 0)
        return Request(times);
    return std::strcmp(arguments[1], "clock") == 0 ? Clock(times) : Field(times, device);
}
