// Any bytes as UTF-8: the counts hold, nothing is written beyond the room, and what was decoded is
// encoded to bytes that decode to the same text.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/text/utf8.h"

using namespace zelto;

namespace {

std::u16string Decode(const std::string& bytes, size_t room) {
    std::u16string units(room + 1, u'#');
    const int count = DecodeUtf8(bytes.data(), static_cast<int>(bytes.size()), units.data(),
                                 static_cast<int>(room));
    if (count < 0 || static_cast<size_t>(count) > bytes.size())
        std::abort();
    units.resize(std::min(static_cast<size_t>(count), room));
    return units;
}

std::string Encode(const std::u16string& units) {
    const int size = static_cast<int>(units.size());
    const int most = EncodeUtf8(units.data(), size, nullptr, 0);
    std::string bytes(static_cast<size_t>(most) + 1, '#');
    const int count = EncodeUtf8(units.data(), size, bytes.data(), most);
    if (count > most)
        std::abort();
    bytes.resize(static_cast<size_t>(count));
    return bytes;
}

}  // namespace

// The first byte takes that much off the room.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || size > 1'000'000)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::u16string units = Decode(bytes, bytes.size());
    Decode(bytes, bytes.size() - std::min<size_t>(bytes.size(), data[0]));
    const std::string encoded = Encode(units);
    const std::u16string again = Decode(encoded, encoded.size());
    if (Encode(again) != encoded)
        std::abort();
    return 0;
}
