#include "platform/coredll/api/nls.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/unicode.h"
#include "platform/coredll/linux/text/codepages.h"

namespace {

using namespace zelto::coredll;

constexpr UINT kAnsiPage = 1252;
constexpr UINT kOemPage = 437;

// The target: what fits of it. Without room it counts only.
template <class Unit>
class Output {
  public:
    Output(Unit* target, int size) : target_(target), room_(static_cast<size_t>(size)) {}

    // All of the units, at least one, or none when they do not fit.
    bool Put(const Unit* units, size_t count) {
        if (room_ != 0) {
            if (room_ - used_ < count)
                return false;
            Unit* to = target_ + used_;
            to[0] = units[0];
            for (size_t i = 1; i < count; ++i)
                to[i] = units[i];
        }
        used_ += count;
        return true;
    }

    // As much of the text's beginning as is ASCII and fits; returns how much that is.
    template <class Source>
    size_t PutAscii(std::basic_string_view<Source> text) {
        const size_t most = room_ == 0 ? text.size() : std::min(text.size(), room_ - used_);
        if (most == 0 || !IsAscii(text[0]))
            return 0;
        size_t done = 0;
        for (; done + kChunk <= most && IsAsciiChunk(text.data() + done); done += kChunk)
            Copy(text.data() + done, kChunk, done);
        size_t last = done;
        while (last < most && IsAscii(text[last]))
            ++last;
        Copy(text.data() + done, last - done, done);
        used_ += last;
        return last;
    }

    // The call's result.
    int Count() const {
        return used_ <= INT_MAX ? static_cast<int>(used_) : Fail(ERROR_INVALID_PARAMETER, 0);
    }

  private:
    static constexpr size_t kChunk = 16;

    template <class Source>
    static bool IsAscii(Source unit) {
        return static_cast<std::make_unsigned_t<Source>>(unit) < 0x80;
    }

    template <class Source>
    static bool IsAsciiChunk(const Source* units) {
        unsigned all = 0;
        for (size_t i = 0; i < kChunk; ++i)
            all |= static_cast<std::make_unsigned_t<Source>>(units[i]);
        return all < 0x80;
    }

    template <class Source>
    void Copy(const Source* units, size_t count, size_t at) {
        if (room_ == 0)
            return;
        Unit* to = target_ + used_ + at;
        for (size_t i = 0; i < count; ++i)
            to[i] = static_cast<Unit>(units[i]);
    }

