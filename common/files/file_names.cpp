// The calls of file_system.h that look at the text of a name alone.

#include <algorithm>
#include <string>
#include <string_view>

#include "common/files/file_system.h"

namespace zelto {
namespace {

constexpr std::string_view kSeparators = "\\/";

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

// A text of the same codepage as the path.
DString TextLike(const DString& path, std::string_view text) {
    DString result;
    result.assign(text.data(), static_cast<int>(text.size()));
    result.set_codepage(path.codepage());
    return result;
}

// Drops the last part of a path that is normalised up to here.
void DropLastPart(std::string& path, size_t root) {
    const size_t separator = path.rfind('\\');
    path.resize(separator == std::string::npos ? root : std::max(separator, root));
}

void AppendPart(std::string& path, size_t root, std::string_view part) {
    if (part.empty() || part == ".")
        return;
    if (part == "..") {
        DropLastPart(path, root);
        return;
    }
    if (path.size() > root)
        path += '\\';
    path += part;
}

}  // namespace

DString DirectoryPart(const DString& path) {
    const std::string_view text = path.c_str();
    const size_t separator = text.rfind('\\');
    return TextLike(path, text.substr(0, separator == std::string_view::npos ? 0 : separator));
}

DString FileNamePart(const DString& path) {
    const std::string_view text = path.c_str();
    const size_t separator = text.find_last_of(kSeparators);
    return TextLike(path, text.substr(separator == std::string_view::npos ? 0 : separator + 1));
}

void SetExtension(DString& path, const DString& extension) {
    const DString added = extension;  // it may be the path itself
    const std::string_view text = path.c_str();
    const size_t dot = text.rfind('.');
    const size_t separator = text.rfind('\\');
    const bool has_extension =
        dot != std::string_view::npos && (separator == std::string_view::npos || dot > separator);
    if (has_extension)
        *path.at(static_cast<int>(dot)) = '\0';
    if (!added.is_empty() && added[0] != '.')
        path += '.';
    path += added.c_str();
}

DString JoinPath(const DString& directory, const DString& name) {
    DString joined = directory;
    if (!directory.is_empty() && !IsSeparator(directory.last_char()))
        joined += '\\';
    return joined += name;
}

DString NormalizePath(const DString& path) {
    const std::string_view text = path.c_str();
    std::string result;
    if (!text.empty() && IsSeparator(text[0]))
        result = "\\";
    const size_t root = result.size();
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find_first_of(kSeparators, at), text.size());
        AppendPart(result, root, text.substr(at, end - at));
        at = end + 1;
    }
    return TextLike(path, result);
}

}  // namespace zelto
