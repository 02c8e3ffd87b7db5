#include "common/text/utf8.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using zelto::DecodeUtf8;
using zelto::EncodeUtf8;

std::string Encode(const std::u16string& text) {
    std::string out(text.size() * 4 + 1, '#');
    const int count = EncodeUtf8(text.data(), static_cast<int>(text.size()), out.data(),
                                 static_cast<int>(text.size()) * 4);
    return out.substr(0, static_cast<size_t>(count));
}

std::u16string Decode(const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    std::u16string out(bytes.size() + 1, u'#');
    const int count = DecodeUtf8(bytes.data(), size, out.data(), size);
    EXPECT_EQ(DecodeUtf8(bytes.data(), size, nullptr, 0), count);
    EXPECT_EQ(out[static_cast<size_t>(count)], 0);
    return out.substr(0, static_cast<size_t>(count));
}

// One unit after the other, as slowly as can be.
int NaiveEncode(const std::u16string& text, std::string* out, int size) {
    int n = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned u = text[i];
        const auto tail = [](unsigned bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
        std::string bytes;
        if (u < 0x80) {
            bytes = {static_cast<char>(u)};
        } else if (u < 0x800) {
            bytes = {static_cast<char>(0xC0 | u >> 6), tail(u)};
        } else if (u >= 0xD800 && u < 0xDC00) {
            if (out == nullptr || n + 4 > size) {
                n += 4;
                continue;
            }
            const unsigned next = i + 1 < text.size() ? text[i + 1] : 0U;
            if (next >= 0xDC00 && next < 0xE000) {
                ++i;
                bytes = {'\xF3', tail(u >> 2), tail((u & 3) | ((next >> 6) & 0x3F)), tail(next)};
            } else {
                bytes = "?";
            }
        } else {
            bytes = {static_cast<char>(0xE0 | u >> 12), tail(u >> 6), tail(u)};
        }
        const int end = n + static_cast<int>(bytes.size());
        if (out != nullptr && end <= size)
            out->replace(static_cast<size_t>(n), bytes.size(), bytes);
        n = end;
    }
    if (out != nullptr && n <= size)
        (*out)[static_cast<size_t>(n)] = 0;
    return n;
}

TEST(Utf8, EncodesAsThePeersExpect) {
    EXPECT_EQ(Encode(u"A\u00E9\u20AC"), "A\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(Encode(u"\U0001F600"), "\xF3\x8F\xB9\x80");
    EXPECT_EQ(Encode({0xD83D}), "?");
    EXPECT_EQ(Encode({0xD83D, u'a', 0xDE00}), "?a\xED\xB8\x80");
    EXPECT_EQ(EncodeUtf8(u"\U0001F600", 2, nullptr, 0), 7);
}

// Texts of every class of units and every room for them; nothing behind the NUL is touched.
TEST(Utf8, WritesWhatFitsInAnyRoomAndCountsTheRest) {
    constexpr char16_t kUnits[] = {u'a', 0x7F, 0x80, 0x7FF, 0x800, 0xD83D, 0xDE00, 0xFFFF, 0};
    std::minstd_rand random(7);
    for (int round = 0; round < 300; ++round) {
        std::u16string text(random() % 40, u'a');
        for (char16_t& unit : text)
            unit = round % 3 == 0 || random() % 4 == 0 ? kUnits[random() % 9] : u'b';
        const int count = static_cast<int>(text.size());
        const int most = NaiveEncode(text, nullptr, 0);
        ASSERT_EQ(EncodeUtf8(text.data(), count, nullptr, 0), most);
        for (int size = 0; size <= most + 1; ++size) {
            std::string expected(static_cast<size_t>(size) + 1, '#');
            std::string out = expected;
            const int bytes = NaiveEncode(text, &expected, size);
            ASSERT_EQ(EncodeUtf8(text.data(), count, out.data(), size), bytes);
            ASSERT_EQ(out, expected);
        }
    }
}

TEST(Utf8, UnitsAndPairsComeBackAsStated) {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const std::u16string text(1, static_cast<char16_t>(unit));
        if ((unit & 0xFC00) != 0xD800) {
            ASSERT_EQ(Decode(Encode(text)), text) << unit;
        }
    }
    for (char32_t character = 0x10000; character < 0x110000; character += 7) {
        const char32_t offset = character - 0x10000;
        const std::u16string text = {static_cast<char16_t>(0xD800 | offset >> 10),
                                     static_cast<char16_t>(0xDC00 | (offset & 0x3FF))};
        const bool kept = character < 0x50000 && (character & 0xC0) == 0;
        const std::string bytes = Encode(text);
        const std::u16string back = Decode(bytes);
        ASSERT_EQ(back == text, kept) << uint32_t{character};
        ASSERT_EQ(Encode(back), bytes);
    }
}

TEST(Utf8, DecodesStandardAndIllFormedBytes) {
    const struct {
        std::string bytes;
        std::u16string text;
    } kCases[] = {
        {"\xF0\x9F\x98\x80\xF1\x80\x80\x80\xF4\x8F\xBF\xBF", u"\U0001F600\U00040000\U0010FFFF"},
        {"\xF3\xA0\x81\xA2", u"\U000E0062"},
        {"\xED\xA0\xBD\xED\xB8\x80", u"\U0001F600"},
        {"\x80z\xC0\xAF\xFF", u"\uFFFDz\uFFFD\uFFFD\uFFFD"},
        {"\xC3", u"\uFFFD"},
        {"\xC3z", u"\uFFFDz"},
        {"\xE0\x9F\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xE2\x82", u"\uFFFD"},
        {"\xE2\x82z", u"\uFFFDz"},
        {"\xF0\x8F\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF3\x8F\xB9", u"\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(Decode(c.bytes), c.text);
        const std::string run(21, 'r');
        EXPECT_EQ(Decode(run + c.bytes + run),
                  std::u16string(21, u'r') + c.text + std::u16string(21, u'r'));
    }
    WCHAR out[] = {u'#', u'#', u'#'};
    EXPECT_EQ(DecodeUtf8("a\xF0\x9F\x98\x80", 5, out, 2), 3);
    EXPECT_EQ(std::u16string(out, 3), u"a##");
}

}  // namespace
