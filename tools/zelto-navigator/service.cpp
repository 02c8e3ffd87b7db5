#include "tools/zelto-navigator/service.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fmt/core.h>
#include <stdexcept>

#include "tools/text/wide.h"
#include "tools/wire/calls.h"
#include "tools/zelto-navigator/reply.h"
#include "tools/zelto-navigator/requests.h"

namespace zelto::navigator {

namespace {

// One line on standard output, at once: whoever watches may be a pipe.
void Say(const std::string& line) {
    fmt::print("{}\n", line);
    std::fflush(stdout);
}

// Posted to the own window when the view's user has done something.
constexpr UINT kActsToTake = 0x8000;  // the first that is left to programs

const char* DescribeMessage(const MSG& message) {
    switch (message.message) {
        case WM_SHOWWINDOW:
            return message.wParam != 0 ? "window shown" : "window hidden";
        case WM_SIZE:
            return message.wParam == SIZE_MINIMIZED ? "window minimised" : "window restored";
        case WM_ACTIVATE:
            return message.wParam != 0 ? "window brought to the front" : "window sent back";
        case WM_CLOSE:
            return "window asked to close";
        default:
            return nullptr;
    }
}

constexpr int kDied = 9;  // exit status of a navigator that ends in the middle

// What a fault makes of a reply; "" for none.
std::string FaultyReply(const Step& step, const std::string& reply) {
    switch (step.fault) {
        case Fault::kSilent:
            return "";
        case Fault::kTruncated:
            return reply.substr(0, 1);
        case Fault::kTooLong:
            return "A|" + std::string(kMaxReply + 9, '.');
        case Fault::kWrongKind:
            return "X|unknown kind";
        case Fault::kGarbage:
            return "\x80\x01\xFF|garbage";
        case Fault::kRefuse:
            return fmt::format("B|{}", step.refusal);
        default:
            return reply;
    }
}

}  // namespace

bool Faults::Concern(const std::string& request) const {
    return letters.empty() || (!request.empty() && letters.find(request[0]) != std::string::npos);
}

Service::Service(const ServiceOptions& options, Journal& journal, View* view)
    : options_(options), journal_(journal), view_(view) {}

bool Service::MakeWindow() {
    if (FindWindowW(kWindowClass, nullptr) != nullptr) {
        fmt::print(stderr, "zelto-navigator: a navigator runs on this device already\n");
        return false;
    }
    window_ = CreateWindowExW(0, kWindowClass, TEXT("Zelto navigator"), WS_VISIBLE, 0, 0, 240, 320,
                              nullptr, nullptr, nullptr, nullptr);
    if (window_ == nullptr)
        fmt::print(stderr, "zelto-navigator: no window to be had (error {})\n", GetLastError());
    return window_ != nullptr;
}

bool Service::OpenView() {
    if (view_ == nullptr)
        return true;
    try {
        link_ = view_->Open([window = window_] { PostMessageW(window, kActsToTake, 0, 0); });
    } catch (const std::runtime_error& error) {
        fmt::print(stderr, "zelto-navigator: {}\n", error.what());
        DestroyWindow(window_);
        return false;
    }
    view_->ShowFaults(options_.faults);
    return true;
}

int Service::Run() {
    if (!MakeWindow() || !OpenView())
        return 1;
    Say("ready");
    if (!link_.empty())
        Say("view " + link_);
    BOOL got = TRUE;
    while (!navigator_.closing) {
        MSG message;
        got = GetMessageW(&message, window_, 0, 0);
        if (got != TRUE)
            break;
        HandleMessage(message);
    }
    Say(got == -1 ? "window lost" : "closed");
    DestroyWindow(window_);
    return got == -1 ? 1 : Finish();
}

int Service::Finish() {
    const std::vector<std::string> complaints = options_.script.Complaints();
    for (const std::string& complaint : complaints)
        Say(kComplaint + complaint);
    return complaints.empty() ? 0 : kScriptNotKept;
}

void Service::HandleMessage(const MSG& message) {
    // Message 17698: a client announces a request.
    if (message.message == kAnnouncement && message.wParam == kAnnouncementWParam) {
        HandleAnnouncement(message.lParam);
        return;
    }
    if (message.message == kActsToTake && view_ != nullptr) {
        TakeActs();
        return;
    }
    if (const char* words = DescribeMessage(message); words != nullptr)
        Say(words);
    if (message.message == WM_CLOSE)
        navigator_.closing = true;
}

void Service::TakeActs() {
    for (const Act& act : view_->TakeActs())
        std::visit([this](const auto& each) { Take(each); }, act);
}

// An answer to a box that another has replaced comes too late.
void Service::Take(const BoxAnswer& answer) {
    if (answer.box != navigator_.boxes)
        return;
    navigator_.box_answer = answer.button;
    view_->ShowAnswer(answer);
    Say(fmt::format("message box answered: {}", tools::Printable(answer.button)));
}

void Service::Take(const Moment& moment) {
    const std::string sentence = SentencesOf(moment).front();
    TakeSentence(navigator_, sentence);
    view_->ShowMove(sentence);
}

void Service::Take(const Faults& faults) {
    options_.faults = faults;
    view_->ShowFaults(faults);
    Say("faults changed");
}

void Service::HandleAnnouncement(LPARAM detail) {
    if (const Step* step = options_.script.TakeAnnouncement(); step != nullptr) {
        Say(fmt::format("announcement {} {}{}", detail, kMetFault, NameOf(Fault::kDeaf)));
        return;
    }
    if (detail > kAnnouncementBase) {
        const int generation = detail - kAnnouncementBase;
        Serve(*OpenQueueExchange(generation), generation);
    } else if (detail == kAnnouncementBase && options_.packet_files) {
        Serve(*OpenFileExchange(ProgramFolder()), 0);
    } else {
        Say(fmt::format("announcement {} ignored", detail));
    }
}

void Service::Serve(Exchange& exchange, int generation) {
    const auto start = std::chrono::steady_clock::now();
    JournalEntry entry;
    std::string why;
    entry.generation = generation;
    if (!exchange.Receive(entry.request, why)) {
        Say(fmt::format("#{} {}", generation, why));
        return;
    }
    const Step* const step = options_.script.Take(entry.request);
    if (step != nullptr && step->fault != Fault::kNone)
        Say(fmt::format("#{} {}{}", generation, kMetFault, NameOf(step->fault)));
    entry.reply = ReplyTo(entry.request, step);
    if (entry.reply.empty())
        why = "no reply, as asked for";
    else if (!Send(exchange, entry.reply, step, generation, why))
        entry.reply.clear();
    entry.microseconds = std::chrono::duration_cast<std::chrono::microseconds>(
                             std::chrono::steady_clock::now() - start)
                             .count();
    Record(entry);
    if (!why.empty())
        Say(fmt::format("#{} {}", generation, why));
}

std::string Service::ReplyTo(const std::string& request, const Step* step) {
    std::string reply = Answer(navigator_, request);
    const Faults& faults = options_.faults;
    const DWORD delay = (faults.Concern(request) ? faults.delay : 0) + (step ? step->delay : 0);
    if (delay > 0) {
        Say(fmt::format("reply held back for {} ms", delay));
        Sleep(delay);
    }
    if (step != nullptr)
        return FaultyReply(*step, step->reply.value_or(reply));
    if (!faults.Concern(request))
        return reply;
    return faults.silent ? "" : faults.reply.value_or(reply);
}

bool Service::Send(Exchange& exchange, const std::string& reply, const Step* step, int generation,
                   std::string& why) {
    switch (step == nullptr ? Fault::kNone : step->fault) {
        case Fault::kDiesBeforeReply:
            std::_Exit(kDied);
        case Fault::kDiesAfterReply:
            exchange.Send(reply, why);
            std::_Exit(kDied);
        case Fault::kClosesWindow:
            navigator_.closing = true;
            why = "window closed";
            return false;
        case Fault::kOtherGeneration:
            return OpenQueueExchange(generation + 1)->Send(reply, why);
        case Fault::kDoubled:
            return exchange.Send(reply, why) && exchange.Send(reply, why);
        default:
            return exchange.Send(reply, why);
    }
}

void Service::Record(const JournalEntry& entry) {
    const Request* request = FindRequest(entry.request);
    Say(fmt::format("#{} {}: {} -> {} ({} us)", entry.generation,
                    request == nullptr ? "unknown" : wire::FindCall(request->letter)->ShortName(),
                    tools::Printable(entry.request),
                    entry.reply.empty() ? "-" : tools::Printable(entry.reply), entry.microseconds));
    if (view_ != nullptr)
        view_->ShowRequest(entry, navigator_.boxes);
    if (!journal_.Append(entry))
        fmt::print(stderr, "zelto-navigator: the journal cannot be written\n");
}

}  // namespace zelto::navigator
