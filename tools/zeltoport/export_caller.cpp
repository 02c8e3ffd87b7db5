#include "tools/zeltoport/export_caller.h"

#include <fmt/core.h>

#include "platform/coredll/linux/device_admin.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/wire/results.h"

namespace zelto::tools {

Connect ExportCaller::Chosen(Connect usual) const {
    if (choice_.empty())
        return usual;
    return choice_ == "init" ? Connect::kInit : choice_ == "find" ? Connect::kFind : Connect::kNone;
}

bool ExportCaller::Prepare(Connect usual) {
    const Connect connect = Chosen(usual);
    turn_.emplace(patience_);
    RequireWorkingDevice();
    PassLeftQueues();
    coredll::Disconnect();  // the library has a connection of its own
    if (connect == Connect::kNone)
        return true;
    const bool init = connect == Connect::kInit;
    const int32_t result = init ? ZeltoNavPort_Init() : ZeltoNavPort_IsOpen();
    if (result != ZELTO_NAV_PORT_OK)
        Finish(init ? "ZeltoNavPort_Init" : "ZeltoNavPort_IsOpen", result);
    return result == ZELTO_NAV_PORT_OK;
}

void ExportCaller::Finish(const std::string& name, int32_t result, const std::string& data,
                          const nlohmann::json& details) {
    const std::string meaning = wire::DescribeResult(name, result);
    nlohmann::json object = {{"export", name}, {"result", result}, {"meaning", meaning}};
    object.update(details);
    std::string outcome = fmt::format("{}: {} ({})", name, result, meaning);
    if (const int scale = coredll::TimeScale(); scale != 1) {
        outcome += fmt::format(", all waits divided by {}", scale);
        object["time_scale"] = scale;
    }
    session_.ReportCall(static_cast<ExitStatus>(wire::ExitStatusOf(name, result)), outcome, data,
                        object);
}

void ExportCaller::LetOthersIn() {
    if (!turn_ || !turn_->IsLong())
        return;
    turn_.reset();
    Sleep(kTurnGap);
    turn_.emplace(patience_);
    AwaitLateReplies();
}

void ExportCaller::Call(const std::string& name, const std::function<int32_t()>& call,
                        Connect usual) {
    if (Prepare(usual))
        Finish(name, call());
}

std::u16string WideArgument(const std::string& text) {
    std::u16string wide;
    if (!WideFromUtf8(text, wide))
        throw CommandError("The text \"" + Printable(text) + "\" is not UTF-8.");
    return wide;
}

}  // namespace zelto::tools
