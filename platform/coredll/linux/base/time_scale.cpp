#include "platform/coredll/linux/base/time_scale.h"

#include <cstdlib>

namespace zelto::coredll {
namespace {

int ReadTimeScale() {
    const char* text = std::getenv("ZELTO_TIME_SCALE");
    char* end = nullptr;
    const long scale = text != nullptr ? std::strtol(text, &end, 10) : 1;
    const bool good = text != nullptr && end != text && *end == '\0' && scale >= 1;
    return good && scale <= kMaxTimeScale ? static_cast<int>(scale) : 1;
}

}  // namespace

int TimeScale() {
    static const int scale = ReadTimeScale();
    return scale;
}

int64_t ScaledWait(uint32_t milliseconds) {
    constexpr int64_t kNanosecondsPerMillisecond = 1'000'000;
    return milliseconds * kNanosecondsPerMillisecond / TimeScale();
}

}  // namespace zelto::coredll
