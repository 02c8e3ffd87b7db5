// What happens to the object store's file as a whole: cut short or removed in use, no room for it,
// asked for from another process-id namespace. No process ends by it, each is served or told in a
// sentence, and the next program works once the old file is gone.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sched.h>
#include <unistd.h>

#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_layout.h"
#include "tests/soak/inhabitants.h"
#include "tests/soak/namespaces.h"
#include "tests/support/temp_device.h"

namespace zelto::soak {
namespace {

constexpr double kLongestWait = 5;  // seconds
constexpr off_t kStoreSize = sizeof(coredll::Store);

// What the processes of the rounds share.
struct Tally {
    Longest longest;
    std::atomic<int> rounds;
    std::atomic<int> refused;
    char sentence[512];  // the last refusal
};

// Makes every call in a fresh process; a refusal must be a sentence.
Found UseAfresh(Tally& tally) {
    Child process([&] {
        const std::string why = coredll::StoreProblem();
        if (!why.empty())
            std::strncpy(tally.sentence, why.c_str(), sizeof tally.sentence - 1);
        return UseDevice(tally.longest);
    });
    const int found = process.Wait(kProcessTime);
    Require(found == kServed || found == kRefused || found == kSomeFailed,
            "a fresh process ended with " + std::to_string(found));
    if (found == kRefused) {
        ++tally.refused;
        Require(std::string(tally.sentence).ends_with("."), "a refusal is no sentence");
    }
    return static_cast<Found>(found);
}

void RequireOrderlyEnd(Child& child, const char* who) {
    const int found = child.Wait(kProcessTime);
    Require(found == kServed || found == kRefused || found == kSomeFailed,
            std::string(who) + " ended with " + std::to_string(found));
}

// ---- Cut short or removed --------------------------------------------------------------------

void DamageRounds(int worker, int count, Tally& tally,
                  const std::function<void(const std::string& path, size_t random)>& damage) {
    const test::TempDevice device;
    const std::string path = device.Device() + "/store";
    std::mt19937 random(static_cast<unsigned>(worker) + 1);
    for (int round = 0; round < count; ++round) {
        Inhabitants inhabitants(tally.longest);
        usleep(static_cast<useconds_t>(random() % 1000));
        damage(path, random());
        UseAfresh(tally);
        inhabitants.Stop();
        RequireOrderlyEnd(inhabitants.Holder(), "the holder");
        RequireOrderlyEnd(inhabitants.Worker(), "the worker");
        unlink(path.c_str());
        Require(UseAfresh(tally) == kServed, "no fresh store after the old one went");
        ++tally.rounds;
    }
}

void Damage(const char* name, int count,
            const std::function<void(const std::string& path, size_t random)>& damage) {
    const Shared<Tally> tally;
    const Stopwatch watch;
    InWorkers(count, [&](int worker, int rounds) { DamageRounds(worker, rounds, *tally, damage); });
    std::printf("%s: %d rounds in %.0f s, nobody ended by it, %d refusals, longest call %.0f ms\n",
                name, tally->rounds.load(), watch.Seconds(), tally->refused.load(),
                tally->longest.Milliseconds());
    Require(tally->longest.Milliseconds() < kLongestWait * 1000, "a call took too long");
}

void Cut(int count) {
    Damage("store cut short in use", count, [](const std::string& path, size_t random) {
        const off_t lengths[] = {0, 5, 4096, 40000, kStoreSize / 2, kStoreSize - 4096};
        const off_t length = random % 2 == 0 ? lengths[random / 2 % std::size(lengths)]
                                             : static_cast<off_t>(random) % kStoreSize;
        Require(truncate(path.c_str(), length) == 0, "the store cannot be cut");
    });
}

void Remove(int count) {
    Damage("store removed in use", count,
           [](const std::string& path, size_t /*random*/) { unlink(path.c_str()); });
}

// ---- No room, another namespace --------------------------------------------------------------

constexpr int kNotAllowed = 77;

// On a file system of so many bytes: every call in its documented way, programs end by themselves.
int UseSmallDisk(const std::string& folder, size_t bytes, Tally& tally) {
    if (!MountSmall(folder, bytes))
        return kNotAllowed;
    const Found found = UseAfresh(tally);
    for (const char* command : {"is-open", "init", "version"}) {
        Child program({ZELTO_PORT_PROGRAM, command}, "/dev/null");
        const int status = program.Wait(kProcessTime);
        Require(status >= 0 && status < 100, std::string(command) + " ended by a signal");
    }
    if (found == kRefused) {
        Child navigator({ZELTO_NAVIGATOR_PROGRAM}, "/dev/null");
        Require(navigator.Wait(kProcessTime) == 1, "a navigator without a store did not say so");
    }
    ++tally.rounds;
    return found;
}

void FullDisk() {
    const Shared<Tally> tally;
    for (size_t kilobytes = 16; kilobytes <= 8192; kilobytes = kilobytes * 5 / 4) {
        const test::TempDevice device;
        Child process([&] { return UseSmallDisk(device.Device(), kilobytes << 10, *tally); });
        const int found = process.Wait(kProcessTime * 5);
        if (found == kNotAllowed) {
            std::printf("no room for the store: NOT TRIED, this host lets nobody mount\n");
            return;
        }
        const bool roomy = kilobytes << 10 > size_t{kStoreSize} + 65536;
        Require(
            found == (roomy ? kServed : kRefused),
            "with " + std::to_string(kilobytes) + " KiB a process found " + std::to_string(found));
    }
    std::printf("no room for the store: %d sizes, %d refusals: %s\n", tally->rounds.load(),
                tally->refused.load(), tally->sentence);
}

void OtherNamespace() {
    const Shared<Tally> tally;
    const test::TempDevice device;
    Inhabitants inhabitants(tally->longest);
    Child stranger([&] {
        if (!Unshare(CLONE_NEWPID))
            return kNotAllowed;
        return UseAfresh(*tally) == kRefused ? 0 : 1;
    });
    const int status = stranger.Wait(kProcessTime);
    inhabitants.Stop();
    Require(inhabitants.Holder().Wait(kProcessTime) == kServed, "the holder lost its place");
    Require(inhabitants.Worker().Wait(kProcessTime) == kServed, "the worker lost its place");
    if (status == kNotAllowed) {
        std::printf("another namespace: NOT TRIED, this host lets nobody make one\n");
        return;
    }
    Require(status == 0, "a process of another namespace was served");
    std::printf("another namespace: refused, nobody lost its place: %s\n", tally->sentence);
}

}  // namespace
}  // namespace zelto::soak

int main(int argc, char** argv) {
    using namespace zelto::soak;
    const int count = argc == 2 ? std::atoi(argv[1]) : 0;
    if (count <= 0) {
        std::fprintf(stderr, "usage: store_file_soak COUNT\n");
        return 2;
    }
    return RunSoak([count] {
        Cut(count);
        Remove(count);
        FullDisk();
        OtherNamespace();
    });
}
