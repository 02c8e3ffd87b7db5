#include "platform/coredll/linux/paths.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

#include "platform/coredll/linux/last_error.h"

namespace zelto::coredll {
namespace {

constexpr std::u16string_view kForbidden = u"<>:\"|?*";
constexpr char16_t kEscapedByte = 0xDC00;  // + the byte, 0x80 to 0xFF

bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

bool IsEscapedByte(char16_t unit) {
    return unit >= kEscapedByte + 0x80 && unit <= kEscapedByte + 0xFF;
}

void AppendUtf8(char32_t value, std::string& out) {
    const auto append = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (value < 0x80) {
        append(value);
        return;
    }
    if (value < 0x800) {
        append(0xC0 | (value >> 6));
    } else {
        if (value < 0x10000) {
            append(0xE0 | (value >> 12));
        } else {
            append(0xF0 | (value >> 18));
            append(0x80 | ((value >> 12) & 0x3F));
        }
        append(0x80 | ((value >> 6) & 0x3F));
    }
    append(0x80 | (value & 0x3F));
}

// Length and value of the UTF-8 character at the front; length 0 when there is none.
size_t DecodeUtf8(std::string_view text, char32_t& value) {
    const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        value = lead;
        return 1;
    }
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return 0;
    value = lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
        value = (value << 6) | (byte(i) & 0x3F);
    }
    const bool surrogate = value >= 0xD800 && value < 0xE000;
    return value < kLeast[length] || value > 0x10FFFF || surrogate ? 0 : length;
}

// Units before the NUL, MAX_PATH for a name of that length and more.
size_t BoundedLength(LPCWSTR name) {
    size_t length = 0;
    while (length < MAX_PATH && name[length] != 0)
        ++length;
    return length;
}

DWORD CheckedName(LPCWSTR name, std::u16string_view& text) {
    if (name == nullptr)
        return ERROR_INVALID_PARAMETER;
    text = std::u16string_view(name, BoundedLength(name));
    if (text.empty())
        return ERROR_PATH_NOT_FOUND;
    return text.size() >= MAX_PATH ? ERROR_FILENAME_EXCED_RANGE : ERROR_SUCCESS;
}

DWORD ToHost(std::u16string_view text, std::string& path) {
    std::string name;
    if (!NarrowName(text, name))
        return ERROR_INVALID_NAME;
    std::replace(name.begin(), name.end(), '\\', '/');
    path = name.starts_with('/') ? name : "/" + name;
    return ERROR_SUCCESS;
}

bool IsFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

DWORD HostPath(LPCWSTR name, std::string& path) {
    std::u16string_view text;
    const DWORD error = CheckedName(name, text);
    if (error != ERROR_SUCCESS)
        return error;
    if (text.find_first_of(kForbidden) != std::u16string_view::npos)
        return ERROR_INVALID_NAME;
    return ToHost(text, path);
}

DWORD HostProgramPath(LPCWSTR name, std::string& path) {
    std::u16string_view text;
    const DWORD error = CheckedName(name, text);
    return error != ERROR_SUCCESS ? error : ToHost(text, path);
}

DWORD HostPattern(LPCWSTR name, std::string& folder, std::u16string& pattern) {
    std::u16string_view text;
    const DWORD error = CheckedName(name, text);
    if (error != ERROR_SUCCESS)
        return error;
    const size_t slash = text.find_last_of(u"\\/");
    const size_t start = slash == std::u16string_view::npos ? 0 : slash + 1;
    pattern = text.substr(start);
    const std::u16string_view before = text.substr(0, start);
    if (before.find_first_of(kForbidden) != std::u16string_view::npos ||
        pattern.find_first_of(u"<>:\"|") != std::u16string::npos)
        return ERROR_INVALID_NAME;
    return ToHost(before, folder);
}

std::u16string WideName(std::string_view host_name) {
    std::u16string name;
    name.reserve(host_name.size());
    while (!host_name.empty()) {
        char32_t value = 0;
        const size_t length = DecodeUtf8(host_name, value);
        if (length == 0) {
            name.push_back(
                static_cast<char16_t>(kEscapedByte + static_cast<unsigned char>(host_name[0])));
        } else if (value < 0x10000) {
            name.push_back(static_cast<char16_t>(value));
        } else {
            name.push_back(static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)));
            name.push_back(static_cast<char16_t>(0xDC00 + (value & 0x3FF)));
        }
        host_name.remove_prefix(std::max<size_t>(length, 1));
    }
    return name;
}

bool NarrowName(std::u16string_view name, std::string& host_name) {
    host_name.clear();
    for (size_t i = 0; i < name.size(); ++i) {
        const char16_t unit = name[i];
        if (IsHighSurrogate(unit) && i + 1 < name.size() && IsLowSurrogate(name[i + 1])) {
            const char32_t high = unit - 0xD800u;
            AppendUtf8(0x10000 + (high << 10) + (name[++i] - 0xDC00u), host_name);
        } else if (IsEscapedByte(unit)) {
            host_name.push_back(static_cast<char>(unit - kEscapedByte));
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            return false;
        } else {
            AppendUtf8(unit, host_name);
        }
    }
    return true;
}

DWORD PathError(int error_number, const std::string& path) {
    if (error_number == ENOENT && !IsFolder(ParentFolder(path)))
        return ERROR_PATH_NOT_FOUND;
    return ErrorFromErrno(error_number);
}

std::string ParentFolder(const std::string& path) {
    const size_t last = path.find_last_not_of('/');
    const size_t slash = last == std::string::npos ? last : path.rfind('/', last);
    return slash == std::string::npos || slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace zelto::coredll
