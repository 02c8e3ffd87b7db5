// What it costs a request that the device records its events: the same requests with recording off
// and on by turns, in one process.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "bench/request/responder.h"
#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/device_admin.h"
#include "plugins/zelto_port_dll/protocol.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/support/temp_device.h"

namespace zelto::bench {
namespace {

constexpr int kTurns = 101;
constexpr int kRequestsPerTurn = 200;

// Microseconds each, medians.
struct Figures {
    double off;
    double on;
    double ratio;
};

double MicrosecondsEach(bool recording) {
    coredll::RecordWitness(recording);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kRequestsPerTurn; ++i) {
        if (ZeltoNavPort_Goto(42.5, 1.5, nullptr) != ZELTO_NAV_PORT_OK)
            return 0;
    }
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    return time.count() / kRequestsPerTurn;
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

Figures Measure() {
    while (FindWindowW(kWindowClass, nullptr) == nullptr)
        Sleep(1);
    if (ZeltoNavPort_Init() != ZELTO_NAV_PORT_OK)
        return {};
    std::vector<double> off, on, ratios;
    for (int turn = 0; turn < kTurns; ++turn) {
        off.push_back(MicrosecondsEach(false));
        on.push_back(MicrosecondsEach(true));
        ratios.push_back(on.back() / off.back());
    }
    return {Median(off), Median(on), Median(ratios)};
}

void Recording(benchmark::State& state) {
    const test::TempDevice device;
    RegisterNavigator();
    coredll::Disconnect();  // the other side has a connection of its own
    const pid_t responder = fork();
    if (responder == 0) {
        RunResponder();
        _exit(1);
    }
    for (auto _ : state) {
        const Figures figures = Measure();
        if (figures.off == 0)
            state.SkipWithError("a request failed");
        state.SetIterationTime(figures.on / 1e6);
        state.counters["off_us"] = figures.off;
        state.counters["ratio"] = figures.ratio;
    }
    kill(responder, SIGKILL);
    waitpid(responder, nullptr, 0);
}
BENCHMARK(Recording)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace zelto::bench
