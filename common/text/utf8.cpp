#include "common/text/utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "common/text/ascii_run.h"

namespace zelto {
namespace {

constexpr unsigned kFirstSurrogate = 0xD800;
constexpr unsigned kFirstLowSurrogate = 0xDC00;
constexpr WCHAR kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(unsigned unit) {
    return (unit & 0xFC00) == kFirstSurrogate;
}

constexpr bool IsLowSurrogate(unsigned unit) {
    return (unit & 0xFC00) == kFirstLowSurrogate;
}

// The count as a result, when it and a NUL behind it can be counted.
int Result(int64_t count) {
    return count < std::numeric_limits<int>::max() ? static_cast<int>(count) : 0;
}

int64_t MeasureUtf8(const WCHAR* text, int count) {
    int64_t bytes = 0;
    for (int i = 0; i < count; ++i) {
        const unsigned unit = text[i];
        bytes += 1 + (unit >= 0x80 ? 1 : 0) + (unit >= 0x800 ? 1 : 0) + IsHighSurrogate(unit);
    }
    return bytes;
}

// Writes an encoded text; what does not fit is counted only.
class Utf8Writer {
  public:
    Utf8Writer(const WCHAR* text, int count, char* out, int out_size)
        : at_(text), end_(text + count), out_(out), size_(out_size) {}

    int64_t Write() {
        WriteBlocks();
        while (at_ < end_)
            WriteNext<true>();
        if (bytes_ <= size_)
            out_[bytes_] = 0;
        return bytes_;
    }

  private:
    // As long as there is room for whatever a block may hold.
    void WriteBlocks() {
        while (end_ - at_ >= kAsciiBlock && size_ - bytes_ >= 4 * kAsciiBlock) {
            if (CopyAsciiBlock(at_, out_ + bytes_)) {
                at_ += kAsciiBlock;
                bytes_ += kAsciiBlock;
                continue;
            }
            for (const WCHAR* block_end = at_ + kAsciiBlock; at_ < block_end;)
                WriteNext<false>();
        }
    }

    template <bool kCheckRoom>
    void WriteNext() {
        const unsigned unit = *at_++;
        if (unit < 0x80)
            Put<kCheckRoom>(unit);
        else if (unit < 0x800)
            Put<kCheckRoom>(0xC0 | unit >> 6, Tail(unit));
        else if (!IsHighSurrogate(unit))
            Put<kCheckRoom>(0xE0 | unit >> 12, Tail(unit >> 6), Tail(unit));
        else if (kCheckRoom && size_ - bytes_ < 4)
            bytes_ += 4;
        else if (at_ < end_ && IsLowSurrogate(*at_))
            PutPair(unit, *at_++);
        else
            Put<kCheckRoom>('?');
    }

    void PutPair(unsigned high, unsigned low) {
        Put<false>(0xF3, Tail(high >> 2), Tail((high & 3) | low >> 6), Tail(low));
    }

    static unsigned Tail(unsigned bits) { return 0x80 | (bits & 0x3F); }

    template <bool kCheckRoom, class... Bytes>
    void Put(Bytes... bytes) {
        int64_t to = bytes_;
        bytes_ += sizeof...(bytes);
        if (!kCheckRoom || bytes_ <= size_)
            ((out_[to++] = static_cast<char>(bytes)), ...);
    }

    const WCHAR* at_;
    const WCHAR* end_;
    char* out_;
    int64_t size_;
    int64_t bytes_ = 0;
};

struct Decoded {
    int taken;
    unsigned value;  // a unit, or a character beyond U+FFFF
};

class Utf8Reader {
  public:
    Utf8Reader(const char* text, int count)
        : at_(reinterpret_cast<const unsigned char*>(text)), end_(at_ + count) {}

    bool AtEnd() const { return at_ == end_; }
    ptrdiff_t Left() const { return end_ - at_; }
    const unsigned char* Position() const { return at_; }
    void Skip(ptrdiff_t count) { at_ += count; }

    unsigned Next() {
        const unsigned lead = *at_;
        if (lead < 0x80) {
            ++at_;
            return lead;
        }
        const Decoded decoded = Sequence(lead);
        at_ += decoded.taken;
        return decoded.value;
    }

