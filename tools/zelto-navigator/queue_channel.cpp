#include <fmt/core.h>

#include "tools/text/wide.h"
#include "tools/zelto-navigator/channel.h"

namespace zelto::navigator {

namespace {

std::u16string QueueName(int generation, const char* direction) {
    std::u16string name;
    tools::WideFromUtf8(fmt::format("{}{}_{}", kQueuePrefix, generation, direction), name);
    return name;
}

// One end of a queue, closed with the object.
class QueueEnd {
  public:
    QueueEnd(const std::u16string& name, BOOL read_access) {
        const MSGQUEUEOPTIONS options = QueueOptions(read_access);
        handle_ = CreateMsgQueue(name.c_str(), &options);
        error_ = GetLastError();
    }
    ~QueueEnd() {
        if (handle_ != nullptr)
            CloseMsgQueue(handle_);
    }
    QueueEnd(const QueueEnd&) = delete;
    QueueEnd& operator=(const QueueEnd&) = delete;

    HANDLE handle() const { return handle_; }
    DWORD error() const { return error_; }
    // Whether the client's end was there already.
    bool HasPeer() const { return handle_ != nullptr && error_ == ERROR_ALREADY_EXISTS; }

  private:
    HANDLE handle_;
    DWORD error_;
};

class QueueExchange : public Exchange {
  public:
    explicit QueueExchange(int generation)
        : requests_(QueueName(generation, "tx"), TRUE),
          replies_(QueueName(generation, "rx"), FALSE) {}

    bool Receive(std::string& request, std::string& why) override {
        if (!requests_.HasPeer() || !replies_.HasPeer()) {
            why = requests_.handle() == nullptr || replies_.handle() == nullptr
                      ? fmt::format("the queues cannot be opened (error {})", OpenError())
                      : std::string("the client has closed its queues");
            return false;
        }
        char buffer[kMaxMessageBytes];
        DWORD size = 0;
        DWORD flags = 0;
        if (!ReadMsgQueue(requests_.handle(), buffer, sizeof buffer, &size, kRequestWait, &flags)) {
            why = GetLastError() == ERROR_TIMEOUT
                      ? std::string("no request came")
                      : fmt::format("the request cannot be read (error {})", GetLastError());
            return false;
        }
        request.assign(buffer, size);
        return true;
    }

    bool Send(std::string_view reply, std::string& why) override {
        if (WriteMsgQueue(replies_.handle(), reply.data(), static_cast<DWORD>(reply.size()), 0, 0))
            return true;
        why = fmt::format("the reply cannot be written (error {})", GetLastError());
        return false;
    }

  private:
    DWORD OpenError() const {
        return requests_.handle() == nullptr ? requests_.error() : replies_.error();
    }

    QueueEnd requests_;
    QueueEnd replies_;
};

}  // namespace

std::unique_ptr<Exchange> OpenQueueExchange(int generation) {
    return std::make_unique<QueueExchange>(generation);
}

}  // namespace zelto::navigator
