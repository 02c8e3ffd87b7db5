// The text of one request as it goes over the channel.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_REQUEST_LINE_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_REQUEST_LINE_H

#include <cstdint>
#include <memory>

namespace zelto {

// Thread safety: none; one thread at a time.
class RequestLine {
  public:
    // "<command>|<arguments>\n", not NUL-terminated. A null command is left out together with its
    // "|"; null arguments count as empty.
    RequestLine(const char* command, const char* arguments);

    RequestLine(const RequestLine&) = delete;
    RequestLine& operator=(const RequestLine&) = delete;

    const char* Bytes() const { return bytes_; }
    uint32_t Length() const { return length_; }

    // Bytes() is null from now on, Length() stays.
    void ReleaseBytes() {
        long_.reset();
        bytes_ = nullptr;
    }

  private:
    static constexpr size_t kShort = 256;  // most lines are

    char short_[kShort];
    std::unique_ptr<char[]> long_;
    char* bytes_ = short_;
    uint32_t length_;
};

}  // namespace zelto

#endif
