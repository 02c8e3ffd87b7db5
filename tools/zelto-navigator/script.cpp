#include "tools/zelto-navigator/script.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>
#include <iterator>
#include <string_view>

#include "tools/text/nearest.h"
#include "tools/text/wide.h"
#include "tools/wire/explain.h"
#include "tools/zelto-navigator/fields.h"

namespace zelto::navigator {

namespace {

using nlohmann::json;

constexpr FaultName kFaults[] = {
    {Fault::kDeaf, "deaf", "takes announcements and does nothing about them"},
    {Fault::kSilent, "silent", "carries the request out and never replies"},
    {Fault::kLate, "late", "replies after 700 ms, or what delay_ms says"},
    {Fault::kDoubled, "doubled", "replies twice"},
    {Fault::kTruncated, "truncated", "replies one byte"},
    {Fault::kTooLong, "too-long", "replies more than the client has room for"},
    {Fault::kWrongKind, "wrong-kind", "replies of no known kind"},
    {Fault::kGarbage, "garbage", "replies bytes that are no text"},
    {Fault::kRefuse, "refuse=N", "refuses with the number N"},
    {Fault::kOtherGeneration, "other-generation", "replies to queues of another generation"},
    {Fault::kClosesWindow, "closes-window", "closes its window in the place of a reply, and ends"},
    {Fault::kDiesBeforeReply, "dies-before-reply", "ends at once when it has read the request"},
    {Fault::kDiesAfterReply, "dies-after-reply", "ends at once when it has replied"},
};

constexpr std::string_view kRefuse = "refuse=";
constexpr std::string_view kConnecting = "F|0";

std::string WithoutLineFeed(std::string text) {
    if (text.ends_with('\n'))
        text.pop_back();
    return text;
}

// Whether the text is the pattern, in which * stands for any text.
bool Fits(std::string_view text, std::string_view pattern) {
    const size_t star = pattern.find('*');
    if (star == pattern.npos)
        return text == pattern;
    if (!text.starts_with(pattern.substr(0, star)))
        return false;
    const std::string_view rest = pattern.substr(star + 1);
    for (size_t from = star; from <= text.size(); ++from) {
        if (Fits(text.substr(from), rest))
            return true;
    }
    return false;
}

bool FitsValue(const std::string& text, const json& wanted) {
    if (wanted.is_string())
        return Fits(text, wanted.get<std::string>());
    constexpr double kLastDigit = 1e-6;  // of the coordinates that the library writes
    const std::optional<double> number = ReadNumber(text);
    return number && std::abs(*number - wanted.get<double>()) < kLastDigit;
}

// The line on which each object of the list "steps" begins, so that a fault of it can be found.
std::vector<int> LinesOfSteps(const std::string& text) {
    std::vector<int> lines;
    int line = 1;
    int depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const std::string_view rest = std::string_view(text).substr(i);
        if (rest.starts_with("//") || rest.starts_with("/*")) {
            const size_t end = rest[1] == '/' ? rest.find('\n') : rest.find("*/", 2);
            const size_t skipped = std::min(end, rest.size() - 1);
            line += static_cast<int>(std::count(
                rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(skipped), '\n'));
            i += rest[1] == '/' ? skipped - 1 : skipped + 1;
        } else if (text[i] == '"') {
            for (++i; i < text.size() && text[i] != '"'; ++i)
                i += text[i] == '\\' ? 1 : 0;
        } else if (text[i] == '\n') {
            ++line;
        } else if (text[i] == '{' || text[i] == '[') {
            if (++depth == 3 && text[i] == '{')
                lines.push_back(line);
        } else if (text[i] == '}' || text[i] == ']') {
            --depth;
        }
    }
    return lines;
}

int LineAt(const std::string& text, size_t byte) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size()));
    return 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
}

// Throws for a member that is not one of these.
void RequireKnown(const json& object, const std::vector<std::string>& known) {
    for (const auto& [name, value] : object.items()) {
        if (std::find(known.begin(), known.end(), name) == known.end())
            throw ScriptError(fmt::format("there is no member \"{}\"; the nearest is \"{}\"",
                                          tools::Printable(name), tools::Nearest(name, known)));
    }
}

uint32_t Count(const json& step, const char* name, uint32_t otherwise) {
    if (!step.contains(name))
        return otherwise;
    if (!step[name].is_number_unsigned() || step[name].get<uint64_t>() > kAlways)
        throw ScriptError(fmt::format("\"{}\" is no whole number from 0 on", name));
    return step[name].get<uint32_t>();
}

std::string Text(const json& step, const char* name) {
    if (!step[name].is_string())
        throw ScriptError(fmt::format("\"{}\" is no text", name));
    return step[name].get<std::string>();
}

