#include "tools/zeltoport/torture_report.h"

#include <algorithm>
#include <filesystem>
#include <fmt/core.h>
#include <iterator>
#include <sstream>
#ifdef ZELTO_HAS_GPX
#include <pugixml.hpp>
#endif

#include "tools/page/page.h"
#include "tools/text/wide.h"
#include "tools/wire/explain.h"
#include "tools/zeltoport/output_file.h"
#include "tools/zeltoport/session.h"

namespace zelto::tools {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* kOutcomes[] = {"handled", "wrong success", "hang", "crash", "not reached"};

std::string EscapeHtml(const std::string& text) {
    std::string escaped;
    for (const char c : Printable(text)) {
        if (c == '<' || c == '>' || c == '&' || c == '"')
            escaped += fmt::format("&#{};", static_cast<int>(c));
        else
            escaped += c;
    }
    return escaped;
}

std::string PageName(const TortureVerdict& verdict) {
    return verdict.fault + ".html";
}

// The matrix: one row a fault, each with a link to its page.
std::string Matrix(const std::vector<TortureVerdict>& verdicts, int time_scale) {
    std::string rows;
    for (const TortureVerdict& verdict : verdicts)
        rows += fmt::format(
            "<tr class=\"{}\"><td><a href=\"{}\">{}</a></td><td>{}</td><td>{}</td><td>{:.2f} s</td>"
            "<td>{}</td></tr>\n",
            verdict.as_expected ? "good" : "bad", EscapeHtml(PageName(verdict)),
            EscapeHtml(verdict.fault), NameOf(verdict.outcome), verdict.status, verdict.seconds,
            EscapeHtml(verdict.why));
    return fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Faults of the "
        "navigator</title>\n<meta name=\"viewport\" content=\"width=device-width\">\n<style>"
        ":root{{color-scheme:light dark;font-family:sans-serif}}"
        "td,th{{padding:.3em .8em;text-align:left;vertical-align:top}}"
        ".bad td:nth-child(2){{font-weight:bold;color:#c33}}</style></head>\n<body><h1>Faults of "
        "the navigator</h1>\n<p>{} of {} as expected{}.</p>\n<table><tr><th>fault</th><th>outcome"
        "</th><th>exit status</th><th>time</th><th>first failed call</th></tr>\n{}</table></body>"
        "</html>\n",
        std::count_if(verdicts.begin(), verdicts.end(),
                      [](const auto& each) { return each.as_expected; }),
        verdicts.size(),
        time_scale == 1 ? "" : fmt::format("; all waits were divided by {}", time_scale), rows);
}

}  // namespace

const char* NameOf(Outcome outcome) {
    return kOutcomes[static_cast<size_t>(outcome)];
}

std::optional<Outcome> OutcomeOf(const std::string& name) {
    const auto* const found = std::find(std::begin(kOutcomes), std::end(kOutcomes), name);
    if (found == std::end(kOutcomes))
        return std::nullopt;
    return static_cast<Outcome>(found - std::begin(kOutcomes));
}

std::string OutcomesInWords() {
    std::string words;
    for (const char* name : kOutcomes)
        words += (words.empty() ? "\"" : ", \"") + std::string(name) + "\"";
    return words;
}

std::string LineOf(const TortureVerdict& verdict) {
    std::string line = fmt::format("{:<18} {:<14} {}", verdict.fault, NameOf(verdict.outcome),
                                   verdict.as_expected ? "" : "NOT AS EXPECTED");
    line += fmt::format(" exit status {}, {:.2f} s", verdict.status, verdict.seconds);
    if (!verdict.why.empty())
        line += "\n    " + verdict.why;
    if (!verdict.kept.empty())
        line += "\n    " + verdict.kept;
    return line;
}

json ToJson(const std::vector<TortureVerdict>& verdicts, int time_scale) {
    json list = json::array();
    for (const TortureVerdict& verdict : verdicts)
        list.push_back({{"fault", verdict.fault},
                        {"outcome", NameOf(verdict.outcome)},
                        {"as_expected", verdict.as_expected},
                        {"exit_status", verdict.status},
                        {"seconds", verdict.seconds},
                        {"why", verdict.why},
                        {"recording", verdict.kept}});
    return {{"time_scale", time_scale}, {"faults", list}};
}

#ifdef ZELTO_HAS_GPX
void WriteJunit(const std::vector<TortureVerdict>& verdicts, int time_scale,
                const std::string& path) {
    pugi::xml_document document;
    pugi::xml_node suite = document.append_child("testsuites").append_child("testsuite");
    suite.append_attribute("name") = "zeltoport torture";
    suite.append_attribute("tests") = static_cast<unsigned>(verdicts.size());
    suite.append_attribute("failures") = static_cast<unsigned>(std::count_if(
        verdicts.begin(), verdicts.end(), [](const auto& each) { return !each.as_expected; }));
    pugi::xml_node property = suite.append_child("properties").append_child("property");
    property.append_attribute("name") = "time-scale";
    property.append_attribute("value") = time_scale;
    for (const TortureVerdict& verdict : verdicts) {
        pugi::xml_node test = suite.append_child("testcase");
        test.append_attribute("classname") = "torture";
        test.append_attribute("name") = verdict.fault.c_str();
        test.append_attribute("time") = fmt::format("{:.3f}", verdict.seconds).c_str();
        const std::string words = Printable(LineOf(verdict));
        if (!verdict.as_expected)
            test.append_child("failure").append_attribute("message") = words.c_str();
        test.append_child("system-out").text() = words.c_str();
    }
    std::ostringstream text;
    document.save(text, "  ");
    WriteOutput(path, text.str());
}
#else
void WriteJunit(const std::vector<TortureVerdict>&, int, const std::string&) {
    throw CommandError("This zeltoport was built without pugixml, which writes XML.");
}
#endif

void WritePages(const std::vector<TortureVerdict>& verdicts, int time_scale,
                const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    for (const TortureVerdict& verdict : verdicts)
        WriteOutput((fs::path(folder) / PageName(verdict)).string(),
                    RenderPage(wire::ToJson(verdict.recording)));
    WriteOutput((fs::path(folder) / "index.html").string(), Matrix(verdicts, time_scale));
}

}  // namespace zelto::tools
