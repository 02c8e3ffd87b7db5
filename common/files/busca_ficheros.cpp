#include "common/files/busca_ficheros.h"

#include "common/files/file_system.h"
#include "common/text/codepage.h"

namespace zelto {

TBuscaFicheros::TBuscaFicheros(const DString& pattern) : pattern_(pattern) {}

TBuscaFicheros::~TBuscaFicheros() {
    if (search_ != nullptr)
        FindClose(search_);
}

bool TBuscaFicheros::Next() {
    do {
        if (!Advance())
            return false;
    } while (!include_hidden_ && (data_.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0);
    Fill();
    return true;
}

bool TBuscaFicheros::Advance() {
    if (search_ == nullptr) {
        HANDLE search = FindFirstFileW(ToWide(pattern_).c_str(), &data_);
        if (search == INVALID_HANDLE_VALUE)
            return false;
        search_ = search;
        return true;
    }
    if (FindNextFileW(search_, &data_) != 0)
        return true;
    FindClose(search_);
    search_ = nullptr;
    return false;
}

void TBuscaFicheros::Fill() {
    DString name;
    name.set_codepage(pattern_.codepage());
    name.assign_wide(data_.cFileName, -1);
    path_.assign(pattern_.c_str(), pattern_.length() - FileNamePart(pattern_).length());
    path_.set_codepage(pattern_.codepage());
    path_ += name;
    is_directory_ = (data_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    size_ = is_directory_ ? 0 : data_.nFileSizeLow;
    if (!with_details_)
        return;
    const int64_t high = is_directory_ ? 0 : data_.nFileSizeHigh;
    details_ = {(high << 32) | size_, data_.ftCreationTime, data_.ftLastAccessTime,
                data_.ftLastWriteTime, data_.dwFileAttributes};
}

}  // namespace zelto
