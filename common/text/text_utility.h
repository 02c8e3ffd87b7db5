// The process-wide state of the text utilities.

#ifndef ZELTO_COMMON_TEXT_TEXT_UTILITY_H
#define ZELTO_COMMON_TEXT_TEXT_UTILITY_H

#include <cstdint>
#include <memory>

#include "common/sys/sync.h"

namespace zelto {

// Thread safety: the lock is what other threads may use.
struct TextUtility {
    int32_t first_word = 0;
    std::unique_ptr<Lock> lock = std::make_unique<Lock>();
    int32_t last_word = 0;
};

}  // namespace zelto

#endif
