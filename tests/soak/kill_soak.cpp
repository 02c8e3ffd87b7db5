// Kills clients, navigators and both at any instant, and lets fresh processes connect beside one
// that sweeps: the next client works at once, nothing of the dead remains, nobody alive is dropped.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <unistd.h>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_report.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/soak/soak.h"
#include "tests/support/temp_device.h"

namespace zelto::soak {
namespace {

constexpr double kAtOnce = 2;        // seconds for a client whose navigator runs
constexpr double kRequestTime = 12;  // for one whose navigator was killed: see zelto_port.h

struct Device {
    ~Device() { coredll::CloseStore(); }
    test::TempDevice device;
};

coredll::StoreReport Report() {
    coredll::StoreReport report;
    std::string why;
    Require(coredll::DescribeStore(report, &why), why);
    return report;
}

// One request; false when there is no navigator, or none any more.
bool MakeRequest(unsigned number) {
    if (ZeltoNavPort_IsOpen() != 0)
        return false;
    char text[64];
    switch (number % 3) {
        case 0:
            return ZeltoNavPort_GotoA(1, 2, "x") == 0;
        case 1:
            return ZeltoNavPort_GetString("version", sizeof text, text) == 0;
        default:
            return ZeltoNavPort_CenterCoordinate(1, 2, 3) == 0;
    }
}

// Makes requests until one fails.
int Client() {
    for (unsigned number = 0; MakeRequest(number); ++number) {
    }
    return 0;
}

void RequireNextClientWorks(Longest& slowest) {
    const Stopwatch watch;
    Child next([] {
        bool worked = true;
        for (unsigned number = 0; number < 3; ++number)
            worked = MakeRequest(number) && worked;
        return worked ? 0 : 1;
    });
    Require(next.Wait(kAtOnce) == 0, "the next client failed");
    slowest.Take(watch.Seconds());
}

// This process and the navigator remain, with its window and no queue.
void RequireNothingElseRemains() {
    const Stopwatch watch;
    for (;;) {
        const coredll::StoreReport report = Report();
        // The navigator may be about to close the queues of the last client.
        if (report.processes.size() == 2 && report.windows.size() == 1 && report.queues.empty() &&
            report.committed_message_memory == 0) {
            return;
        }
        Require(watch.Seconds() < kAtOnce,
                "of the dead remain: " + std::to_string(report.processes.size()) + " processes, " +
                    std::to_string(report.windows.size()) + " windows, " +
                    std::to_string(report.queues.size()) + " queues");
        usleep(1000);
    }
}

enum Victims : unsigned { kClient = 1, kNavigator = 2, kBoth = 3 };

void KillRounds(Victims victims, int rounds, unsigned seed, Longest& slowest) {
    const Device device;
    std::mt19937 random(seed);
    Child navigator = StartNavigator();
    for (int round = 0; round < rounds; ++round) {
        Child client(Client);
        usleep(static_cast<useconds_t>(random() % 5000));  // some instant of a request
        if ((victims & kNavigator) != 0)
            navigator = Child();
        if ((victims & kClient) == 0)
            Require(client.Wait(kRequestTime) == 0, "a client did not outlive its navigator");
        client = Child();
        if ((victims & kNavigator) != 0)
            navigator = StartNavigator();
        RequireNextClientWorks(slowest);
        RequireNothingElseRemains();
    }
}

void Rounds(int rounds) {
    const struct {
        Victims victims;
        const char* name;
    } kinds[] = {{kClient, "client"}, {kNavigator, "navigator"}, {kBoth, "both"}};
    for (const auto& kind : kinds) {
        const Stopwatch watch;
        Shared<Longest> slowest;
        InWorkers(rounds, [&](int worker, int count) {
            KillRounds(kind.victims, count, static_cast<unsigned>(worker) * 7 + kind.victims,
                       *slowest);
        });
        std::printf("kill -9 of %-9s: %d rounds in %.0f s, slowest next client %.0f ms\n",
                    kind.name, rounds, watch.Seconds(), slowest->Milliseconds());
    }
}

// Connects, and looks for its own window again and again: a sweep that takes this process for dead
// drops it. Ends without giving its place back, so that there is always somebody to sweep.
int FreshProcess() {
    const std::u16string name = test::WideFromUtf8("fresh" + std::to_string(getpid()));
    HWND window = CreateWindowExW(0, name.c_str(), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr,
                                  nullptr, nullptr);
    Require(window != nullptr, "a fresh process could not connect: " + coredll::StoreProblem());
    for (int look = 0; look < 10; ++look) {
        if (FindWindowW(name.c_str(), nullptr) != window)
            return 2;
        usleep(100);
    }
    return 0;
}

void Connections(int connections) {
    const Device device;
    const Stopwatch watch;
    const Child sweeper([]() -> int {
        for (;;)
            Report();
    });
    constexpr int kTogether = 4;
    int dropped = 0;
    for (int made = 0; made < connections; made += kTogether) {
        std::vector<Child> fresh;
        for (int i = 0; i < std::min(kTogether, connections - made); ++i)
            fresh.emplace_back(FreshProcess);
        for (Child& child : fresh) {
            const int status = child.Wait(kRequestTime);
            Require(status == 0 || status == 2, "a fresh process failed");
            dropped += status == 2 ? 1 : 0;
        }
    }
    std::printf("connections beside a sweeper: %d in %.0f s, %d dropped while alive\n", connections,
                watch.Seconds(), dropped);
    Require(dropped == 0, "living processes were dropped");
}

}  // namespace
}  // namespace zelto::soak

int main(int argc, char** argv) {
    using namespace zelto::soak;
    const std::string what = argc == 3 ? argv[1] : "";
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    if (count > 0 && what == "rounds")
        return RunSoak([count] { Rounds(count); });
    if (count > 0 && what == "connections")
        return RunSoak([count] { Connections(count); });
    std::fprintf(stderr, "usage: kill_soak rounds|connections COUNT\n");
    return 2;
}
