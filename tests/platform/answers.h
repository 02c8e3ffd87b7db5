// What the documented calls answer, as tables: a call, its result, the last error where it sets
// one, and what it puts out. A row holds what is documented or was measured on other systems of the
// family; where this layer differs on purpose, the row says so.

#ifndef ZELTO_TESTS_PLATFORM_ANSWERS_H
#define ZELTO_TESTS_PLATFORM_ANSWERS_H

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

#include "platform/coredll/coredll.h"

namespace zelto::test {

struct Row {
    const char* call;
    std::string answer;
    std::string expected;
    const char* on_purpose = "";
};

#define CALL(call) #call, call

// Of several calls, one after the other.
inline std::string All(std::initializer_list<std::string> answers) {
    std::string text;
    for (const std::string& answer : answers)
        text += (text.empty() ? "" : ", ") + answer;
    return text;
}

inline void CheckRows(std::initializer_list<Row> rows) {
    for (const Row& row : rows)
        EXPECT_EQ(row.answer, row.expected) << row.call << ' ' << row.on_purpose;
}

constexpr DWORD kUntouched = 4711;  // no call sets it

inline std::string Answer(long long result, const std::string& output = "") {
    const DWORD error = GetLastError();
    std::string text = std::to_string(result);
    if (error != kUntouched)
        text += " error " + std::to_string(error);
    return output.empty() ? text : text + " " + output;
}

}  // namespace zelto::test

#endif
