#include "plugins/zelto_port_dll/request_line.h"

#include <cstring>
#include <string_view>

namespace zelto {

namespace {

constexpr size_t kSlack = 10;  // the separators, with room to spare

std::string_view TextOrEmpty(const char* text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

}  // namespace

RequestLine::RequestLine(const char* command, const char* arguments) {
    const std::string_view head = TextOrEmpty(command);
    const std::string_view tail = TextOrEmpty(arguments);
    const size_t room = head.size() + tail.size() + kSlack;
    if (room > kShort) {
        long_.reset(new char[room]);
        bytes_ = long_.get();
    }

    char* end = bytes_;
    if (command != nullptr) {
        end += head.copy(end, head.size());
        *end++ = '|';
    }
    end += tail.copy(end, tail.size());
    *end++ = '\n';
    length_ = static_cast<uint32_t>(end - bytes_);
}

}  // namespace zelto
