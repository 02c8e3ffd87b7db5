// The wire lens: what a recording's events say of each request, from its announcement to its reply.

#ifndef ZELTO_TOOLS_WIRE_LENS_H
#define ZELTO_TOOLS_WIRE_LENS_H

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/wire/calls.h"
#include "tools/wire/recording.h"

namespace zelto::wire {

// One request of a client and what came of it, or the fresh announcement of one that had no reply:
// what comes of that is told of the request, too. Times are ns since the host's boot, 0 for what
// did not happen.
struct Exchange {
    uint32_t client = 0;     // process
    uint32_t navigator = 0;  // process; 0 while no process took the announcement
    int32_t generation = 0;  // of the queue pair
    uint32_t window = 0;     // announced to

    int64_t start = 0;  // the first event of the client
    int64_t start_wall = 0;
    int64_t announced = 0;
    int64_t taken = 0;
    int64_t received = 0;  // the request, by the navigator
    int64_t replied = 0;
    int64_t end = 0;  // of the client's wait, with a reply or without

    std::string request;  // as far as the witness keeps it, without line feed
    std::string reply;
    uint32_t request_size = 0;
    uint32_t reply_size = 0;      // also of one that was refused
    uint32_t room = 0;            // what the client read of the reply
    int32_t stray_reply = 0;      // the generation of the queues to which it went instead
    size_t repeats = 0;           // index + 1 of the exchange whose request was announced again
    bool second_client = false;   // another process held the client's end of the queues
    bool reply_read = false;      // by the client
    uint32_t reply_taker = 0;     // the other client that read the reply
    uint32_t waited = 0;          // ms; the time-outs of the client's reads together
    uint32_t announce_error = 0;  // system's errors
    uint32_t write_error = 0;
    uint32_t read_error = 0;
    uint32_t reply_error = 0;  // of the navigator, when it wrote the reply
    bool navigator_stopped = false;
    bool navigator_ended = false;
    bool client_ended = false;
    bool client_left = false;    // it closed the queues
    std::vector<size_t> events;  // indices into the recording, in order

    // The client made its queues and left, with nothing announced and nothing written.
    bool GaveUpUnannounced() const;
    // Null when no request was seen, or no function sends such a one.
    const Call* FindCall() const;
    // The library's result; nothing while the exchange goes on or was given up.
    std::optional<int32_t> Result() const;
    // From the start to the end of the client's wait; 0 while it goes on.
    double Milliseconds() const;
};

// The name of a queue of the protocol, taken apart; nothing for another queue's.
struct QueueName {
    int32_t generation = 0;
    bool requests = false;  // else it carries replies
};
std::optional<QueueName> ParseQueueName(std::u16string_view name);

// The library's result for a reply to a request of that letter.
int32_t ResultOfReply(char letter, const std::string& reply);

// Takes events one by one. Thread safety: none; used by one thread.
class Lens {
  public:
    void Take(const coredll::WitnessEvent& event);
    // In the order of their beginnings, fresh announcements included.
    const std::vector<Exchange>& Exchanges() const { return exchanges_; }

  private:
    using Key = std::pair<uint32_t, int32_t>;  // process, generation

    void TakeWindow(const coredll::WitnessEvent& event);
    void TakeQueue(const coredll::WitnessEvent& event);
    void TakeProcess(const coredll::WitnessEvent& event);
    void TakeAnnouncement(const coredll::WitnessEvent& event, int32_t generation);
    void TakeTaken(const coredll::WitnessEvent& event, int32_t generation);
    void ClientSide(Exchange& exchange, const coredll::WitnessEvent& event, bool request_queue);
    void NavigatorSide(Exchange& exchange, const coredll::WitnessEvent& event, bool request_queue);
    void TakeStrayReply(const coredll::WitnessEvent& event, int32_t generation);
    void FindOwnerOfReply(const coredll::WitnessEvent& event, int32_t generation);
    Exchange& Begin(const coredll::WitnessEvent& event, int32_t generation);
    Exchange* Find(const std::map<Key, size_t>& of, uint32_t process, int32_t generation);
    // An exchange and the one that it repeats.
    template <class Change>
    void Apply(Exchange& exchange, Change change);
    std::span<Exchange> Recent();

    std::vector<Exchange> exchanges_;
    std::map<Key, size_t> of_client_;      // the last one of a client with a generation
    std::map<Key, size_t> of_navigator_;   // the last one that a navigator took
    std::map<uint32_t, size_t> last_;      // of a client
    std::map<uint32_t, uint32_t> owners_;  // of windows
    size_t next_event_ = 0;
};

// All requests of a recording.
std::vector<Exchange> Exchanges(const Recording& recording);

}  // namespace zelto::wire

#endif
