#include "tools/text/wide.h"

#include <fmt/core.h>

namespace zelto::tools {

namespace {

unsigned ByteAt(std::string_view text, size_t index) {
    return static_cast<unsigned char>(text[index]);
}

// The character of `size` bytes at the front, size already checked.
char32_t Decode(std::string_view text, size_t size) {
    if (size == 1)
        return ByteAt(text, 0);
    char32_t value = ByteAt(text, 0) & (0x7Fu >> size);
    for (size_t i = 1; i < size; ++i)
        value = value << 6 | (ByteAt(text, i) & 0x3F);
    return value;
}

void AppendWide(char32_t value, std::u16string& wide) {
    if (value < 0x10000) {
        wide += static_cast<char16_t>(value);
        return;
    }
    wide += static_cast<char16_t>(0xD7C0 + (value >> 10));
    wide += static_cast<char16_t>(0xDC00 | (value & 0x3FF));
}

void AppendUtf8(char32_t value, std::string& text) {
    if (value < 0x80) {
        text += static_cast<char>(value);
        return;
    }
    const int tail = value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
    text += static_cast<char>((0xFF00u >> (tail + 1) & 0xFF) | value >> (6 * tail));
    for (int i = tail - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | (value >> (6 * i) & 0x3F));
}

bool IsSurrogate(char32_t value) {
    return value >= 0xD800 && value < 0xE000;
}

}  // namespace

size_t Utf8CharacterSize(std::string_view text) {
    if (text.empty())
        return 0;
    const unsigned lead = ByteAt(text, 0);
    if (lead < 0x80)
        return 1;
    const size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < size)
        return 0;
    for (size_t i = 1; i < size; ++i) {
        if ((ByteAt(text, i) & 0xC0) != 0x80)
            return 0;
    }
    const char32_t value = Decode(text, size);
    const char32_t least = size == 2 ? 0x80 : size == 3 ? 0x800 : 0x10000;
    return value < least || value > 0x10FFFF || IsSurrogate(value) ? 0 : size;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t size = Utf8CharacterSize(text);
        if (size == 0)
            return false;
        text.remove_prefix(size);
    }
    return true;
}

bool WideFromUtf8(std::string_view text, std::u16string& wide) {
    if (!IsUtf8(text))
        return false;
    wide.clear();
    while (!text.empty()) {
        const size_t size = Utf8CharacterSize(text);
        AppendWide(Decode(text, size), wide);
        text.remove_prefix(size);
    }
    return true;
}

std::string Utf8FromWide(std::u16string_view wide) {
    std::string text;
    for (size_t i = 0; i < wide.size(); ++i) {
        char32_t value = wide[i];
        if (value < 0xDC00 && IsSurrogate(value) && i + 1 < wide.size() &&
            (wide[i + 1] & 0xFC00) == 0xDC00)
            value = 0x10000 + ((value & 0x3FF) << 10) + (wide[++i] & 0x3FFu);
        AppendUtf8(IsSurrogate(value) ? 0xFFFD : value, text);
    }
    return text;
}

std::string_view CutUtf8(std::string_view text, size_t limit) {
    if (text.size() <= limit)
        return text;
    while (limit > 0 && (ByteAt(text, limit) & 0xC0) == 0x80)
        --limit;
    return text.substr(0, limit);
}

std::string Printable(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const size_t size = Utf8CharacterSize(text);
        const char32_t value = size == 0 ? 0 : Decode(text, size);
        const bool control = value < 0x20 || (value >= 0x7F && value < 0xA0);
        const size_t taken = size == 0 ? 1 : size;
        if (value == '\n')
            line += "\\n";
        else if (!control)
            line += text.substr(0, taken);
        else
            for (size_t i = 0; i < taken; ++i)
                line += fmt::format("\\x{:02x}", ByteAt(text, i));
        text.remove_prefix(taken);
    }
    return line;
}

}  // namespace zelto::tools
