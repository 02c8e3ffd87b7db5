// One request, ZeltoNavPort_Goto to its reply, against a bare futex ping-pong of two processes in
// the same run. Argument: how long a wait may spin before it sleeps, in microseconds.
//
// The ping-pong is taken twice: as the scheduler places it, which is often on one processor, and
// with a processor for each side, as for sides that spin.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "bench/request/futex_ping_pong.h"
#include "bench/request/responder.h"
#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/device_admin.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/support/temp_device.h"

namespace zelto::bench {
namespace {

constexpr int kBatches = 15;
constexpr int kRequestsPerBatch = 400;

struct Figures {
    double request_us;
    double ping_pong_us;
    double ratio;  // median of the batches' ratios
    double apart_us;
    double ratio_apart;
    double client_kb;     // resident memory that the client's requests added to its process
    double responder_kb;  // the same on the other side
    int32_t failed;       // result code of the first request that failed
};

template <class Body>
double MicrosecondsEach(const Body& body) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kRequestsPerBatch; ++i)
        body();
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    return time.count() / kRequestsPerBatch;
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// Memory of a process in kilobytes, pages it shares counted in part.
double ProportionalMemory(pid_t process) {
    const std::string path = "/proc/" + std::to_string(process) + "/smaps_rollup";
    double kilobytes = 0;
    if (std::FILE* file = std::fopen(path.c_str(), "r")) {
        char line[256];
        while (std::fgets(line, sizeof line, file) != nullptr) {
            if (std::sscanf(line, "Pss: %lf", &kilobytes) == 1)
                break;
        }
        std::fclose(file);
    }
    return kilobytes;
}

void WaitForWindow() {
    while (FindWindowW(TEXT("ZELTOPOCKETMAINW"), nullptr) == nullptr)
        Sleep(1);
}

// Microseconds each, a value a batch.
struct Batches {
    std::vector<double> requests, ping_pongs, apart;
};

std::vector<double> Ratios(const std::vector<double>& values, const std::vector<double>& floors) {
    std::vector<double> ratios;
    for (size_t i = 0; i < values.size(); ++i)
        ratios.push_back(values[i] / floors[i]);
    return ratios;
}

// Returns the result of the first request that failed, 0 without one.
int32_t MeasureBatches(Batches& batches) {
    FutexPingPong ping_pong(FutexPingPong::Partner::kAnywhere);
    FutexPingPong apart(FutexPingPong::Partner::kOnSecondProcessor);
    int32_t failed = 0;
    for (int batch = 0; batch < kBatches && failed == 0; ++batch) {
        batches.ping_pongs.push_back(MicrosecondsEach([&] { ping_pong.Ping(); }));
        {
            const OnFirstProcessor here;
            batches.apart.push_back(MicrosecondsEach([&] { apart.Ping(); }));
        }
        batches.requests.push_back(MicrosecondsEach([&] {
            const int32_t result = ZeltoNavPort_Goto(42.5, 1.5, nullptr);
            if (result != 0)
                failed = result;
        }));
    }
    return failed;
}

Figures Measure(pid_t responder) {
    Figures figures{};
    const double client_before = ProportionalMemory(getpid());
    const double responder_before = ProportionalMemory(responder);
    Batches batches;
    figures.failed = ZeltoNavPort_Init();
    if (figures.failed == 0)
        figures.failed = MeasureBatches(batches);
    if (figures.failed != 0)
        return figures;
    figures.request_us = Median(batches.requests);
    figures.ping_pong_us = Median(batches.ping_pongs);
    figures.ratio = Median(Ratios(batches.requests, batches.ping_pongs));
    figures.apart_us = Median(batches.apart);
    figures.ratio_apart = Median(Ratios(batches.requests, batches.apart));
    figures.client_kb = ProportionalMemory(getpid()) - client_before;
    figures.responder_kb = ProportionalMemory(responder) - responder_before;
    return figures;
}

pid_t StartResponder() {
    const pid_t responder = fork();
    if (responder == 0) {
        RunResponder();
        _exit(1);
    }
    return responder;
}

// The client is a process of its own, so that each measurement connects anew with its own setting.
Figures MeasureInChild(const std::string& spin) {
    Figures figures{};
    int channel[2];
    if (pipe(channel) != 0)
        return figures;
    setenv("ZELTO_SPIN_US", spin.c_str(), 1);
    const pid_t responder = StartResponder();
    const pid_t client = fork();
    if (client == 0) {
        WaitForWindow();
        figures = Measure(responder);
        _exit(write(channel[1], &figures, sizeof figures) == sizeof figures ? 0 : 1);
    }
    waitpid(client, nullptr, 0);
    kill(responder, SIGKILL);
    waitpid(responder, nullptr, 0);
    if (read(channel[0], &figures, sizeof figures) != sizeof figures)
        figures.failed = -1;
    close(channel[0]);
    close(channel[1]);
    return figures;
}

void Request(benchmark::State& state) {
    const test::TempDevice device;
    RegisterNavigator();
    for (auto _ : state) {
        const Figures figures = MeasureInChild(std::to_string(state.range(0)));
        if (figures.failed != 0) {
            state.SkipWithError(("result " + std::to_string(figures.failed)).c_str());
            return;
        }
        state.SetIterationTime(figures.request_us / 1e6);
        state.counters["ping_pong_us"] = figures.ping_pong_us;
        state.counters["ratio"] = figures.ratio;
        state.counters["apart_us"] = figures.apart_us;
        state.counters["ratio_apart"] = figures.ratio_apart;
        state.counters["client_kb"] = figures.client_kb;
        state.counters["responder_kb"] = figures.responder_kb;
    }
}
BENCHMARK(Request)
    ->ArgName("spin_us")
    ->Arg(0)
    ->Arg(50)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(3)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace zelto::bench
