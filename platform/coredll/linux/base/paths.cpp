#include "platform/coredll/linux/base/paths.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/unicode.h"

namespace zelto::coredll {
namespace {

constexpr std::u16string_view kForbidden = u"<>:\"|?*";
constexpr char16_t kEscapedByte = 0xDC00;  // + the byte, 0x80 to 0xFF

bool IsEscapedByte(char16_t unit) {
    return unit >= kEscapedByte + 0x80 && unit <= kEscapedByte + 0xFF;
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
    const auto* bytes = reinterpret_cast<const unsigned char*>(host_name.data());
    for (size_t i = 0; i < host_name.size();) {
        const Taken taken = TakeUtf8(bytes + i, host_name.size() - i);
        if (taken.value == kNoCharacter) {
            for (size_t k = 0; k < taken.used; ++k)
                name.push_back(static_cast<char16_t>(kEscapedByte + bytes[i + k]));
        } else {
            char16_t units[2];
            name.append(units, PutUtf16(taken.value, units));
        }
        i += taken.used;
    }
    return name;
}

bool NarrowName(std::u16string_view name, std::string& host_name) {
    host_name.clear();
    for (size_t i = 0; i < name.size();) {
        const Taken taken = TakeUtf16(name.data() + i, name.size() - i);
        if (taken.value != kNoCharacter) {
            unsigned char bytes[4];
            host_name.append(reinterpret_cast<const char*>(bytes), PutUtf8(taken.value, bytes));
        } else if (IsEscapedByte(name[i])) {
            host_name.push_back(static_cast<char>(name[i] - kEscapedByte));
        } else {
            return false;
        }
        i += taken.used;
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
