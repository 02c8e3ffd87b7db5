// zeltoport describe: the calls and results of the library, from the table of both.

#include <charconv>
#include <fmt/format.h>
#include <memory>

#include "tools/text/wide.h"
#include "tools/wire/calls.h"
#include "tools/wire/results.h"
#include "tools/zeltoport/command.h"

namespace zelto::tools {

namespace {

using nlohmann::json;
using wire::Call;
using wire::Result;

json InJson(const Call& call) {
    json arguments = json::array();
    for (const wire::Argument& argument : call.Arguments()) {
        json object = {{"name", argument.name}, {"type", wire::Name(argument.type)}};
        object["format"] = argument.written == nullptr ? json() : json(argument.written);
        arguments.push_back(object);
    }
    return {{"export", call.export_name},
            {"symbol", call.symbol},
            {"letter", call.letter == 0 ? "" : std::string(1, call.letter)},
            {"request", call.arguments},
            {"reply", call.reply},
            {"zeltoport", call.command},
            {"help", call.help},
            {"arguments", arguments}};
}

json InJson(const Result& result) {
    json object = {{"code", result.code},
                   {"meaning", result.meaning},
                   {"exit_status", result.exit_status},
                   {"causes", result.Causes()}};
    if (result.command != nullptr)
        object["command"] = result.command;
    else
        object["why_not"] = result.why_not;
    return object;
}

std::string InWords(const Call& call) {
    std::string words =
        fmt::format("{}\n  {}\n  zeltoport {}\n", call.symbol, call.help, call.command);
    if (call.letter == 0)
        words += "  sends nothing\n";
    else
        words +=
            fmt::format("  sends \"{}|{}\", takes {}\n", call.letter, call.arguments, call.reply);
    for (const wire::Argument& argument : call.Arguments())
        words += fmt::format("  {:<12} {}, {}\n", argument.name, wire::Name(argument.type),
                             argument.written == nullptr ? "not sent" : argument.written);
    return words;
}

std::string InWords(const Result& result) {
    std::string words = fmt::format("{}  {}\n", result.code, result.meaning);
    for (const char* cause : result.Causes())
        words += fmt::format("  because  {}\n", cause);
    words += result.command != nullptr ? fmt::format("  shown by {}\n", result.command)
                                       : fmt::format("  not to be shown: {}\n", result.why_not);
    return words;
}

// What the word names; none is everything.
bool Concerns(const std::string& word, const Call& call) {
    return word.empty() || word == call.export_name || word == call.symbol ||
           word == call.ShortName() || word == call.command;
}

bool Concerns(const std::string& word, const Result& result) {
    return word.empty() || word == std::to_string(result.code);
}

template <class Entry>
void Add(std::span<const Entry> entries, const std::string& word, std::string& words, json& list) {
    list = json::array();
    for (const Entry& entry : entries) {
        if (!Concerns(word, entry))
            continue;
        words += (words.empty() ? "" : "\n") + InWords(entry);
        list.push_back(InJson(entry));
    }
}

void Describe(Session& session, const std::string& word) {
    std::string words;
    json object;
    Add(wire::Calls(), word, words, object["calls"]);
    Add(wire::Results(), word, words, object["results"]);
    if (words.empty())
        throw CommandError(fmt::format(
            "\"{}\" is no call and no result; \"zeltoport describe\" lists all.", Printable(word)));
    words.pop_back();
    session.Report(kExitSuccess, words, object);
}

}  // namespace

void AddDescribeCommand(CLI::App& app, Session& session) {
    auto word = std::make_shared<std::string>();
    CLI::App* command =
        app.add_subcommand("describe", "Explain the library's calls and results, or one of them");
    command->add_option("topic", *word, "For example Goto or 1007");
    command->callback([=, &session] { Describe(session, *word); });
}

}  // namespace zelto::tools
