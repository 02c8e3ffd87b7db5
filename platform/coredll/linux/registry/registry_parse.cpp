#include <charconv>

#include "platform/coredll/api/registry.h"
#include "platform/coredll/linux/base/unicode.h"
#include "platform/coredll/linux/registry/registry_text.h"

namespace zelto::coredll {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSignatureWord = "ZELTO-REGISTRY ";
constexpr std::string_view kVersion = "1";
constexpr std::string_view kEndMark = "END";

std::string_view Trim(std::string_view text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool TakeText(std::string_view& rest, std::string_view text) {
    if (!rest.starts_with(text))
        return false;
    rest.remove_prefix(text.size());
    return true;
}

// Hexadecimal digits, exactly `digits` of them where that is not 0, else 1 to 8.
bool TakeHex(std::string_view& rest, size_t digits, uint32_t& value) {
    const std::string_view field = rest.substr(0, digits == 0 ? 8 : digits);
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value, 16);
    const auto used = static_cast<size_t>(end - field.data());
    if (error != std::errc() || (digits != 0 && used != digits))
        return false;
    rest.remove_prefix(used);
    return true;
}

// Throws what is wrong, as a text, from any depth; ParseRegistry adds the line.
class LineReader {
  public:
    explicit LineReader(Registry& registry) : registry_(registry) {}

    void ReadLine(std::string_view line) {
        const std::string_view text = Trim(line);
        if (text.empty() || text.front() == '#')
            return;
        if (ended_)
            throw "text after the end mark";
        if (text == kEndMark)
            ended_ = true;
        else if (text.front() == '[')
            ReadKey(text);
        else
            ReadValue(text);
    }
    bool Ended() const { return ended_; }

  private:
    void ReadKey(std::string_view text) {
        if (text.size() < 2 || text.back() != ']')
            throw "a key without its closing bracket";
        const std::u16string path = Decode(text.substr(1, text.size() - 2));
        if (const char* problem = KeyPathProblem(path); problem != nullptr)
            throw problem;
        bool made = false;
        key_ = &registry_.Add(path, made);
    }

    void ReadValue(std::string_view rest) {
        RegistryValue value;
        if (!TakeText(rest, "@"))
            value.name = TakeQuoted(rest);
        if (value.name.size() > kMaxRegistryName)
            throw "a value's name is longer than 255 units";
        rest = Trim(rest);
        if (!TakeText(rest, "="))
            throw "neither a key, a value, a comment nor the end mark";
        rest = Trim(rest);
        ReadData(rest, value);
        if (!rest.empty())
            throw "text after the value";
        if (value.data.size() > kMaxValueBytes)
            throw "a value is longer than 4096 bytes";
        if (key_ == nullptr)
            throw "a value before the first key";
        if (!key_->values.try_emplace(FoldRegistryName(value.name), value).second)
            throw "a value of this name was there before";
    }

    static void ReadData(std::string_view& rest, RegistryValue& value) {
        if (TakeText(rest, "sz:")) {
            value.type = REG_SZ;
            StoreText(TakeQuoted(rest) + u'\0', value);
        } else if (TakeText(rest, "sz-unterminated:")) {
            value.type = REG_SZ;
            StoreText(TakeQuoted(rest), value);
        } else if (TakeText(rest, "dword:")) {
            value.type = REG_DWORD;
            uint32_t number = 0;
            if (!TakeHex(rest, 8, number))
                throw "a dword that is not eight hexadecimal digits";
            for (int shift = 0; shift < 32; shift += 8)
                value.data.push_back(static_cast<BYTE>(number >> shift));
        } else if (!TakeText(rest, "hex(") || !TakeHex(rest, 0, value.type) ||
                   !TakeText(rest, "):")) {
            throw "a value that is none of sz, sz-unterminated, dword and hex(type)";
        } else {
            ReadBytes(rest, value);
        }
    }

    static void ReadBytes(std::string_view& rest, RegistryValue& value) {
        if (rest.empty())
            return;
        do {
            uint32_t byte = 0;
            if (!TakeHex(rest, 2, byte))
                throw "a byte that is not two hexadecimal digits";
            value.data.push_back(static_cast<BYTE>(byte));
        } while (TakeText(rest, ","));
    }

    static void StoreText(const std::u16string& text, RegistryValue& value) {
        for (const char16_t unit : text) {
            value.data.push_back(static_cast<BYTE>(unit & 0xFF));
            value.data.push_back(static_cast<BYTE>(unit >> 8));
        }
    }

    // A text in quotes, its escapes undone.
    static std::u16string TakeQuoted(std::string_view& rest) {
        if (!TakeText(rest, "\""))
            throw "a text without its opening quote";
        std::u16string text;
        while (!TakeText(rest, "\"")) {
            if (rest.empty())
                throw "a text without its closing quote";
            if (TakeText(rest, "\\"))
                text.push_back(TakeEscape(rest));
            else
                TakeCharacter(rest, text);
        }
        return text;
    }

    static char16_t TakeEscape(std::string_view& rest) {
        uint32_t unit = 0;
        if (TakeText(rest, "x") && TakeHex(rest, 4, unit))
            return static_cast<char16_t>(unit);
        for (const auto& [letter, meaning] :
             {std::pair{"\\", u'\\'}, {"\"", u'"'}, {"n", u'\n'}, {"r", u'\r'}, {"t", u'\t'}}) {
            if (TakeText(rest, letter))
                return meaning;
        }
        throw "an escape that is none of \\\\ \\\" \\n \\r \\t and \\xHHHH";
    }

    static void TakeCharacter(std::string_view& rest, std::u16string& text) {
        const Taken taken =
            TakeUtf8(reinterpret_cast<const unsigned char*>(rest.data()), rest.size());
        if (taken.value == kNoCharacter)
            throw "bytes that are not UTF-8";
        if (taken.value < 0x20)
            throw "a control character that is not escaped";
        char16_t units[2];
        text.append(units, PutUtf16(taken.value, units));
        rest.remove_prefix(taken.used);
    }

    static std::u16string Decode(std::string_view rest) {
        std::u16string text;
        while (!rest.empty())
            TakeCharacter(rest, text);
        return text;
    }

    Registry& registry_;
    RegistryKey* key_ = nullptr;
    bool ended_ = false;
};

// The next line without its end; a carriage return belongs to the end.
std::string_view TakeLine(std::string_view& text) {
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

void CheckSignature(std::string_view line) {
    line = Trim(line);
    if (!TakeText(line, kSignatureWord))
        throw "not a ZeltoPORT registry: it begins with something else";
    if (line != kVersion)
        throw "a version of the format that this program does not know";
}

}  // namespace

bool ParseRegistry(std::string_view text, Registry& registry, std::string& problem) {
    LineReader reader(registry);
    size_t number = 1;
    try {
        TakeText(text, kByteOrderMark);
        CheckSignature(TakeLine(text));
        while (!text.empty()) {
            ++number;
            reader.ReadLine(TakeLine(text));
        }
        if (!reader.Ended())
            throw "the end mark is missing: the file was cut";
    } catch (const char* what) {
        problem = "line " + std::to_string(number) + ": " + what;
        return false;
    }
    return true;
}

}  // namespace zelto::coredll
