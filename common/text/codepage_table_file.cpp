// Reading codepage table files.

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>

#include "common/text/codepage.h"
#include "common/text/codepage_table.h"

namespace zelto {
namespace {

static_assert(std::endian::native == std::endian::little, "records are copied as they are");

constexpr std::string_view kSignature = kTableFileSignature;
constexpr size_t kMaxFileSize = kSignature.size() + kMaxTableFileRecords * sizeof(CodepageTable);

struct CloseFile {
    void operator()(FILE* file) const { std::fclose(file); }
};

bool Fail(DString* error, const char* reason, const DString& path) {
    if (error != nullptr) {
        const DString named = path;  // it may be the error text itself
        *error = "Codepage table file: ";
        *error += reason;
        *error += ": ";
        *error += named.c_str();
    }
    return false;
}

// The file's bytes; of a file that is too large, enough to tell that it is. Null, or what failed.
const char* ReadFileBytes(const DString& path, std::vector<char>& bytes) {
    const std::unique_ptr<FILE, CloseFile> file(_wfopen(ToWide(path).c_str(), TEXT("rb")));
    if (file == nullptr)
        return "cannot be opened";
    constexpr size_t kStep = 16 * sizeof(CodepageTable);
    size_t got = 1;
    while (got > 0 && bytes.size() <= kMaxFileSize) {
        const size_t before = bytes.size();
        bytes.resize(before + kStep);
        got = std::fread(bytes.data() + before, 1, kStep, file.get());
        bytes.resize(before + got);
    }
    return std::ferror(file.get()) == 0 ? nullptr : "cannot be read";
}

bool IsKnownPageCount(const CodepageTable& record) {
    return record.page_count == 1 || record.page_count == kMaxTablePages;
}

}  // namespace

const char* ParseCodepageTables(std::string_view bytes, std::vector<CodepageTable>& records) {
    if (bytes.substr(0, kSignature.size()) != kSignature)
        return "not a codepage table file";
    bytes.remove_prefix(kSignature.size());
    if (bytes.empty())
        return "no record";
    if (bytes.size() > kMaxTableFileRecords * sizeof(CodepageTable))
        return "too many records";
    if (bytes.size() % sizeof(CodepageTable) != 0)
        return "the last record is cut short";
    records.resize(bytes.size() / sizeof(CodepageTable));
    std::memcpy(records.data(), bytes.data(), bytes.size());
    if (!std::all_of(records.begin(), records.end(), IsKnownPageCount))
        return "a record's page count is neither 1 nor 5";
    return nullptr;
}

bool LoadCodepageTables(const DString& path, DString* error) {
    CodepageRegistry* registry = GlobalCodepageRegistry();
    if (registry == nullptr)
        return Fail(error, "there is no registry", path);
    std::vector<char> bytes;
    std::vector<CodepageTable> records;
    const char* fault = ReadFileBytes(path, bytes);
    if (fault == nullptr)
        fault = ParseCodepageTables({bytes.data(), bytes.size()}, records);
    if (fault != nullptr)
        return Fail(error, fault, path);
    for (const CodepageTable& record : records)
        registry->RegisterTable(&record, -1);
    return true;
}

}  // namespace zelto
