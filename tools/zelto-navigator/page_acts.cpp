#include "tools/zelto-navigator/page_acts.h"

#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace zelto::navigator {

namespace {

using nlohmann::json;

constexpr int kMaxDelay = 60'000;  // ms

int64_t Now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

Moment ReadMove(const json& act) {
    Moment moment;
    moment.time = Now();
    moment.place = {act.at("latitude").get<double>(), act.at("longitude").get<double>()};
    moment.speed = act.value("speed", 0.);
    moment.course = act.value("course", 0.);
    if (!moment.place.InWorld())
        throw std::out_of_range("the place is not on earth");
    if (!(moment.speed >= 0 && moment.speed < 1e4) || !(moment.course >= 0 && moment.course <= 360))
        throw std::out_of_range("a speed of 0 to 10000 m/s and a course of 0 to 360, please");
    return moment;
}

Faults ReadFaults(const json& wanted) {
    Faults faults;
    faults.silent = wanted.value("silent", false);
    const int delay = wanted.value("delay", 0);
    if (delay < 0 || delay > kMaxDelay)
        throw std::out_of_range("a delay of 0 to 60000 ms, please");
    faults.delay = static_cast<DWORD>(delay);
    if (wanted.contains("reply") && wanted.at("reply").is_string())
        faults.reply = wanted.at("reply").get<std::string>();
    faults.letters = wanted.value("letters", "");
    return faults;
}

}  // namespace

std::optional<Act> ReadAct(const std::string& text, std::string& why) {
    try {
        const json act = json::parse(text);
        const std::string kind = act.at("act");
        if (kind == "answer")
            return BoxAnswer{act.at("box").get<uint64_t>(), act.at("button").get<std::string>()};
        if (kind == "move")
            return ReadMove(act);
        if (kind == "faults")
            return ReadFaults(act.at("faults"));
        why = "there is no act of that name";
    } catch (const json::exception& error) {
        why = error.what();
    } catch (const std::out_of_range& error) {
        why = error.what();
    }
    return std::nullopt;
}

json FaultsInJson(const Faults& faults) {
    return {{"silent", faults.silent},
            {"delay", faults.delay},
            {"reply", faults.reply ? json(*faults.reply) : json()},
            {"letters", faults.letters}};
}

}  // namespace zelto::navigator
