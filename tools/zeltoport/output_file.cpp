#include "tools/zeltoport/output_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include "tools/zeltoport/session.h"

namespace zelto::tools {

namespace {

namespace fs = std::filesystem;

// False, with errno telling why, when not all of it went out.
bool WriteAll(const fs::path& path, std::string_view text) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return false;
    const bool whole = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const bool closed = std::fclose(file) == 0;
    return whole && closed;
}

// A pipe or a terminal cannot be replaced by a file, and is written as it is.
bool IsReplaceable(const fs::path& path) {
    std::error_code ignored;
    const auto type = fs::status(path, ignored).type();
    return type == fs::file_type::not_found || type == fs::file_type::regular;
}

}  // namespace

std::string ReadInput(const std::string& path) {
    std::ifstream file;
    if (path != "-") {
        file.open(path, std::ios::binary);
        if (!file.is_open() || fs::is_directory(path))
            throw CommandError("The file " + path + " cannot be read.");
    }
    return std::string(std::istreambuf_iterator<char>(path == "-" ? std::cin : file), {});
}

void WriteOutput(const std::string& path, std::string_view text) {
    const bool replace = IsReplaceable(path);
    std::error_code error;
    // Where a link leads, so that the link stays one.
    const fs::path target = replace ? fs::weakly_canonical(path, error) : fs::path(path);
    const fs::path fresh =
        replace ? fs::path(fmt::format("{}.{:08x}.new", target.string(), std::random_device()()))
                : target;
    bool written = WriteAll(fresh, text);
    error = written ? std::error_code() : std::error_code(errno, std::generic_category());
    if (written && replace) {
        fs::rename(fresh, target, error);
        written = !error;
    }
    if (written)
        return;
    std::error_code ignored;
    if (replace)
        fs::remove(fresh, ignored);
    throw CommandError(fmt::format("The file {} cannot be written: {}.", path, error.message()),
                       kExitFailure);
}

}  // namespace zelto::tools
