#include <fmt/core.h>

#include "tools/zelto-navigator/channel.h"

namespace zelto::navigator {

namespace {

// An open file, closed with the object.
class PacketFile {
  public:
    PacketFile(const std::u16string& path, DWORD access, DWORD disposition)
        : handle_(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                              FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~PacketFile() {
        if (IsOpen())
            CloseHandle(handle_);
    }
    PacketFile(const PacketFile&) = delete;
    PacketFile& operator=(const PacketFile&) = delete;

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE handle() const { return handle_; }

  private:
    HANDLE handle_;
};

// The client waits on this event, which either side may be the first to create.
bool SignalReply() {
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, kReplyEvent);
    if (event == nullptr)
        return false;
    const BOOL signalled = EventModify(event, EVENT_SET);
    CloseHandle(event);
    return signalled != FALSE;
}

class FileExchange : public Exchange {
  public:
    explicit FileExchange(const std::u16string& folder)
        : request_path_(folder + kRequestFile), reply_path_(folder + kReplyFile) {}

    bool Receive(std::string& request, std::string& why) override {
        const PacketFile file(request_path_, GENERIC_READ, OPEN_EXISTING);
        char buffer[kMaxMessageBytes];
        DWORD size = 0;
        if (!file.IsOpen() || !ReadFile(file.handle(), buffer, sizeof buffer, &size, nullptr)) {
            why = fmt::format("the request file cannot be read (error {})", GetLastError());
            return false;
        }
        request.assign(buffer, size);
        return true;
    }

    bool Send(std::string_view reply, std::string& why) override {
        if (WriteReply(reply) && SignalReply())
            return true;
        why = fmt::format("the reply file cannot be written (error {})", GetLastError());
        return false;
    }

  private:
    bool WriteReply(std::string_view reply) const {
        const PacketFile file(reply_path_, GENERIC_WRITE, CREATE_ALWAYS);
        DWORD written = 0;
        return file.IsOpen() && WriteFile(file.handle(), reply.data(),
                                          static_cast<DWORD>(reply.size()), &written, nullptr);
    }

    std::u16string request_path_;
    std::u16string reply_path_;
};

}  // namespace

std::unique_ptr<Exchange> OpenFileExchange(const std::u16string& folder) {
    return std::make_unique<FileExchange>(folder);
}

std::u16string ProgramFolder() {
    WCHAR path[MAX_PATH * 2];
    const DWORD size = GetModuleFileNameW(nullptr, path, MAX_PATH * 2);
    const std::u16string_view whole(path, size);
    return std::u16string(whole.substr(0, whole.rfind(u'\\')));
}

}  // namespace zelto::navigator
