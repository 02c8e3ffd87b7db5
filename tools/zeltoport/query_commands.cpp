// Questions to the navigator, and message boxes in it.

#include <fmt/core.h>
#include <memory>

#include "platform/coredll/linux/device_admin.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/zeltoport/command.h"

namespace zelto::tools {

namespace {

// The largest reply that one queue message can carry.
constexpr uint32_t kReplySize = 1024;

// As it came, but for a terminal, which it might steer.
std::string Shown(const std::string& text) {
    return coredll::IsTerminal(stdout) ? Printable(text) : text;
}

void CallGetString(ExportCaller& caller, const std::string& query) {
    if (!caller.Prepare())
        return;
    std::string answer(kReplySize + 1, '\0');
    const int32_t result = ZeltoNavPort_GetString(query.c_str(), kReplySize, answer.data());
    answer.resize(answer.find('\0'));
    if (result != ZELTO_NAV_PORT_OK)
        caller.Finish("ZeltoNavPort_GetString", result);
    else
        caller.Finish("ZeltoNavPort_GetString", result, Shown(answer), {{"text", answer}});
}

void AddGet(CLI::App& app, ExportCaller& caller) {
    auto query = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("get", "Ask the navigator for a text");
    command->add_option("query", *query, "For example version; see zelto-navigator --help")
        ->required();
    command->callback([=, &caller] { CallGetString(caller, *query); });
}

void CallStreet(ExportCaller& caller) {
    if (!caller.Prepare())
        return;
    ZeltoNavPort_Wide street[kReplySize] = {};
    const int32_t result = ZeltoNavPort_PositionStreet(street);
    const std::string text = Utf8FromWide(street);
    caller.Finish("ZeltoNavPort_PositionStreet", result, Shown(text), {{"text", text}});
}

void AddStreet(CLI::App& app, ExportCaller& caller) {
    auto narrow = std::make_shared<bool>(false);
    CLI::App* command = app.add_subcommand("street", "Ask for the position and its street");
    command->add_flag("--narrow", *narrow, "Call the 8-bit form of the export");
    command->callback([=, &caller] {
        if (*narrow)
            caller.Call("ZeltoNavPort_PositionStreetA", ZeltoNavPort_PositionStreetA);
        else
            CallStreet(caller);
    });
}

struct Box {
    std::string title;
    std::string text;
    int32_t style = 0;
    int32_t seconds = 0;
    bool narrow = false;
};

void CallMessageBox(ExportCaller& caller, const Box& box) {
    if (box.narrow) {
        caller.Call("ZeltoNavPort_MessageBoxA", [&] {
            return ZeltoNavPort_MessageBoxA(box.title.c_str(), box.text.c_str(), box.style,
                                            box.seconds);
        });
        return;
    }
    const std::u16string title = WideArgument(box.title);
    const std::u16string text = WideArgument(box.text);
    caller.Call("ZeltoNavPort_MessageBox", [&] {
        return ZeltoNavPort_MessageBox(title.c_str(), text.c_str(), box.style, box.seconds);
    });
}

void AddMessageBox(CLI::App& app, ExportCaller& caller) {
    auto box = std::make_shared<Box>();
    CLI::App* command = app.add_subcommand("message-box", "Show a message box in the navigator");
    command->add_option("title", box->title)->required();
    command->add_option("text", box->text)->required();
    command->add_option("style", box->style, "The first number sent");
    command->add_option("seconds", box->seconds, "The second number sent");
    command->add_flag("--narrow", box->narrow, "Call the 8-bit form of the export");
    command->callback([=, &caller] { CallMessageBox(caller, *box); });
}

}  // namespace

void AddQueryCommands(CLI::App& app, ExportCaller& caller) {
    AddGet(app, caller);
    AddStreet(app, caller);
    AddMessageBox(app, caller);
}

}  // namespace zelto::tools
