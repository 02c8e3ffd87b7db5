// The string's block: header, room, direct access.

#include "common/text/dstring.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <new>

#include "common/text/codepage.h"

namespace zelto {
namespace {

// Loads and stores only: no atomic addition, since an exact sum over threads is not asked for.
std::atomic<int32_t> g_memory_in_use;

void CountMemory(int32_t change) {
    const int32_t sum = g_memory_in_use.load(std::memory_order_relaxed);
    g_memory_in_use.store(sum + change, std::memory_order_relaxed);
}

constexpr int kFirstSlack = 13;
constexpr int kSpare = 2;  // behind a block that has grown

}  // namespace

const char DString::kNoText[] = "";

DString::~DString() {
    if (text_ == nullptr)
        return;
    CountMemory(-header().capacity);
    ::operator delete(&header());
}

void DString::measure() {
    if (header().length != kUnknown)
        header().length = static_cast<int32_t>(std::strlen(text_));
}

int DString::length() const {
    if (text_ == nullptr)
        return 0;
    const int32_t known = header().length;
    return known != kUnknown ? known : static_cast<int>(std::strlen(text_));
}

char DString::operator[](int index) const {
    return index >= 0 && index < length() ? text_[index] : char{0};
}

signed char DString::last_char() const {
    const int count = length();
    return count > 0 ? static_cast<signed char>(text_[count - 1]) : static_cast<signed char>(0);
}

int DString::capacity() const {
    return text_ != nullptr ? header().capacity : 0;
}

int32_t DString::codepage() const {
    const int32_t tag = text_ != nullptr ? header().codepage : 0;
    return tag != 0 ? tag : CurrentCodepage();
}

int DString::decimals() const {
    return text_ != nullptr ? header().decimals : 1;
}

int32_t DString::memory_in_use() {
    return g_memory_in_use.load(std::memory_order_relaxed);
}

void DString::reserve(int n, bool slack) {
    if (n < 0)
        return;
    const int64_t need = int64_t{n} + (slack ? kSlack : 0);
    if (text_ == nullptr)
        allocate(need + (slack ? kFirstSlack : 0));
    else if (need > header().capacity)
        grow(need);
}

// The last text byte is NUL from the start and no operation writes it but as a NUL: a text whose
// writer left out the terminator ends within its block.
void DString::allocate(int64_t capacity) {
    if (capacity > std::numeric_limits<int32_t>::max())
        throw std::bad_alloc();
    const auto bytes = static_cast<size_t>(std::max<int64_t>(capacity, 1));
    void* block = ::operator new(sizeof(Header) + bytes);
    new (block)
        Header{0, static_cast<int32_t>(capacity), static_cast<uint16_t>(CurrentCodepage()), 1};
    text_ = static_cast<char*>(block) + sizeof(Header);
    text_[0] = 0;
    text_[bytes - 1] = 0;
    CountMemory(header().capacity);
}

void DString::grow(int64_t need) {
    const int64_t capacity = need * 3 / 2 + 11;
    if (capacity > std::numeric_limits<int32_t>::max())
        throw std::bad_alloc();
    Header& old = header();
    const auto bytes = static_cast<size_t>(capacity);
    void* block = ::operator new(sizeof(Header) + bytes + kSpare);
    new (block) Header{length(), static_cast<int32_t>(capacity), old.codepage, old.decimals};
    char* text = static_cast<char*>(block) + sizeof(Header);
    std::memcpy(text, text_, static_cast<size_t>(std::max(old.capacity, 1)));
    std::memset(text + bytes - 1, 0, 1 + kSpare);
    CountMemory(static_cast<int32_t>(capacity) - old.capacity);
    ::operator delete(&old);
    text_ = text;
}

char* DString::buffer(int n) {
    constexpr int kMost = std::numeric_limits<int>::max();
    reserve(n < kMost - 10 ? n + 10 : kMost, true);
    if (text_ != nullptr)
        header().length = kUnknown;
    return text_;
}

char* DString::at(int n) {
    if (n < 0)
        throw "Error DString n<0";
    reserve(n < std::numeric_limits<int>::max() ? n + 1 : n, true);
    header().length = kUnknown;
    return text_ + n;
}

void DString::set_codepage(int32_t codepage) {
    reserve(1, true);
    if (codepage >= 0)
        header().codepage = static_cast<uint16_t>(codepage);
}

void DString::set_decimals(int decimals) {
    reserve(1, true);
    header().decimals = static_cast<int16_t>(decimals);
}

}  // namespace zelto
