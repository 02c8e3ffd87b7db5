// MD5 digests (RFC 1321): good for telling contents apart, not for security.

#ifndef ZELTO_COMMON_FILES_MD5_H
#define ZELTO_COMMON_FILES_MD5_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "common/text/dstring.h"

namespace zelto {

using Md5Digest = std::array<uint8_t, 16>;

// Thread safety: no shared state.
Md5Digest Md5(const void* bytes, size_t size);  // a null pointer counts as no bytes
Md5Digest Md5(const DString& text);

}  // namespace zelto

#endif