    Unit* target_;
    size_t room_;
    size_t used_ = 0;
};

// UTF-8 in the shape of a CodePage.
struct Utf8Page {
    static Taken Take(const unsigned char* bytes, size_t left) { return TakeUtf8(bytes, left); }
    static WCHAR StandIn(unsigned char /*byte*/) { return kReplacement; }
};

// What stands for a character that the page lacks.
struct Default {
    unsigned char bytes[2];
    size_t count;
};

Default DefaultFor(const CodePage& page, const char* text) {
    if (text == nullptr)
        return {{'?', 0}, 1};
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    const bool pair = page.IsLead(bytes[0]) && bytes[1] != 0;
    return {{bytes[0], pair ? bytes[1] : uint8_t{0}}, pair ? size_t{2} : size_t{1}};
}

// What was written for the units at the front of a text.
struct Written {
    size_t units;
    size_t bytes;
    bool is_default;
};

// Unit by unit: either half of a surrogate pair is a character that the page lacks.
Written Encode(const CodePage& page, std::u16string_view source, const Default& missing,
               unsigned char* out) {
    const size_t count = page.Put(source[0], out);
    if (count != 0)
        return {1, count, false};
    std::memcpy(out, missing.bytes, missing.count);
    return {1, missing.count, true};
}

Written Encode(const Utf8Page& /*page*/, std::u16string_view source, const Default& /*missing*/,
               unsigned char* out) {
    const Taken taken = TakeUtf16(source.data(), source.size());
    const char32_t value = taken.value == kNoCharacter ? kReplacement : taken.value;
    return {taken.used, PutUtf8(value, out), false};
}

template <class Page>
int Narrow(const Page& page, std::u16string_view source, const Default& missing, BOOL* used_default,
           Output<char> output) {
    BOOL used = FALSE;
    bool fits = true;
    for (;;) {
        source.remove_prefix(output.PutAscii(source));
        if (source.empty())
            break;
        unsigned char bytes[4];
        const Written written = Encode(page, source, missing, bytes);
        fits = output.Put(reinterpret_cast<const char*>(bytes), written.bytes);
        if (!fits)
            break;
        if (written.is_default)
            used = TRUE;
        source.remove_prefix(written.units);
    }
    if (used_default != nullptr)
        *used_default = used;
    return fits ? output.Count() : Fail(ERROR_INSUFFICIENT_BUFFER, 0);
}

template <class Page>
int Widen(const Page& page, std::string_view source, bool strict, Output<WCHAR> output) {
    for (;;) {
        source.remove_prefix(output.PutAscii(source));
        if (source.empty())
            return output.Count();
        const auto* bytes = reinterpret_cast<const unsigned char*>(source.data());
        const Taken taken = page.Take(bytes, source.size());
        const bool bad = taken.value == kNoCharacter;
        if (bad && strict)
            return Fail(ERROR_NO_UNICODE_TRANSLATION, 0);
        WCHAR units[2];
        const size_t count = PutUtf16(bad ? page.StandIn(bytes[0]) : taken.value, units);
        if (!output.Put(units, count))
            return Fail(ERROR_INSUFFICIENT_BUFFER, 0);
        source.remove_prefix(taken.used);
    }
}

// The source as far as `count` tells, its NUL included when the count is negative.
template <class Unit>
std::basic_string_view<Unit> SourceText(const Unit* source, int count) {
    const size_t length =
        count < 0 ? std::char_traits<Unit>::length(source) + 1 : static_cast<size_t>(count);
    return {source, length};
}

bool GoodArguments(const void* source, int count, const void* target, int size) {
    if (source == nullptr || count == 0 || size < 0)
        return false;
    return size == 0 || (target != nullptr && target != source);
}

UINT PageNumber(UINT code_page) {
    switch (code_page) {
        case CP_ACP:
            return kAnsiPage;
        case CP_OEMCP:
            return kOemPage;
        default:
            return code_page;
    }
}

}  // namespace

int WideCharToMultiByte(UINT code_page, DWORD flags, const WCHAR* source, int count, char* target,
                        int size, const char* default_char, BOOL* used_default) {
    if (!GoodArguments(source, count, target, size))
        return Fail(ERROR_INVALID_PARAMETER, 0);
    const bool utf8 = code_page == CP_UTF8;
    const CodePage* page = utf8 ? nullptr : FindCodePage(PageNumber(code_page));
    const bool has_default = default_char != nullptr || used_default != nullptr;
    if (utf8 ? has_default : page == nullptr)
        return Fail(ERROR_INVALID_PARAMETER, 0);
    if (flags != 0)
        return Fail(ERROR_INVALID_FLAGS, 0);
    const std::u16string_view text = SourceText(source, count);
    const Output<char> output(target, size);
    if (utf8)
        return Narrow(Utf8Page{}, text, {}, nullptr, output);
    return Narrow(*page, text, DefaultFor(*page, default_char), used_default, output);
}

int MultiByteToWideChar(UINT code_page, DWORD flags, const char* source, int count, WCHAR* target,
                        int size) {
    if (!GoodArguments(source, count, target, size))
        return Fail(ERROR_INVALID_PARAMETER, 0);
    const bool utf8 = code_page == CP_UTF8;
    const CodePage* page = utf8 ? nullptr : FindCodePage(PageNumber(code_page));
    if (!utf8 && page == nullptr)
        return Fail(ERROR_INVALID_PARAMETER, 0);
    const DWORD offered = MB_ERR_INVALID_CHARS | (utf8 ? 0U : DWORD{MB_PRECOMPOSED});
    if ((flags & ~offered) != 0)
        return Fail(ERROR_INVALID_FLAGS, 0);
    const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
    const std::string_view text = SourceText(source, count);
    const Output<WCHAR> output(target, size);
    return utf8 ? Widen(Utf8Page{}, text, strict, output) : Widen(*page, text, strict, output);
}
