// DString against std::string: appending, and the lines that requests are made of.

#include <charconv>
#include <cstdio>
#include <fmt/format.h>
#include <string>

#include "bench/contest.h"
#include "common/text/dstring.h"
#include "plugins/zelto_port_dll/request_line.h"

namespace zelto::bench {
namespace {

template <class Text>
void AppendCharacters(int64_t times, int count) {
    for (int64_t run = 0; run < times; ++run) {
        Text text;
        for (int i = 0; i < count; ++i) {
            text += 'x';
            benchmark::DoNotOptimize(text.c_str());
        }
    }
}

template <class Text>
void AppendWords(int64_t times, int count) {
    for (int64_t run = 0; run < times; ++run) {
        Text text;
        for (int i = 0; i < count; i += 10) {
            text += "0123456789";
            benchmark::DoNotOptimize(text.c_str());
        }
    }
}

void Append(benchmark::State& state, int count, bool words) {
    const int64_t times = 400'000 / count;
    const auto ours = words ? AppendWords<DString> : AppendCharacters<DString>;
    const auto peer = words ? AppendWords<std::string> : AppendCharacters<std::string>;
    Contest(state, static_cast<double>(times) * count, "3 std::string",
            {{"ours", [=] { ours(times, count); }}, {"std::string", [=] { peer(times, count); }}});
}

constexpr int kLines = 50'000;

template <class Build>
std::function<void()> Lines(Build build) {
    return [=] {
        for (int i = 0; i < kLines; ++i)
            build(42.5 + i * 1e-5, 1.5 - i * 1e-5, i);
    };
}

// Number by number, as to_chars is used into a string that is kept.
void AppendFixed(std::string& text, double value, int decimals) {
    char digits[40];
    text.append(digits,
                std::to_chars(digits, digits + 40, value, std::chars_format::fixed, decimals).ptr);
}

void AppendWhole(std::string& text, int value) {
    char digits[12];
    text.append(digits, std::to_chars(digits, digits + 12, value).ptr);
}

void Goto(benchmark::State& state) {
    Contest(state, kLines, "1.2 std::string",
            {{"ours", Lines([](double x, double y, int) {
                  DString arguments;
                  arguments.reserve(64, true);
                  arguments.set_decimals(7);
                  arguments += x;
                  arguments += ",";
                  arguments += y;
                  arguments += ",,,";
                  arguments += static_cast<unsigned char>(1);
                  const RequestLine line("S", arguments.c_str());
                  benchmark::DoNotOptimize(line.Bytes());
              })},
             {"std::string", Lines([](double x, double y, int) {
                  std::string line = "S|";
                  line.reserve(64);
                  AppendFixed(line, x, 7);
                  line += ',';
                  AppendFixed(line, y, 7);
                  line += ",,,1\n";
                  benchmark::DoNotOptimize(line.data());
              })},
             {"fmt", Lines([](double x, double y, int) {
                  fmt::memory_buffer line;
                  fmt::format_to(std::back_inserter(line), "S|{:.7f},{:.7f},,,{}\n", x, y, 1);
                  benchmark::DoNotOptimize(line.data());
              })},
             {"snprintf", Lines([](double x, double y, int) {
                  char line[64];
                  std::snprintf(line, sizeof line, "S|%.7f,%.7f,,,%d\n", x, y, 1);
                  benchmark::DoNotOptimize(line);
              })}});
}

void MessageBoxLine(benchmark::State& state) {
    Contest(state, kLines, "1.2 std::string",
            {{"ours", Lines([](double, double, int i) {
                  DString arguments;
                  arguments.reserve(160, true);
                  arguments += "1|";
                  arguments += "Harbour Street";
                  arguments += "|";
                  arguments += "Keep right at the fork";
                  arguments += "|";
                  arguments += i;
                  arguments += "|";
                  arguments += 48;
                  const RequestLine line("T", arguments.c_str());
                  benchmark::DoNotOptimize(line.Bytes());
              })},
             {"std::string", Lines([](double, double, int i) {
                  std::string line = "T|1|";
                  line.reserve(64);
                  line += "Harbour Street";
                  line += '|';
                  line += "Keep right at the fork";
                  line += '|';
                  AppendWhole(line, i);
                  line += '|';
                  AppendWhole(line, 48);
                  line += '\n';
                  benchmark::DoNotOptimize(line.data());
              })},
             {"fmt", Lines([](double, double, int i) {
                  fmt::memory_buffer line;
                  fmt::format_to(std::back_inserter(line), "T|1|{}|{}|{}|{}\n", "Harbour Street",
                                 "Keep right at the fork", i, 48);
                  benchmark::DoNotOptimize(line.data());
              })},
             {"snprintf", Lines([](double, double, int i) {
                  char line[96];
                  std::snprintf(line, sizeof line, "T|1|%s|%s|%d|%d\n", "Harbour Street",
                                "Keep right at the fork", i, 48);
                  benchmark::DoNotOptimize(line);
              })}});
}

const bool kAdded = [] {
    for (const int count : {1'000, 20'000, 400'000}) {
        for (const bool words : {false, true})
            AddRow("appending " + std::string(words ? "ten at a time" : "characters") + "/" +
                       std::to_string(count),
                   [=](benchmark::State& state) { Append(state, count, words); });
    }
    AddRow("request line/Goto", Goto);
    AddRow("request line/message box", MessageBoxLine);
    return true;
}();

}  // namespace
}  // namespace zelto::bench