void ReadCall(const json& object, Step& step) {
    const std::string name = Text(object, "call");
    step.call = wire::FindCall(name);
    if (step.call == nullptr || step.call->letter == 0) {
        std::vector<std::string> known;
        for (const wire::Call& call : wire::Calls()) {
            if (call.letter != 0)
                known.emplace_back(call.command);
        }
        throw ScriptError(fmt::format("\"{}\" is no call with a request; the nearest is \"{}\"",
                                      tools::Printable(name), tools::Nearest(name, known)));
    }
}

void ReadArguments(const json& object, Step& step) {
    if (!object["arguments"].is_object() || step.call == nullptr)
        throw ScriptError("\"arguments\" is an object beside \"call\"");
    std::vector<std::string> known;
    for (const auto& [name, value] : wire::FieldsOf(*step.call, ""))
        known.push_back(name);
    RequireKnown(object["arguments"], known);
    for (const auto& [name, value] : object["arguments"].items()) {
        if (!value.is_string() && !value.is_number())
            throw ScriptError(fmt::format("\"{}\" is neither a text nor a number", name));
        step.arguments[name] = value;
    }
}

Step ReadStep(const json& object, bool strict) {
    if (!object.is_object())
        throw ScriptError("a step is an object");
    RequireKnown(object,
                 {"request", "call", "arguments", "reply", "delay_ms", "fault", "skip", "times"});
    Step step;
    if (object.contains("request"))
        step.request = WithoutLineFeed(Text(object, "request"));
    if (object.contains("call"))
        ReadCall(object, step);
    if (object.contains("arguments"))
        ReadArguments(object, step);
    if (object.contains("reply"))
        step.reply = Text(object, "reply");
    if (object.contains("fault"))
        step.fault = FaultOf(Text(object, "fault"), step.refusal);
    step.delay = Count(object, "delay_ms", step.fault == Fault::kLate ? kLateByDefault : 0);
    step.skip = Count(object, "skip", 0);
    step.times = Count(object, "times", strict ? 1 : kAlways);
    if (strict && step.request.empty() && step.call == nullptr)
        throw ScriptError("a step of a strict script has a \"request\" or a \"call\"");
    if (!step.request.empty() && step.call != nullptr)
        throw ScriptError("a step has a \"request\" or a \"call\", not both");
    return step;
}

// The first field in which a request is not the line that a step wants.
std::string DifferenceOfLines(const std::string& asked, const std::string& wanted) {
    const wire::Call* const call = wanted.empty() ? nullptr : wire::FindCall(wanted[0]);
    if (call == nullptr || asked.empty() || asked[0] != wanted[0])
        return fmt::format("it is {}", tools::Printable(wanted));
    const auto fields = wire::FieldsOf(*call, asked);
    const auto others = wire::FieldsOf(*call, wanted);
    for (size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].second != others[i].second)
            return fmt::format("{} is {}, not {}", fields[i].first,
                               tools::Printable(fields[i].second),
                               tools::Printable(others[i].second));
    }
    return fmt::format("it is {}", tools::Printable(wanted));
}

// How much two requests have in common: the letter first, then the fields.
size_t Likeness(const std::string& request, const Step& step) {
    const wire::Call* const call = request.empty() ? nullptr : wire::FindCall(request[0]);
    const std::string other = step.request.empty() && step.call != nullptr
                                  ? std::string(1, step.call->letter)
                                  : step.request;
    if (call == nullptr || other.empty() || other[0] != request[0])
        return 0;
    size_t same = 1;
    const auto fields = wire::FieldsOf(*call, request);
    const auto others = wire::FieldsOf(*call, other);
    for (size_t i = 0; i < std::min(fields.size(), others.size()); ++i)
        same += fields[i].second == others[i].second ? 1 : 0;
    return same;
}

std::string InWords(const Step& step) {
    if (!step.request.empty())
        return tools::Printable(step.request);
    return step.call == nullptr ? "any request" : step.call->command;
}

}  // namespace

std::span<const FaultName> FaultNames() {
    return kFaults;
}

Fault FaultOf(const std::string& name, int& refusal) {
    if (name.starts_with(kRefuse)) {
        const auto number = ReadInteger(std::string_view(name).substr(kRefuse.size()));
        if (!number)
            throw ScriptError(fmt::format("\"{}\" names no number", tools::Printable(name)));
        refusal = *number;
        return Fault::kRefuse;
    }
    std::vector<std::string> known;
    for (const FaultName& each : kFaults) {
        if (name == each.name)
            return each.fault;
        known.emplace_back(each.name);
    }
    throw ScriptError(fmt::format("\"{}\" is no fault; the nearest is \"{}\"",
                                  tools::Printable(name), tools::Nearest(name, known)));
}

