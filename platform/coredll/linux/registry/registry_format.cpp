#include <cstdio>

#include "platform/coredll/api/registry.h"
#include "platform/coredll/linux/base/unicode.h"
#include "platform/coredll/linux/registry/registry_text.h"

namespace zelto::coredll {
namespace {

template <class... Arguments>
void AppendFormat(std::string& out, const char* format, Arguments... arguments) {
    char text[24];
    out.append(text, static_cast<size_t>(std::snprintf(text, sizeof text, format, arguments...)));
}

void AppendCharacter(char32_t value, std::string& out) {
    unsigned char bytes[4];
    out.append(reinterpret_cast<const char*>(bytes), PutUtf8(value, bytes));
}

void AppendQuoted(std::u16string_view text, std::string& out) {
    out += '"';
    for (size_t i = 0; i < text.size();) {
        const Taken taken = TakeUtf16(text.data() + i, text.size() - i);
        if (taken.value == u'"' || taken.value == u'\\') {
            out += '\\';
            out += static_cast<char>(taken.value);
        } else if (taken.value == kNoCharacter || taken.value < 0x20) {
            AppendFormat(out, "\\x%04x", static_cast<unsigned>(text[i]));
        } else {
            AppendCharacter(taken.value, out);
        }
        i += taken.used;
    }
    out += '"';
}

std::u16string UnitsOf(const std::vector<BYTE>& data) {
    std::u16string text;
    for (size_t i = 0; i + 1 < data.size(); i += 2)
        text.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
    return text;
}

void AppendText(const std::vector<BYTE>& data, std::string& out) {
    std::u16string text = UnitsOf(data);
    if (!text.empty() && text.back() == 0) {
        text.pop_back();
        out += "sz:";
    } else {
        out += "sz-unterminated:";
    }
    AppendQuoted(text, out);
}

void AppendBytes(const RegistryValue& value, std::string& out) {
    AppendFormat(out, "hex(%x):", static_cast<unsigned>(value.type));
    const char* separator = "";
    for (const BYTE byte : value.data) {
        AppendFormat(out, "%s%02x", separator, static_cast<unsigned>(byte));
        separator = ",";
    }
}

void AppendData(const RegistryValue& value, std::string& out) {
    const std::vector<BYTE>& data = value.data;
    if (value.type == REG_SZ && data.size() % 2 == 0) {
        AppendText(data, out);
    } else if (value.type == REG_DWORD && data.size() == 4) {
        unsigned number = 0;
        for (size_t i = 4; i-- > 0;)
            number = (number << 8) | data[i];
        AppendFormat(out, "dword:%08x", number);
    } else {
        AppendBytes(value, out);
    }
}

void AppendKey(const RegistryKey& key, std::string& out) {
    out += "\n[";
    for (size_t i = 0; i < key.path.size();) {
        const Taken taken = TakeUtf16(key.path.data() + i, key.path.size() - i);
        AppendCharacter(taken.value, out);
        i += taken.used;
    }
    out += "]\n";
    for (const auto& [folded, value] : key.values) {
        if (value.name.empty())
            out += '@';
        else
            AppendQuoted(value.name, out);
        out += '=';
        AppendData(value, out);
        out += '\n';
    }
}

}  // namespace

std::string FormatRegistry(const Registry& registry) {
    std::string out = "ZELTO-REGISTRY 1\n";
    for (const auto& [folded, key] : registry.Keys()) {
        const bool is_root = key.path.find(u'\\') == std::u16string::npos;
        if (!is_root || !key.values.empty())
            AppendKey(key, out);
    }
    return out + "\nEND\n";
}

}  // namespace zelto::coredll
