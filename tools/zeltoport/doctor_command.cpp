// zeltoport doctor: the links between a client and its navigator, in order, up to the first that is
// broken.

#include <algorithm>
#include <fmt/core.h>
#include <system_error>

#include "platform/coredll/linux/device_admin.h"
#include "plugins/zelto_port_dll/protocol.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/wire/explain.h"
#include "tools/wire/results.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/device_state.h"
#include "tools/zeltoport/registered_navigator.h"

namespace zelto::tools {

namespace {

using nlohmann::json;

constexpr DWORD kPause = 10;             // ms
constexpr DWORD kStartPatience = 10000;  // ms
constexpr DWORD kEndPatience = 3000;     // ms

// A navigator that runs only for the examination, and ends with it.
class StartedNavigator {
  public:
    StartedNavigator() = default;
    ~StartedNavigator() {
        if (HWND window = FindWindowW(kWindowClass, nullptr); started_ && window != nullptr) {
            PostMessageW(window, WM_CLOSE, 0, 0);
            program_.Wait(kEndPatience);
        }
    }
    StartedNavigator(const StartedNavigator&) = delete;
    StartedNavigator& operator=(const StartedNavigator&) = delete;

    // What is wrong with a program that shows no navigator's window; "" when it does.
    std::string Start(const std::string& path) {
        const int failed = program_.Start({path}, coredll::ChildProgram::Output::kNowhere, true);
        if (failed != 0)
            return "it cannot be started: " + std::generic_category().message(failed);
        started_ = true;
        for (DWORD waited = 0; waited < kStartPatience; waited += kPause) {
            if (FindWindowW(kWindowClass, nullptr) != nullptr)
                return "";
            if (const auto end = program_.Wait(kPause))
                return fmt::format("it ended at once with {} {}",
                                   end->by_signal ? "signal" : "exit status", end->number);
        }
        return "it runs, and shows no window within 10 s";
    }

  private:
    coredll::ChildProgram program_;
    bool started_ = false;
};

// The links examined so far, and the first broken one.
class Examination {
  public:
    void Good(const std::string& link, const std::string& words) {
        text_ += fmt::format("{:<12} ok: {}\n", link, words);
        links_.push_back({{"link", link}, {"ok", true}, {"words", words}});
    }
    void Broken(const std::string& link, const std::string& words, ExitStatus status) {
        text_ += fmt::format("{:<12} BROKEN: {}\n", link, words);
        links_.push_back({{"link", link}, {"ok", false}, {"words", words}});
        status_ = status;
    }
    void Report(Session& session) {
        text_.pop_back();
        session.Report(status_, text_, {{"links", links_}});
    }
    bool IsGood() const { return status_ == kExitSuccess; }

