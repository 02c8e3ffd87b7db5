#include "platform/coredll/linux/registry/kept_registry.h"

#include <mutex>
#include <string>

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/registry/registry_file.h"

namespace zelto::coredll {
namespace {

// Two writes within one tick of the host's clock leave the same time on a file, so what was read
// from one written just now is not kept. Some ticks of the slowest clock, 100 Hz.
constexpr int64_t kUnsettled = 50'000'000;  // ns

int64_t Nanoseconds(const timespec& time) {
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// A time in the future says nothing of the order of writes.
bool IsSettled(const struct stat& status) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return Nanoseconds(now) - Nanoseconds(status.st_ctim) > kUnsettled;
}

class KeptRegistry {
  public:
    DWORD Read(std::shared_ptr<const Registry>& registry) {
        const std::lock_guard lock(mutex_);
        if (kept_ == nullptr || !IsDevicePath(device_) || !FileIsSame() || !DeviceIsSame()) {
            device_ = DevicePath();
            const DWORD error = Load();
            if (error != ERROR_SUCCESS)
                return error;
        }
        registry = kept_;
        if (!keep_)
            kept_.reset();
        return ERROR_SUCCESS;
    }

  private:
    // The open file has no name left once another was put in its place.
    bool FileIsSame() const {
        struct stat now {};
        return fstat(source_.file.Get(), &now) == 0 && now.st_nlink != 0 &&
               now.st_dev == source_.status.st_dev && now.st_ino == source_.status.st_ino &&
               now.st_size == source_.status.st_size &&
               Nanoseconds(now.st_ctim) == Nanoseconds(source_.status.st_ctim);
    }

    bool DeviceIsSame() {
        const int64_t tick = CoarseNanoseconds();
        const bool same = tick == looked_ || IsRegistryFile(source_.status);
        looked_ = tick;
        return same;
    }

    DWORD Load() {
        auto fresh = std::make_shared<Registry>();
        kept_.reset();
        source_ = {};
        looked_ = CoarseNanoseconds();
        const DWORD error = LoadRegistry(*fresh, source_);
        if (error == ERROR_SUCCESS)
            kept_ = std::move(fresh);
        keep_ = source_.file.IsOpen() && IsSettled(source_.status);
        return error;
    }

    std::mutex mutex_;
    std::string device_;  // guarded by mutex_, as all below
    RegistrySource source_;
    int64_t looked_ = 0;  // coarse clock
    bool keep_ = false;   // beyond the call that reads it
    std::shared_ptr<const Registry> kept_;
};

KeptRegistry g_registry;

}  // namespace

DWORD ReadRegistry(std::shared_ptr<const Registry>& registry) {
    return g_registry.Read(registry);
}

}  // namespace zelto::coredll