  private:
    static constexpr bool IsBetween(unsigned byte, unsigned first, unsigned last) {
        return byte - first <= last - first;
    }
    // A byte that may continue a sequence: its six bits. Otherwise 64 or more.
    unsigned TailAt(int i) const { return i < Left() ? at_[i] ^ 0x80U : 0x80; }

    Decoded Sequence(unsigned lead) const {
        const unsigned second = TailAt(1);
        if (!IsBetween(lead, 0xC2, 0xF4) || !MayFollow(lead, second))
            return {1, kReplacement};
        if (lead < 0xE0)
            return {2, (lead & 0x1F) << 6 | second};
        const unsigned third = TailAt(2);
        if (third > 0x3F)
            return {2, kReplacement};
        if (lead < 0xF0)
            return {3, (lead & 0x0F) << 12 | second << 6 | third};
        const unsigned fourth = TailAt(3);
        if (fourth > 0x3F)
            return {3, kReplacement};
        if (lead == 0xF3 && third >= 0x30)
            return {4, PrivatePair(second, third, fourth)};
        return {4, (lead & 7) << 18 | second << 12 | third << 6 | fourth};
    }

    // No longer form than needed, nothing above U+10FFFF.
    static bool MayFollow(unsigned lead, unsigned second) {
        switch (lead) {
            case 0xE0:
                return IsBetween(second, 0x20, 0x3F);
            case 0xF0:
                return IsBetween(second, 0x10, 0x3F);
            case 0xF4:
                return second <= 0x0F;
            default:
                return second <= 0x3F;
        }
    }

    static unsigned PrivatePair(unsigned second, unsigned third, unsigned fourth) {
        const unsigned high = second << 2 | (third & 3);
        const unsigned low = (third & 0x0C) << 6 | fourth;
        return 0x10000 + (high << 10 | low);
    }

    const unsigned char* at_;
    const unsigned char* end_;
};

// Writes decoded units; what does not fit is counted only, and so is all without an output.
class WideWriter {
  public:
    WideWriter(WCHAR* out, int out_size) : out_(out), size_(out_size) {}

    int64_t Room() const { return size_ - units_; }
    WCHAR* Position() const { return out_ + units_; }
    void Skip(ptrdiff_t count) { units_ += count; }

    void Put(unsigned value) {
        if (value < 0x10000) {
            if (units_ < size_)
                out_[units_] = static_cast<WCHAR>(value);
            ++units_;
            return;
        }
        if (units_ + 1 < size_) {
            value -= 0x10000;
            out_[units_] = static_cast<WCHAR>(kFirstSurrogate + (value >> 10));
            out_[units_ + 1] = static_cast<WCHAR>(kFirstLowSurrogate + (value & 0x3FF));
        }
        units_ += 2;
    }

    int64_t Finish() {
        if (out_ != nullptr && units_ <= size_)
            out_[units_] = 0;
        return units_;
    }

  private:
    WCHAR* out_;
    int64_t size_;
    int64_t units_ = 0;
};

}  // namespace

int EncodeUtf8(const WCHAR* text, int count, char* out, int out_size) {
    if (out == nullptr)
        return Result(MeasureUtf8(text, count));
    return Result(Utf8Writer(text, count, out, out_size).Write());
}

int DecodeUtf8(const char* text, int count, WCHAR* out, int out_size) {
    Utf8Reader reader(text, count);
    WideWriter writer(out, out != nullptr ? out_size : 0);
    while (!reader.AtEnd()) {
        const ptrdiff_t block = std::min(reader.Left(), kAsciiBlock);
        if (block == kAsciiBlock && writer.Room() >= kAsciiBlock &&
            CopyAsciiBlock(reader.Position(), writer.Position())) {
            reader.Skip(kAsciiBlock);
            writer.Skip(kAsciiBlock);
            continue;
        }
        for (const unsigned char* end = reader.Position() + block; reader.Position() < end;)
            writer.Put(reader.Next());
    }
    return Result(writer.Finish());
}

}  // namespace zelto
