#include "common/files/fichero_stream.h"

namespace zelto {

int32_t TFicheroStream::Flush() {
    return 0;
}

int32_t TFicheroStream::Reserved() {
    return 0;
}

}  // namespace zelto