const char* NameOf(Fault fault) {
    const auto found = std::find_if(std::begin(kFaults), std::end(kFaults),
                                    [fault](const FaultName& each) { return each.fault == fault; });
    return found == std::end(kFaults) ? "" : found->name;
}

std::string Step::Difference(const std::string& asked) const {
    if (!request.empty())
        return asked == request ? "" : DifferenceOfLines(asked, request);
    if (call == nullptr)
        return "";
    if (asked.empty() || asked[0] != call->letter)
        return fmt::format("it is no {}", call->command);
    for (const auto& [name, value] : wire::FieldsOf(*call, asked)) {
        const auto wanted = arguments.find(name);
        if (wanted != arguments.end() && !FitsValue(value, wanted->second))
            return fmt::format("{} is {}, not {}", name, tools::Printable(value),
                               wanted->second.dump());
    }
    return "";
}

Script::Script(const std::string& text, const std::string& name) : name_(name) {
    json object;
    try {
        object = json::parse(text, nullptr, true, true);
    } catch (const json::parse_error& error) {
        throw ScriptError(
            fmt::format("{}, line {}: this is no JSON.", name, LineAt(text, error.byte)));
    }
    const std::vector<int> lines = LinesOfSteps(text);
    int line = 1;
    try {
        if (!object.is_object() || !object.contains("steps") || !object["steps"].is_array())
            throw ScriptError("a script is an object with a list \"steps\"");
        RequireKnown(object, {"steps", "strict"});
        if (object.contains("strict") && !object["strict"].is_boolean())
            throw ScriptError("\"strict\" is neither true nor false");
        strict_ = object.value("strict", true);
        for (const json& each : object["steps"]) {
            line = steps_.size() < lines.size() ? lines[steps_.size()] : line;
            steps_.push_back({ReadStep(each, strict_)});
            steps_.back().step.line = line;
        }
    } catch (const ScriptError& error) {
        throw ScriptError(fmt::format("{}, line {}: {}.", name, line, error.what()));
    }
}

const Step* Script::Take(const std::string& line) {
    const std::string request = WithoutLineFeed(line);
    if (strict_)
        return TakeStrictly(request);
    for (Use& use : steps_) {
        if (use.step.fault == Fault::kDeaf || !use.step.Difference(request).empty())
            continue;
        if (use.seen++ < use.step.skip || use.used == use.step.times)
            continue;
        ++use.used;
        return &use.step;
    }
    return nullptr;
}

const Step* Script::TakeAnnouncement() {
    for (Use& use : steps_) {
        if (strict_ || use.step.fault != Fault::kDeaf)
            continue;
        if (use.seen++ < use.step.skip || use.used == use.step.times)
            continue;
        ++use.used;
        return &use.step;
    }
    return nullptr;
}

const Step* Script::TakeStrictly(const std::string& request) {
    while (next_ < steps_.size() && steps_[next_].used == steps_[next_].step.times)
        ++next_;
    const bool fits = next_ < steps_.size() && steps_[next_].step.Difference(request).empty();
    if (!fits) {
        if (request != kConnecting)
            complaints_.push_back(Unexpected(request));
        return nullptr;
    }
    Use& use = steps_[next_];
    if (use.seen++ < use.step.skip)
        return nullptr;
    ++use.used;
    return &use.step;
}

std::string Script::Unexpected(const std::string& request) const {
    const auto rest = std::span(steps_).subspan(std::min(next_, steps_.size()));
    const auto nearest =
        std::max_element(rest.begin(), rest.end(), [&request](const Use& a, const Use& b) {
            return Likeness(request, a.step) < Likeness(request, b.step);
        });
    const std::string words =
        fmt::format("the request {} was not expected", tools::Printable(request));
    if (nearest == rest.end())
        return fmt::format("{}: {} has no further step", words, name_);
    const std::string difference = nearest->step.Difference(request);
    return fmt::format("{}: the nearest step is that of {}, line {} ({}): {}", words, name_,
                       nearest->step.line, InWords(nearest->step),
                       difference.empty() ? "it comes later" : difference);
}

std::vector<std::string> Script::Complaints() const {
    std::vector<std::string> complaints = complaints_;
    for (const Use& use : steps_) {
        if (strict_ && use.used < use.step.times)
            complaints.push_back(fmt::format("the step of {}, line {} ({}) was used {} times of {}",
                                             name_, use.step.line, InWords(use.step), use.used,
                                             use.step.times));
    }
    return complaints;
}

}  // namespace zelto::navigator
