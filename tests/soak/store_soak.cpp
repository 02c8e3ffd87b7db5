// Damages words of the object store's tables beside living processes: none may end by it, and no
// call may wait for long.

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/coredll/linux/objects/store_layout.h"
#include "tests/soak/inhabitants.h"
#include "tests/support/temp_device.h"

namespace zelto::soak {
namespace {

constexpr double kLongestWait = 5;  // seconds that a call may take on a damaged device

using coredll::Store;

struct Span {
    size_t offset;
    size_t size;
    size_t weight;
};

// The parts of the store that the processes of a round use.
constexpr Span kUsed[] = {
    {0, 64, 1},
    {offsetof(Store, lock), 4, 1},
    {offsetof(Store, queue_top), 20, 4},
    {offsetof(Store, processes), 4 * sizeof(coredll::ProcessSlot), 10},
    {offsetof(Store, windows), 4 * sizeof(coredll::WindowSlot), 10},
    {offsetof(Store, ends), 12 * sizeof(coredll::EndSlot), 25},
    {offsetof(Store, queues), 4 * sizeof(coredll::QueueSlot), 25},
    {offsetof(Store, events), 3 * sizeof(coredll::EventSlot), 10},
    {offsetof(Store, rings), 256, 2},
    {offsetof(Store, blocks), 24 * sizeof(coredll::Block), 12},
};

struct Mutation {
    size_t offset;
    uint32_t value;
};

// A word of the span and what to write there: a number that tables fear, a changed bit, another
// word of the span.
Mutation ChooseMutation(const unsigned char* store, std::mt19937& random) {
    size_t weights = 0;
    for (const Span& span : kUsed)
        weights += span.weight;
    size_t choice = random() % weights;
    const Span* span = kUsed;
    for (; choice >= span->weight; ++span)
        choice -= span->weight;
    const auto word = [&] { return span->offset + random() % (span->size / 4) * 4; };
    const auto value_at = [&](size_t offset) {
        uint32_t value = 0;
        std::memcpy(&value, store + offset, sizeof value);
        return value;
    };
    static constexpr uint32_t kFeared[] = {0,     1,          2,          63,        64,   65,
                                           255,   256,        257,        1023,      1024, 16384,
                                           16385, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    const size_t place = word();
    switch (random() % 4) {
        case 0:
            return {place, kFeared[random() % std::size(kFeared)]};
        case 1:
            return {place, value_at(place) ^ (1u << random() % 32)};
        case 2:
            return {place, value_at(word())};
        default:
            return {place, static_cast<uint32_t>(random())};
    }
}

// The store's file, mapped by one who is not connected.
class RawStore {
  public:
    explicit RawStore(const std::string& path) {
        const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
        Require(file >= 0, "no store to damage");
        memory_ = mmap(nullptr, sizeof(Store), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        Require(memory_ != MAP_FAILED, "the store cannot be mapped");
    }
    RawStore(const RawStore&) = delete;
    RawStore& operator=(const RawStore&) = delete;
    ~RawStore() { munmap(memory_, sizeof(Store)); }

    unsigned char* Bytes() const { return static_cast<unsigned char*>(memory_); }

  private:
    void* memory_;
};

// What the processes of all rounds share.
struct Tally {
    Longest longest;
    std::atomic<int> served;
    std::atomic<int> refused;
    std::atomic<int> some_failed;
    std::atomic<int> crashed;
    std::atomic<int> endless;
};

// Waits for a process that a mutation may have ended; its status counts.
bool CountEnd(Child& child, Tally& tally, const char* who) {
    int status = 0;
    try {
        status = child.Wait(kProcessTime);
    } catch (const Failure&) {
        ++tally.endless;
        std::fprintf(stderr, "%s waits without end\n", who);
        return false;
    }
    switch (status) {
        case kServed:
            ++tally.served;
            return true;
        case kRefused:
            ++tally.refused;
            return true;
        case kSomeFailed:
            ++tally.some_failed;
            return true;
        default:
            ++tally.crashed;
            std::fprintf(stderr, "%s ended with %d\n", who, status);
            return false;
    }
}

void MutateRounds(int worker, int count, Tally& tally) {
    const test::TempDevice device;
    const std::string path = device.Device() + "/store";
    std::mt19937 random(static_cast<unsigned>(worker) + 1);
    for (int round = 0; round < count; ++round) {
        unlink(path.c_str());
        Inhabitants inhabitants(tally.longest);
        const RawStore raw(path);
        const Mutation mutation = ChooseMutation(raw.Bytes(), random);
        std::memcpy(raw.Bytes() + mutation.offset, &mutation.value, sizeof mutation.value);
        usleep(static_cast<useconds_t>(random() % 500));
        Child newcomer([&] { return UseDevice(tally.longest); });
        const bool first = CountEnd(newcomer, tally, "a newcomer");
        inhabitants.Stop();
        const bool second = CountEnd(inhabitants.Holder(), tally, "the holder");
        const bool third = CountEnd(inhabitants.Worker(), tally, "the worker");
        if (!first || !second || !third)
            std::fprintf(stderr, "  after word %#zx became %#x\n", mutation.offset, mutation.value);
    }
}

void Mutations(int count) {
    const Stopwatch watch;
    const Shared<Tally> tally;
    InWorkers(count, [&](int worker, int rounds) { MutateRounds(worker, rounds, *tally); });
    std::printf(
        "mutations: %d in %.0f s; of 3 processes each: served %d, refused %d, some calls "
        "failed %d, crashed %d, endless %d; longest call %.0f ms\n",
        count, watch.Seconds(), tally->served.load(), tally->refused.load(),
        tally->some_failed.load(), tally->crashed.load(), tally->endless.load(),
        tally->longest.Milliseconds());
    Require(tally->crashed.load() == 0 && tally->endless.load() == 0,
            "a damaged store ended processes or kept them waiting");
    Require(tally->longest.Milliseconds() < kLongestWait * 1000, "a call took too long");
}

}  // namespace
}  // namespace zelto::soak

int main(int argc, char** argv) {
    using namespace zelto::soak;
    const int count = argc == 2 ? std::atoi(argv[1]) : 0;
    if (count > 0)
        return RunSoak([count] { Mutations(count); });
    std::fprintf(stderr, "usage: store_soak COUNT\n");
    return 2;
}
