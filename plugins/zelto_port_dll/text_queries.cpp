// The requests that are answered with a text, and the message boxes.

#include <algorithm>
#include <cstring>
#include <new>

#include "common/text/codepage.h"
#include "common/text/dstring.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/exports.h"
#include "plugins/zelto_port_dll/replies.h"
#include "plugins/zelto_port_dll/transport.h"
#include "plugins/zelto_port_dll/zelto_port.h"

namespace zelto {

namespace {

constexpr int kMessageRoom = 160;     // for two lines on a small screen
constexpr uint32_t kReplySlack = 10;  // room for a terminator, and to spare

char* AllocateReply(uint32_t size) {
    const uint64_t wanted = uint64_t{size} + kReplySlack;
    const size_t bytes = static_cast<size_t>(wanted);
    if (bytes != wanted)
        throw std::bad_alloc();
    return new char[bytes];
}

int32_t GetString(const char* request, uint32_t size, char* destination) {
    if (g_connection.window == nullptr) {
        if (const int32_t result = ZeltoNavPort_Init())
            return result;
    }
    // Every return but the last keeps this block: its owner is the process.
    char* reply = AllocateReply(size);
    uint32_t bytes_read = 0;
    if (const int32_t result = Transact("F", request, reply, size, bytes_read))
        return result;
    if (bytes_read == 0)
        return ZELTO_NAV_PORT_EMPTY_REPLY;
    reply[bytes_read] = '\0';
    if (reply[0] != 'G')
        return ZELTO_NAV_PORT_BAD_REPLY;
    const char* separator = std::strchr(reply, '|');
    if (separator == nullptr)
        return ZELTO_NAV_PORT_READ_FAILED;
    if (destination != nullptr)
        std::memcpy(destination, separator + 1, std::strlen(separator + 1) + 1);
    delete[] reply;
    return ZELTO_NAV_PORT_OK;
}

int32_t PositionStreet(WCHAR* destination) {
    char reply[kReplySize + 24] = {};  // zeroes, so that a reply of any length is terminated
    const int32_t result = DecodeStatusInto("e", "0", reply, kReplySize);
    const std::basic_string<WCHAR> text =
        ToWide(reply, static_cast<int>(std::strlen(reply)), CurrentCodepage());
    if (destination != nullptr) {
        const size_t length = std::min<size_t>(text.size(), kReplySize);
        std::copy_n(text.data(), length, destination);
        destination[length] = 0;
    }
    return result;
}

// Text is DString's choice of const char* and const WCHAR*.
template <class Text>
DString MessageBoxArguments(Text first, Text second, int32_t first_number, int32_t second_number) {
    DString arguments;
    arguments.reserve(kMessageRoom, true);
    arguments += "1|";
    arguments += first;
    arguments += "|";
    arguments += second;
    arguments += "|";
    arguments += first_number;
    arguments += "|";
    arguments += second_number;
    return arguments;
}

}  // namespace

}  // namespace zelto

using zelto::DString;
using zelto::Guarded;
using zelto::kReplySize;

int32_t ZeltoNavPort_GetString(const char* request, uint32_t size, char* destination) {
    return Guarded([&] { return zelto::GetString(request, size, destination); });
}

int32_t ZeltoNavPort_PositionStreet(ZeltoNavPort_Wide* destination) {
    return Guarded([&] { return zelto::PositionStreet(destination); });
}

int32_t ZeltoNavPort_PositionStreetA() {
    return ZELTO_NAV_PORT_NO_NAVIGATOR;
}

int32_t ZeltoNavPort_MessageBox(const ZeltoNavPort_Wide* first, const ZeltoNavPort_Wide* second,
                                int32_t first_number, int32_t second_number) {
    return Guarded([&] {
        const DString arguments =
            zelto::MessageBoxArguments(first, second, first_number, second_number);
        return zelto::DecodeStatus("T", arguments.c_str(), kReplySize);
    });
}

int32_t ZeltoNavPort_MessageBoxA(const char* first, const char* second, int32_t first_number,
                                 int32_t second_number) {
    return Guarded([&] {
        DString arguments = zelto::MessageBoxArguments(first, second, first_number, second_number);
        zelto::RecodeSystemText(arguments);
        return zelto::DecodeStatus("T", arguments.c_str(), kReplySize);
    });
}

int32_t ZeltoNavPort_Cobertura() {
    return Guarded([] { return zelto::DecodeStatus("a", "0", kReplySize); });
}
