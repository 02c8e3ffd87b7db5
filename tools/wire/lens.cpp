#include "tools/wire/lens.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "plugins/zelto_port_dll/protocol.h"
#include "plugins/zelto_port_dll/status_reply.h"

namespace zelto::wire {

namespace {

using coredll::WitnessEvent;
using coredll::WitnessKind;

// Message 17698.
bool IsAnnouncement(const WitnessEvent& event) {
    return event.message == kAnnouncement && event.wparam == kAnnouncementWParam;
}

int32_t GenerationOf(const WitnessEvent& event) {
    return static_cast<int32_t>(event.lparam - static_cast<uint32_t>(kAnnouncementBase));
}

std::string WithoutLineFeed(std::string text) {
    if (text.ends_with('\n'))
        text.pop_back();
    return text;
}

}  // namespace

std::optional<QueueName> ParseQueueName(std::u16string_view name) {
    std::string text(name.begin(), name.end());
    const std::string_view prefix = kQueuePrefix;
    if (!text.starts_with(prefix))
        return std::nullopt;
    QueueName queue;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + prefix.size(), end, queue.generation);
    const std::string_view suffix(parsed.ptr, static_cast<size_t>(end - parsed.ptr));
    queue.requests = suffix == "_tx";
    if (parsed.ec != std::errc() || (!queue.requests && suffix != "_rx"))
        return std::nullopt;
    return queue;
}

int32_t ResultOfReply(char letter, const std::string& reply) {
    if (letter == 'F') {
        if (!reply.starts_with('G'))
            return ZELTO_NAV_PORT_BAD_REPLY;
        return reply.find('|') == reply.npos ? ZELTO_NAV_PORT_READ_FAILED : ZELTO_NAV_PORT_OK;
    }
    return ResultOfStatus(
        reply, letter == 'e' ? ZELTO_NAV_PORT_SHORT_STREET_REPLY : ZELTO_NAV_PORT_SHORT_REPLY);
}

const Call* Exchange::FindCall() const {
    if (request == "F|0")  // the question with which the library connects
        return wire::FindCall("ZeltoNavPort_Init");
    return request.empty() ? nullptr : wire::FindCall(request[0]);
}

bool Exchange::GaveUpUnannounced() const {
    return announced == 0 && request.empty() && reply.empty() && (client_left || client_ended);
}

std::optional<int32_t> Exchange::Result() const {
    if (announce_error != 0 || GaveUpUnannounced())
        return ZELTO_NAV_PORT_NOT_ANNOUNCED;
    if (write_error != 0)
        return static_cast<int32_t>(write_error);
    if (read_error != 0)
        return read_error == ERROR_PIPE_NOT_CONNECTED ? ZELTO_NAV_PORT_DISCONNECTED
                                                      : ZELTO_NAV_PORT_READ_FAILED;
    if (reply_read)
        return ResultOfReply(request.empty() ? '\0' : request[0], reply);
    return waited != 0 ? std::optional<int32_t>(ZELTO_NAV_PORT_TIMEOUT) : std::nullopt;
}

double Exchange::Milliseconds() const {
    return end == 0 ? 0 : static_cast<double>(end - start) / 1e6;
}

void Lens::Take(const WitnessEvent& event) {
    switch (event.kind) {
        case WitnessKind::kWindowMade:
        case WitnessKind::kWindowGone:
        case WitnessKind::kAnnounced:
        case WitnessKind::kTaken:
            TakeWindow(event);
            break;
        case WitnessKind::kQueueMade:
        case WitnessKind::kQueueOpened:
        case WitnessKind::kQueueClosed:
        case WitnessKind::kWritten:
        case WitnessKind::kRead:
        case WitnessKind::kRefused:
        case WitnessKind::kTimedOut:
            TakeQueue(event);
            break;
        default:
            TakeProcess(event);
    }
    ++next_event_;
}

Exchange& Lens::Begin(const WitnessEvent& event, int32_t generation) {
    Exchange exchange;
    exchange.client = event.process;
    exchange.generation = generation;
    exchange.start = event.monotonic_ns;
    exchange.start_wall = event.wall_ns;
    // Until it writes a request: the one before it has not been answered, and is announced again.
    const auto before = last_.find(event.process);
    if (before != last_.end() && !exchanges_[before->second].reply_read) {
        const size_t first = exchanges_[before->second].repeats;
        exchange.repeats = first != 0 ? first : before->second + 1;
    }
    last_[event.process] = exchanges_.size();
    of_client_[{event.process, generation}] = exchanges_.size();
    exchanges_.push_back(exchange);
    return exchanges_.back();
}

