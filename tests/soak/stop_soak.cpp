// Stops a process inside each lock of a device, and others at any instant: every export and every
// command returns in its documented time, and all is well once the holder goes on.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <map>
#include <random>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/objects/store.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/soak/inhabitants.h"
#include "tests/support/temp_device.h"

namespace zelto::soak {
namespace {

// Seconds: what zelto_port.h says of a request, and of connecting where a navigator is started: 15
// for the start, five reads of half a second, 4 to write, and once 2 for the lock.
constexpr double kRequestTime = 12;
constexpr double kConnectTime = 24;

struct Export {
    const char* name;
    double limit;
    int32_t (*call)();
};

char g_text[64];
ZeltoNavPort_Wide g_wide[1001];

const Export kExports[] = {
    {"Init", kConnectTime, [] { return ZeltoNavPort_Init(); }},
    {"IsOpen", kRequestTime, [] { return ZeltoNavPort_IsOpen(); }},
    {"Version", kRequestTime, [] { return ZeltoNavPort_Version(); }},
    {"Show", kRequestTime, [] { return ZeltoNavPort_Show(); }},
    {"Minimize", kRequestTime, [] { return ZeltoNavPort_Minimize(); }},
    {"GetString", kConnectTime + kRequestTime,
     [] { return ZeltoNavPort_GetString("version", 64, g_text); }},
    {"PositionStreet", kRequestTime, [] { return ZeltoNavPort_PositionStreet(g_wide); }},
    {"PositionStreetA", kRequestTime, [] { return ZeltoNavPort_PositionStreetA(); }},
    {"MessageBox", kRequestTime, [] { return ZeltoNavPort_MessageBox(u"a", u"b", 1, 2); }},
    {"MessageBoxA", kRequestTime, [] { return ZeltoNavPort_MessageBoxA("a", "b", 1, 2); }},
    {"Cobertura", kRequestTime, [] { return ZeltoNavPort_Cobertura(); }},
    {"OpenFile", kRequestTime, [] { return ZeltoNavPort_OpenFile(u"\\none"); }},
    {"OpenFile (8-bit)", kRequestTime, [] { return ZeltoNavPort_OpenFile("\\none"); }},
    {"New_Waypoint", kRequestTime,
     [] { return ZeltoNavPort_New_Waypoint(u"a", u"b", 1, 2, 3, u"c"); }},
    {"New_WaypointA", kRequestTime,
     [] { return ZeltoNavPort_New_WaypointA("a", "b", 1, 2, 3, "c"); }},
    {"Delete_Waypoint", kRequestTime, [] { return ZeltoNavPort_Delete_Waypoint(u"a"); }},
    {"Delete_WaypointA", kRequestTime, [] { return ZeltoNavPort_Delete_WaypointA("a"); }},
    {"CenterCoordinate", kRequestTime, [] { return ZeltoNavPort_CenterCoordinate(1, 2, 3); }},
    {"ExecCommand", kRequestTime, [] { return ZeltoNavPort_ExecCommand(7); }},
    {"Goto", kRequestTime, [] { return ZeltoNavPort_Goto(1, 2, u"a"); }},
    {"GotoA", kRequestTime, [] { return ZeltoNavPort_GotoA(1, 2, "a"); }},
    {"NewPoint_nmea", kRequestTime, [] { return ZeltoNavPort_NewPoint_nmea(u"$", nullptr); }},
    {"NewPoint_nmeaA", kRequestTime, [] { return ZeltoNavPort_NewPoint_nmeaA("$"); }},
    {"GotoRuta", kRequestTime, [] { return ZeltoNavPort_GotoRuta(u"a"); }},
    {"GotoRutaA", kRequestTime, [] { return ZeltoNavPort_GotoRutaA("a"); }},
    {"CloseZeltoNav", kRequestTime, [] { return ZeltoNavPort_CloseZeltoNav(); }},
};
static_assert(std::size(kExports) == 26);

const std::vector<std::string> kCommands[] = {
    {"init"},
    {"is-open"},
    {"show"},
    {"minimize"},
    {"coverage"},
    {"version"},
    {"open", "/none"},
    {"waypoint", "add", "a", "1", "2"},
    {"waypoint", "delete", "a"},
    {"center", "1", "2", "3"},
    {"exec", "7"},
    {"goto", "1", "2"},
    {"route", "a"},
    {"get", "version"},
    {"street"},
    {"message-box", "a", "b"},
    {"device", "init", "--navigator", "/bin/true"},
    {"device", "show"},
    {"clock", "show"},
    {"clock", "zone", "0"},
};

// ---- The holders -----------------------------------------------------------------------------

struct Holder {
    const char* lock;
    void (*hold)();  // takes the lock and stops this process
};

void StopHere() {
    raise(SIGSTOP);
}

void HoldFile(const char* name) {
    const std::string path = coredll::DevicePath() + "/" + name;
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    Require(file >= 0 && flock(file, LOCK_EX) == 0, path + " cannot be locked");
    StopHere();
}

void HoldStore() {
    coredll::Store* store = coredll::OpenStore();
    Require(store != nullptr, coredll::StoreProblem());
    const coredll::StoreLock lock(*store);
    Require(lock.IsHeld(), "the store's lock is not to be had");
    StopHere();
}

const Holder kHolders[] = {
    {"the store's lock", HoldStore},
    {"the lock of connecting", [] { HoldFile("store"); }},
    {"the registry's lock", [] { HoldFile("registry.lock"); }},
};

// A process that holds the lock, stopped.
Child StopHolder(const Holder& holder) {
    Child child([&holder] {
        holder.hold();
        coredll::CloseStore();
        return 0;
    });
    child.AwaitStop();
    return child;
}

// ---- What the others meet --------------------------------------------------------------------

// What the processes of one trial share.
struct Tally {
    Longest longest;
    std::atomic<int> connected;
    std::atomic<bool> go;
    std::atomic<int> late;
    std::atomic<int32_t> results[std::size(kExports)];
};

void CallExport(size_t index, bool connect_first, Tally& tally) {
    if (connect_first)
        Require(ZeltoNavPort_Init() == 0, "no connection before the stop");
    ++tally.connected;
    while (!tally.go.load())
        usleep(500);
    const Stopwatch watch;
    tally.results[index] = kExports[index].call();
    tally.longest.Take(watch.Seconds());
    if (watch.Seconds() <= kExports[index].limit)
        return;
    ++tally.late;
    std::fprintf(stderr, "%s took %.1f s\n", kExports[index].name, watch.Seconds());
}

std::string ResultsInWords(const Tally& tally) {
    std::map<int32_t, int> counts;
    for (const auto& result : tally.results)
        ++counts[result.load()];
    std::string words;
    for (const auto& [result, count] : counts)
        words += " " + std::to_string(result) + " (" + std::to_string(count) + ")";
    return words;
}

// Every export in a process of its own, connected before the stop or only then.
void CallExports(const Holder& holder, bool connect_first) {
    const Shared<Tally> tally;
    std::vector<Child> clients;
    for (size_t i = 0; i + 1 < std::size(kExports); ++i) {  // not CloseZeltoNav: it would succeed
        clients.emplace_back([&tally, i, connect_first] {
            CallExport(i, connect_first, *tally);
            return 0;
        });
    }
    while (tally->connected.load() < static_cast<int>(clients.size()))
        usleep(1000);
    Child stopped = StopHolder(holder);
    tally->go = true;
    for (Child& client : clients)
        Require(client.Wait(kProcessTime) == 0, "a client did not return");
    stopped.Signal(SIGCONT);
    Require(stopped.Wait(kProcessTime) == 0, "the holder did not go on");
    std::printf("  exports, %s: slowest %.0f ms, results%s\n",
                connect_first ? "connected before" : "not connected", tally->longest.Milliseconds(),
                ResultsInWords(*tally).c_str());
    Require(tally->late.load() == 0, "exports took longer than documented");
}

void RunCommands(const Holder& holder) {
    Child stopped = StopHolder(holder);
    std::vector<Child> programs;
    const Stopwatch watch;
    for (const auto& command : kCommands) {
        std::vector<std::string> words{ZELTO_PORT_PROGRAM};
        words.insert(words.end(), command.begin(), command.end());
        programs.emplace_back(words, "/dev/null");
    }
    std::map<int, int> statuses;
    for (Child& program : programs)
        ++statuses[program.Wait(std::size(kCommands) *
                                (kConnectTime + kRequestTime))];  // they take turns
    std::printf("  %zu commands: %.1f s, exit status", std::size(kCommands), watch.Seconds());
    for (const auto& [status, count] : statuses) {
        std::printf(" %d (%d)", status, count);
        Require(status >= 0 && status <= 7, "a command ended in no documented way");
    }
    std::printf("\n");
    stopped.Signal(SIGCONT);
    Require(stopped.Wait(kProcessTime) == 0, "the holder did not go on");
}

void RequireClientWorks() {
    Child client(
        [] { return ZeltoNavPort_IsOpen() == 0 && ZeltoNavPort_Goto(1, 2, u"") == 0 ? 0 : 1; });
    Require(client.Wait(kRequestTime) == 0, "no client works after the holder went on");
}

void TryHolder(const Holder& holder) {
    std::printf("stopped in %s\n", holder.lock);
    const test::TempDevice device;
    Child set_up({ZELTO_PORT_PROGRAM, "device", "init", "--navigator", "/bin/true"}, "/dev/null");
    Require(set_up.Wait(kProcessTime) == 0, "no device");
    const Child navigator = StartNavigator();
    coredll::CloseStore();
    CallExports(holder, true);
    CallExports(holder, false);
    RunCommands(holder);
    RequireClientWorks();
    Require(navigator.Lives(), "the navigator went");
}

// ---- At any instant --------------------------------------------------------------------------

void StopRounds(int worker, int count, Longest& longest) {
    const test::TempDevice device;
    std::mt19937 random(static_cast<unsigned>(worker) + 1);
    for (int round = 0; round < count; ++round) {
        Inhabitants inhabitants(longest);
        usleep(static_cast<useconds_t>(random() % 2000));
        inhabitants.Worker().Signal(SIGSTOP);
        Child beside([&] { return UseDevice(longest); });
        const int found = beside.Wait(kProcessTime);
        Require(found == kServed || found == kRefused || found == kSomeFailed,
                "a process beside a stopped one ended");
        inhabitants.Worker().Signal(SIGCONT);
        inhabitants.Stop();
        Require(inhabitants.Holder().Wait(kProcessTime) == kServed, "the holder was not served");
        Require(inhabitants.Worker().Wait(kProcessTime) == kServed,
                "the stopped one was not served");
    }
}

void StopAnywhere(int rounds) {
    const Shared<Longest> longest;
    const Stopwatch watch;
    InWorkers(rounds, [&](int worker, int count) { StopRounds(worker, count, *longest); });
    std::printf("stopped at any instant: %d rounds in %.0f s, slowest call beside %.0f ms\n",
                rounds, watch.Seconds(), longest->Milliseconds());
}

}  // namespace
}  // namespace zelto::soak

int main(int argc, char** argv) {
    using namespace zelto::soak;
    const int count = argc == 2 ? std::atoi(argv[1]) : 0;
    if (count <= 0) {
        std::fprintf(stderr, "usage: stop_soak COUNT\n");
        return 2;
    }
    return RunSoak([count] {
        StopAnywhere(count);
        for (const Holder& holder : kHolders)
            TryHolder(holder);
    });
}
