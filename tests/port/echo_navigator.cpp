// The least a navigator must do: takes announcements, prints each request, echoes the argument of
// a text question and says yes to everything else. Ends with the request "R".

#include <cstdio>
#include <string>

#include "platform/coredll/coredll.h"

namespace {

HANDLE OpenEnd(int generation, const char* suffix, BOOL read_access) {
    const std::string name = "ZeltoApiMsgQ" + std::to_string(generation) + suffix;
    const MSGQUEUEOPTIONS options = {20, MSGQUEUE_ALLOW_BROKEN, 20, 1024, read_access};
    return CreateMsgQueue(std::u16string(name.begin(), name.end()).c_str(), &options);
}

// The request, without its line feed.
std::string Answer(int generation) {
    HANDLE requests = OpenEnd(generation, "_tx", TRUE);
    HANDLE replies = OpenEnd(generation, "_rx", FALSE);
    char line[1024];
    DWORD size = 0;
    DWORD flags = 0;
    std::string request;
    if (ReadMsgQueue(requests, line, sizeof(line), &size, 4000, &flags)) {
        request.assign(line, size - 1);
        const std::string reply = request[0] == 'F' ? "G|" + request.substr(2) : "A|";
        WriteMsgQueue(replies, reply.data(), static_cast<DWORD>(reply.size()), 1000, 0);
    }
    CloseMsgQueue(requests);
    CloseMsgQueue(replies);
    return request;
}

}  // namespace

int main() {
    if (CreateWindowExW(0, TEXT("ZELTOPOCKETMAINW"), nullptr, WS_VISIBLE, 0, 0, 0, 0, nullptr,
                        nullptr, nullptr, nullptr) == nullptr)
        return 1;
    std::puts("ready");
    std::string request;
    MSG message;
    while (request != "R|0" && std::fflush(stdout) == 0 &&
           GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message != 17698 || message.wParam != 15)
            continue;
        request = Answer(message.lParam - 3);
        std::printf("%d %s\n", message.lParam - 3, request.c_str());
    }
    return 0;
}
