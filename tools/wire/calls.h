// The 26 functions of the library as data: what each is called, takes, sends and gets back. Help,
// completion and every decoder of a request read this one table.

#ifndef ZELTO_TOOLS_WIRE_CALLS_H
#define ZELTO_TOOLS_WIRE_CALLS_H

#include <array>
#include <span>
#include <string_view>

namespace zelto::wire {

enum class Type {
    kWide,         // UTF-16, sent as UTF-8
    kBytes,        // 8-bit, sent as it is
    kSystemBytes,  // 8-bit in the system's code page, sent as UTF-8
    kDouble,
    kInteger,   // signed, 32 bits
    kSize,      // unsigned, 32 bits
    kWideOut,   // a buffer for UTF-16
    kBytesOut,  // a buffer for 8-bit text
};

// "UTF-16 text", "double"...
const char* Name(Type type);

struct Argument {
    const char* name = nullptr;
    Type type = Type::kInteger;
    const char* written = nullptr;  // how it stands in the request; null: it is not sent
};

struct Call {
    const char* export_name;
    const char* symbol;     // as exported; another name than export_name for two of them
    char letter;            // of the request; 0: none is sent
    const char* arguments;  // the request's text behind "<letter>|"; "" without a request
    char separator;         // between fields of that text; 0: one field
    const char* reply;      // the kinds of reply that it takes; "" without a request
    const char* command;    // what zeltoport calls it
    const char* help;       // one line
    std::array<Argument, 6> taken = {};

    // Without "ZeltoNavPort_".
    std::string_view ShortName() const;
    // The arguments of the function.
    std::span<const Argument> Arguments() const;
};

// In the order of the public header.
std::span<const Call> Calls();

// By the name of the function, with or without "ZeltoNavPort_", or what zeltoport calls it; the
// first of two that share a name. Null when there is none.
const Call* FindCall(std::string_view name);

// By the letter of a request: the wide form of the two. Null for a letter that no function sends.
const Call* FindCall(char letter);

}  // namespace zelto::wire

#endif
