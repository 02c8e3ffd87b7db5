#include "tools/zeltoport/command_line.h"

#include <algorithm>
#include <fmt/core.h>

#include "tools/text/nearest.h"
#include "tools/text/wide.h"

namespace zelto::tools {

namespace {

std::string Unknown(const char* what, const std::string& word,
                    const std::vector<std::string>& known) {
    return fmt::format("\"{}\" is no {}; the nearest is \"{}\".", Printable(word), what,
                       Nearest(word, known));
}

std::vector<std::string> SubcommandNames(CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* each : app.get_subcommands({}))
        names.push_back(each->get_name());
    return names;
}

std::vector<std::string> OptionNames(CLI::App& app, CLI::App& command) {
    std::vector<std::string> names;
    for (CLI::App* const owner : {&app, &command}) {
        for (const CLI::Option* option : owner->get_options()) {
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
        }
    }
    return names;
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Follows the words of the subcommand; `stray` is the first word that should go on and does not.
CLI::App* Follow(CLI::App& app, const std::vector<std::string>& arguments, std::string& words,
                 std::string& stray) {
    CLI::App* command = &app;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--connect" || word == "--wait") {
            ++i;  // its value
            continue;
        }
        if (word == "--")
            break;
        const std::vector<std::string> names = SubcommandNames(*command);
        if (word.starts_with('-') || names.empty())
            continue;
        if (!Contains(names, word)) {
            stray = word;
            break;
        }
        command = command->get_subcommand(word);
        words += (words.empty() ? "" : " ") + word;
    }
    return command;
}

}  // namespace

std::string SubcommandWords(CLI::App& app, const std::vector<std::string>& arguments) {
    std::string words;
    std::string stray;
    Follow(app, arguments, words, stray);
    return words;
}

std::string UnknownWord(CLI::App& app, const std::vector<std::string>& arguments) {
    std::string words;
    std::string stray;
    CLI::App* const command = Follow(app, arguments, words, stray);
    if (!stray.empty())
        return Unknown("subcommand", stray, SubcommandNames(*command));
    const std::vector<std::string> options = OptionNames(app, *command);
    for (const std::string& argument : arguments) {
        if (argument == "--")
            break;
        const std::string name = argument.substr(0, argument.find('='));
        if (name.starts_with("--") && !Contains(options, name))
            return Unknown("option", name, options);
    }
    return "";
}

}  // namespace zelto::tools