  private:
    std::string text_;
    json links_ = json::array();
    ExitStatus status_ = kExitSuccess;
};

void ExamineDevice(Examination& examination) {
    std::string why;
    if (!coredll::CheckDevice(&why))
        return examination.Broken("device", why, kExitDevice);
    examination.Good("device",
                     coredll::PrintablePath(coredll::DevicePath()) + ", this user's alone");
    coredll::StoreReport store;
    const std::string problem = coredll::DeviceProblem();
    if (!problem.empty() || !coredll::DescribeStore(store, &why))
        return examination.Broken("store", problem.empty() ? why : problem, kExitDevice);
    examination.Good("store",
                     fmt::format("{} processes, {} windows, {} queues", store.processes.size(),
                                 store.windows.size(), store.queues.size()));
}

void ExamineRegistry(Examination& examination, std::string& program) {
    const std::string registered = RegisteredNavigator();
    if (registered.empty())
        return examination.Broken("registry",
                                  "no navigator is registered: \"zeltoport device init\" does it",
                                  kExitNoNavigator);
    std::u16string wide;
    if (WideFromUtf8(registered, wide) && wide.size() > kMaxNavigatorPath)
        return examination.Broken(
            "registry",
            fmt::format("the navigator's path has {} characters, the library takes {}: register a "
                        "shorter one with \"zeltoport device init --navigator\"",
                        wide.size(), kMaxNavigatorPath),
            kExitNoNavigator);
    examination.Good("registry", "names " + Printable(registered));
    program = registered;
    std::replace(program.begin(), program.end(), '\\', '/');
    if (!IsProgram(program))
        return examination.Broken(
            "executable",
            fmt::format("{} is no program; register one with \"zeltoport device init "
                        "--navigator\"",
                        Printable(program)),
            kExitNoNavigator);
    examination.Good("executable", "can be run");
}

void ExamineProcess(Examination& examination, const std::string& program,
                    StartedNavigator& started) {
    coredll::StoreReport store;
    coredll::DescribeStore(store, nullptr);
    const auto navigator = FindNavigator(store);
    if (!navigator) {
        const std::string problem = started.Start(program);
        if (!problem.empty())
            return examination.Broken(
                "process",
                fmt::format("none ran, so {} was started: {}", Printable(program), problem),
                kExitNoNavigator);
        return examination.Good("process", "none ran; one was started for this examination");
    }
    const std::vector<std::string> troubles = TroublesOf(store);
    if (!troubles.empty())
        return examination.Broken("process", troubles.front(), kExitTimeOut);
    examination.Good("process", fmt::format("{} runs", navigator->pid));
}

std::string After(int64_t from, int64_t to) {
    return fmt::format("after {:.2f} ms", static_cast<double>(to - from) / 1e6);
}

// The steps of one exchange as the witness saw them.
void ExamineSteps(Examination& examination, const wire::Exchange& exchange, int32_t result,
                  const std::string& reply) {
    const struct {
        const char* link;
        int64_t at;
        const char* words;
    } steps[] = {{"message", exchange.taken, "announced and taken"},
                 {"queues", exchange.received, "opened, the request read"},
                 {"reply", exchange.reply_read ? exchange.end : 0, "written and read"}};
    const auto status =
        static_cast<ExitStatus>(wire::ExitStatusOf("ZeltoNavPort_GetString", result));
    for (const auto& step : steps) {
        if (step.at == 0)
            return examination.Broken(step.link, wire::Why(exchange), status);
        examination.Good(step.link,
                         fmt::format("{} {}", step.words, After(exchange.announced, step.at)));
    }
    if (result != ZELTO_NAV_PORT_OK)
        return examination.Broken("result", wire::Why(exchange), status);
    examination.Good("result", "0");
    // The library converts by the system's code page, and a navigator may answer in another one.
    if (!IsUtf8(reply))
        return examination.Broken("code page",
                                  fmt::format("the reply \"{}\" is not UTF-8", Printable(reply)),
                                  kExitFailure);
    examination.Good("code page", fmt::format("\"{}\" is UTF-8", Printable(reply)));
}

uint32_t OwnProcess() {
    coredll::StoreReport store;
    coredll::DescribeStore(store, nullptr);
    const auto own = std::find_if(store.processes.begin(), store.processes.end(),
                                  [](const auto& each) { return each.own; });
    return own == store.processes.end() ? 0 : own->pid;
}

// One exchange of this process, recorded whether the device records or not.
void ExamineExchange(Examination& examination) {
    coredll::WitnessReport before;
    coredll::ReadWitness(before);
    coredll::RecordWitness(true);
    char reply[1000] = "";
    int32_t result = ZeltoNavPort_IsOpen();
    if (result == ZELTO_NAV_PORT_OK)
        result = ZeltoNavPort_GetString("version", sizeof reply, reply);
    coredll::RecordWitness(before.on);
    wire::Recording recording;
    coredll::WitnessReport after;
    coredll::ReadWitness(after, before.next);
    recording.events = std::move(after.events);
    const std::vector<wire::Exchange> exchanges = wire::Exchanges(recording);
    const auto own = std::find_if(exchanges.begin(), exchanges.end(),
                                  [&](const auto& each) { return each.client == OwnProcess(); });
    if (own == exchanges.end())
        return examination.Broken("window", "it went away: " + wire::DescribeResult("", result),
                                  kExitNoNavigator);
    examination.Good("window", "there");
    ExamineSteps(examination, *own, result, reply);
}

void Examine(ExportCaller& caller) {
    Examination examination;
    StartedNavigator started;
    std::string program;
    ExamineDevice(examination);
    if (examination.IsGood())
        ExamineRegistry(examination, program);
    if (examination.IsGood())
        ExamineProcess(examination, program, started);
    if (examination.IsGood() && caller.Prepare(Connect::kFind))
        ExamineExchange(examination);
    examination.Report(caller.session());
}

}  // namespace

void AddDoctorCommand(CLI::App& app, ExportCaller& caller) {
    app.add_subcommand("doctor",
                       "Examine the links between a client and the navigator, up to the first "
                       "that is broken")
        ->callback([&caller] { Examine(caller); });
}

}  // namespace zelto::tools
