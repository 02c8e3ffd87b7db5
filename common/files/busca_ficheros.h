// Going through the entries of one folder.

#ifndef ZELTO_COMMON_FILES_BUSCA_FICHEROS_H
#define ZELTO_COMMON_FILES_BUSCA_FICHEROS_H

#include <cstdint>

#include "common/text/dstring.h"
#include "platform/coredll/coredll.h"

namespace zelto {

// What TBuscaFicheros tells of an entry when asked to. Times are universal.
struct TFileDetails {
    int64_t size = 0;  // bytes; 0 for a folder
    FILETIME created{};
    FILETIME accessed{};
    FILETIME written{};
    uint32_t attributes = 0;  // FILE_ATTRIBUTE_...
};

// Yields the files and folders that match a pattern such as "\data\*.txt", one by one, in no
// order. Subfolders are not entered.
//
//     TBuscaFicheros search("\\data\\*.txt");
//     while (search.Next())
//         Use(search.Path());
//
// Thread safety: none; a search is used by one thread at a time.
class TBuscaFicheros {
  public:
    explicit TBuscaFicheros(const DString& pattern);
    ~TBuscaFicheros();
    TBuscaFicheros(const TBuscaFicheros&) = delete;
    TBuscaFicheros& operator=(const TBuscaFicheros&) = delete;

    void SetIncludeHidden(bool include) { include_hidden_ = include; }  // false at first
    void SetWithDetails(bool fill) { with_details_ = fill; }            // false at first

    // Moves to the next entry. False: there is none; a further call starts anew.
    bool Next();

    // The current entry; of no use before Next and after its false. The path is the pattern up to
    // and with its last separator, followed by the name.
    const DString& Path() const { return path_; }
    bool IsDirectory() const { return is_directory_; }
    uint32_t Size() const { return size_; }                   // the low 32 bits; 0 for a folder
    const TFileDetails& Details() const { return details_; }  // with SetWithDetails

  private:
    bool Advance();
    void Fill();

    DString path_;
    TFileDetails details_;
    bool with_details_ = false;
    bool include_hidden_ = false;
    DString pattern_;
    WIN32_FIND_DATAW data_{};
    HANDLE search_ = nullptr;
    bool is_directory_ = false;
    uint32_t size_ = 0;
};

}  // namespace zelto

#endif