Exchange* Lens::Find(const std::map<Key, size_t>& of, uint32_t process, int32_t generation) {
    const auto found = of.find({process, generation});
    return found == of.end() ? nullptr : &exchanges_[found->second];
}

template <class Change>
void Lens::Apply(Exchange& exchange, Change change) {
    change(exchange);
    exchange.events.push_back(next_event_);
    if (exchange.repeats == 0)
        return;
    Exchange& first = exchanges_[exchange.repeats - 1];
    change(first);
    first.events.push_back(next_event_);
}

// What an event without a generation, or of another process, can still concern: an announcement
// that so many others followed is over.
std::span<Exchange> Lens::Recent() {
    constexpr size_t kRecent = 256;
    const size_t count = std::min(exchanges_.size(), kRecent);
    return std::span(exchanges_).last(count);
}

void Lens::TakeWindow(const WitnessEvent& event) {
    if (event.kind == WitnessKind::kWindowMade) {
        owners_[event.window] = event.process;
    } else if (event.kind == WitnessKind::kWindowGone) {
        owners_.erase(event.window);
        for (Exchange& exchange : Recent())
            exchange.navigator_ended |= exchange.end == 0 && exchange.window == event.window;
    } else if (IsAnnouncement(event)) {
        if (event.kind == WitnessKind::kAnnounced)
            TakeAnnouncement(event, GenerationOf(event));
        else
            TakeTaken(event, GenerationOf(event));
    }
}

void Lens::TakeAnnouncement(const WitnessEvent& event, int32_t generation) {
    Exchange* exchange = Find(of_client_, event.process, generation);
    if (exchange == nullptr || exchange->announced != 0)
        exchange = &Begin(event, generation);
    exchange->announced = event.monotonic_ns;
    exchange->announce_error = event.code;
    exchange->window = event.window;
    if (event.code != 0)
        exchange->end = event.monotonic_ns;
    if (const auto owner = owners_.find(event.window); owner != owners_.end())
        exchange->navigator = owner->second;
    exchange->events.push_back(next_event_);
}

void Lens::TakeTaken(const WitnessEvent& event, int32_t generation) {
    for (Exchange& exchange : Recent()) {
        if (exchange.generation != generation || exchange.announced == 0 || exchange.taken != 0 ||
            exchange.window != event.window)
            continue;
        of_navigator_[{event.process, generation}] =
            static_cast<size_t>(&exchange - exchanges_.data());
        Apply(exchange, [&event](Exchange& each) {
            each.taken = each.taken == 0 ? event.monotonic_ns : each.taken;
            each.navigator = event.process;
        });
        return;
    }
}

void Lens::TakeQueue(const WitnessEvent& event) {
    const std::optional<QueueName> queue = ParseQueueName(event.name);
    if (!queue)
        return;
    const bool opens =
        event.kind == WitnessKind::kQueueMade || event.kind == WitnessKind::kQueueOpened;
    // The client writes requests and reads replies; the navigator the other way round.
    if (opens && (event.code != 0) != queue->requests) {
        Exchange* exchange = Find(of_client_, event.process, queue->generation);
        if (queue->requests || exchange == nullptr)
            exchange = &Begin(event, queue->generation);
        // Nobody else has a queue of a fresh generation but another client.
        exchange->second_client |= event.kind == WitnessKind::kQueueOpened;
        exchange->events.push_back(next_event_);
        return;
    }
    if (Exchange* taken = Find(of_navigator_, event.process, queue->generation)) {
        Apply(*taken, [&](Exchange& each) { NavigatorSide(each, event, queue->requests); });
    } else if (Exchange* own = Find(of_client_, event.process, queue->generation)) {
        if (event.kind == WitnessKind::kRead && !queue->requests && own->replied == 0)
            FindOwnerOfReply(event, queue->generation);
        if (event.kind == WitnessKind::kWritten)
            own->repeats = 0;
        Apply(*own, [&](Exchange& each) { ClientSide(each, event, queue->requests); });
    } else if (event.kind == WitnessKind::kWritten && !queue->requests) {
        TakeStrayReply(event, queue->generation);
    }
}

