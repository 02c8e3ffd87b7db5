#include "tests/soak/inhabitants.h"

#include <unistd.h>

#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_report.h"

namespace zelto::soak {

Found UseDevice(Longest& longest) {
    if (!coredll::StoreProblem().empty())
        return kRefused;
    coredll::StoreReport report;
    coredll::DescribeStore(report, nullptr);
    const int failed = MakeEveryCall(longest);
    coredll::CloseStore();
    return failed == 0 ? kServed : kSomeFailed;
}

Inhabitants::Inhabitants(Longest& longest)
    : holder_([&] { return Hold(longest); }), worker_([&] { return Work(longest); }) {
    const Stopwatch watch;
    while (flags_->ready.load() < 2) {
        Require(watch.Seconds() < kProcessTime, "the device could not be used");
        usleep(100);
    }
}

int Inhabitants::Hold(Longest& longest) {
    LeaveObjects();
    ++flags_->ready;
    while (!flags_->stop.load())
        usleep(200);
    return UseDevice(longest);
}

int Inhabitants::Work(Longest& longest) {
    MakeEveryCall(longest);
    ++flags_->ready;
    while (!flags_->stop.load())
        MakeEveryCall(longest);
    return UseDevice(longest);
}

}  // namespace zelto::soak
