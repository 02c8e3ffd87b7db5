#include "tools/text/wide.h"

#include <fmt/core.h>

#include "platform/coredll/coredll.h"

namespace zelto::tools {
namespace {

unsigned ByteAt(std::string_view text, size_t index) {
    return static_cast<unsigned char>(text[index]);
}

// What the first byte promises.
size_t SizeByLead(unsigned lead) {
    if (lead < 0x80)
        return 1;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

// Units that the text takes in `wide` (of `room` units; 0 to measure), 0 where it is not UTF-8.
int Convert(std::string_view text, char16_t* wide, int room) {
    return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                               static_cast<int>(text.size()), wide, room);
}

int Convert(std::u16string_view wide, char* text, int room) {
    return WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), text, room,
                               nullptr, nullptr);
}

// U+0000 to U+001F and U+007F to U+009F, the latter from U+0080 on in two bytes.
bool IsControl(std::string_view character) {
    const unsigned last = ByteAt(character, character.size() - 1);
    if (character.size() == 1)
        return last < 0x20 || last == 0x7F;
    return ByteAt(character, 0) == 0xC2 && last < 0xA0;
}

}  // namespace

size_t Utf8CharacterSize(std::string_view text) {
    const size_t size = text.empty() ? 1 : SizeByLead(ByteAt(text, 0));
    return text.size() >= size && IsUtf8(text.substr(0, size)) ? size : 0;
}

bool IsUtf8(std::string_view text) {
    return text.empty() || Convert(text, nullptr, 0) > 0;
}

bool WideFromUtf8(std::string_view text, std::u16string& wide) {
    if (!IsUtf8(text))
        return false;
    wide.resize(text.size());  // enough: no byte becomes more than one unit
    wide.resize(text.empty() ? 0
                             : static_cast<size_t>(
                                   Convert(text, wide.data(), static_cast<int>(wide.size()))));
    return true;
}

std::string Utf8FromWide(std::u16string_view wide) {
    std::string text(wide.empty() ? 0 : static_cast<size_t>(Convert(wide, nullptr, 0)), '\0');
    if (!text.empty())
        Convert(wide, text.data(), static_cast<int>(text.size()));
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
        const std::string_view taken = text.substr(0, size == 0 ? 1 : size);
        if (taken == "\n") {
            line += "\\n";
        } else if (size != 0 && !IsControl(taken)) {
            line += taken;
        } else {
            for (const char byte : taken)
                line += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
        }
        text.remove_prefix(taken.size());
    }
    return line;
}

}  // namespace zelto::tools