// A navigator writes to queues that it made itself, no client having announced them.
void Lens::TakeStrayReply(const WitnessEvent& event, int32_t generation) {
    for (Exchange& exchange : Recent())
        if (exchange.navigator == event.process && exchange.received != 0 && exchange.end == 0)
            exchange.stray_reply = generation;
}

void Lens::ClientSide(Exchange& exchange, const WitnessEvent& event, bool request_queue) {
    const bool waits = event.kind == WitnessKind::kTimedOut || event.kind == WitnessKind::kRead ||
                       event.kind == WitnessKind::kRefused;
    if (waits)
        exchange.end = event.monotonic_ns;
    exchange.client_left |= event.kind == WitnessKind::kQueueClosed;
    if (request_queue) {
        if (event.kind == WitnessKind::kWritten || event.kind == WitnessKind::kRefused) {
            exchange.request = WithoutLineFeed(event.bytes);
            exchange.request_size = event.size;
        }
        if (event.kind == WitnessKind::kRefused)
            exchange.write_error = event.code;
        return;
    }
    if (event.kind == WitnessKind::kTimedOut)
        exchange.waited += event.code;
    if (event.kind == WitnessKind::kRefused ||
        (event.kind == WitnessKind::kRead && event.code != 0))
        exchange.read_error = event.code;
    if (event.kind == WitnessKind::kRead) {
        exchange.reply_read = true;
        exchange.reply = event.bytes;
        exchange.reply_size = std::max(exchange.reply_size, event.size);
        exchange.room = event.size;
    }
}

void Lens::NavigatorSide(Exchange& exchange, const WitnessEvent& event, bool request_queue) {
    if (request_queue && event.kind == WitnessKind::kRead) {
        exchange.received = event.monotonic_ns;
        if (exchange.request.empty())
            exchange.request = WithoutLineFeed(event.bytes);
    }
    if (request_queue ||
        (event.kind != WitnessKind::kWritten && event.kind != WitnessKind::kRefused))
        return;
    exchange.replied = event.kind == WitnessKind::kWritten ? event.monotonic_ns : 0;
    exchange.reply_error = event.kind == WitnessKind::kRefused ? event.code : 0;
    exchange.reply = event.bytes;
    exchange.reply_size = event.size;
}

// The client reads a reply that the navigator did not write to it: two clients have queues of one
// name, and the reply was the other's.
void Lens::FindOwnerOfReply(const WitnessEvent& event, int32_t generation) {
    for (Exchange& exchange : Recent()) {
        const bool open = exchange.generation == generation && exchange.replied != 0 &&
                          !exchange.reply_read && exchange.reply_taker == 0;
        if (open && exchange.client != event.process) {
            exchange.reply_taker = event.process;
            return;
        }
    }
}

void Lens::TakeProcess(const WitnessEvent& event) {
    // A killed process is found a little later than it died.
    constexpr int64_t kFoundWithin = 1'000'000'000;  // ns
    const bool died = event.kind == WitnessKind::kProcessDied;
    const bool ended = died || event.kind == WitnessKind::kProcessLeft;
    for (Exchange& exchange : Recent()) {
        const bool waiting = exchange.end == 0;
        const bool concerned = waiting || (died && exchange.replied == 0 && !exchange.reply_read &&
                                           event.monotonic_ns - exchange.end < kFoundWithin);
        if (!concerned)
            continue;
        if (exchange.client == event.process)
            exchange.client_ended |= ended && waiting;
        else if (exchange.navigator == event.process)
            exchange.navigator_ended |= ended;
        else
            continue;
        exchange.navigator_stopped |= event.kind == WitnessKind::kProcessStopped;
        exchange.events.push_back(next_event_);
    }
}

std::vector<Exchange> Exchanges(const Recording& recording) {
    Lens lens;
    for (const WitnessEvent& event : recording.events)
        lens.Take(event);
    std::vector<Exchange> requests = lens.Exchanges();
    std::erase_if(requests, [](const Exchange& each) { return each.repeats != 0; });
    return requests;
}

}  // namespace zelto::wire
