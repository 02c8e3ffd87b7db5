// The growable list of texts that a split fills.

#ifndef ZELTO_COMMON_TEXT_FIELD_LIST_H
#define ZELTO_COMMON_TEXT_FIELD_LIST_H

#include <cstdint>
#include <deque>

#include "common/text/dstring.h"

namespace zelto {

// Owns its texts. A reference to a field holds until the list is cleared or destroyed, however
// much the list grows. An index outside 0 .. Count() - 1 is the caller's error.
// Thread safety: none; a list is used by one thread at a time.
class FieldList {
  public:
    int32_t Count() const { return static_cast<int32_t>(fields_.size()); }
    DString& operator[](int32_t i) { return fields_[static_cast<size_t>(i)]; }
    const DString& operator[](int32_t i) const { return fields_[static_cast<size_t>(i)]; }

    DString& Append() { return fields_.emplace_back(); }
    void Clear() { fields_.clear(); }

    auto begin() const { return fields_.begin(); }
    auto end() const { return fields_.end(); }

  private:
    std::deque<DString> fields_;
};

}  // namespace zelto

#endif
