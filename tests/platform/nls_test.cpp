#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "platform/coredll/coredll.h"

namespace {

constexpr DWORD kPreset = 77;

TEST(CodePages, EveryByteComesBack) {
    for (const UINT page :
         {437, 737, 864, 869, 874, 1252, 1255, 1258, 10000, 28596, 28597, 28603}) {
        for (int value = 1; value < 0x100; ++value) {
            const auto byte = static_cast<char>(value);
            WCHAR unit = 0;
            char back = 0;
            EXPECT_EQ(MultiByteToWideChar(page, 0, &byte, 1, &unit, 1), 1);
            EXPECT_EQ(WideCharToMultiByte(page, 0, &unit, 1, &back, 1, nullptr, nullptr), 1);
            EXPECT_EQ(back, byte) << page;
            EXPECT_EQ(unit < 0x80, value < 0x80) << page << ' ' << value;
        }
    }
}

TEST(CodePages, FirstUseByManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            char out[2] = {};
            EXPECT_EQ(WideCharToMultiByte(1361, 0, u"\uAC00", 1, out, 2, nullptr, nullptr), 2);
            EXPECT_EQ(WideCharToMultiByte(850, 0, u"\u00D8", 1, out, 2, nullptr, nullptr), 1);
            EXPECT_EQ(out[0], '\x9D');
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

// What each size of the target gives: the whole, or what fits of it and no half character. `ends`
// tells where characters end.
template <class Unit, class Convert>
void CheckEverySize(const std::basic_string<Unit>& whole, const std::vector<size_t>& ends,
                    Convert convert) {
    for (size_t size = 0; size <= whole.size() + 2; ++size) {
        std::basic_string<Unit> out(whole.size() + 8, Unit{'#'});
        SetLastError(kPreset);
        const bool fits = size == 0 || size >= whole.size();
        EXPECT_EQ(convert(out.data(), static_cast<int>(size)), fits ? int(whole.size()) : 0);
        EXPECT_EQ(GetLastError(), fits ? kPreset : ERROR_INSUFFICIENT_BUFFER);
        size_t written = 0;
        for (const size_t end : ends)
            written = end <= size ? end : written;
        EXPECT_EQ(out,
                  whole.substr(0, written) + std::basic_string<Unit>(out.size() - written, '#'));
    }
}

TEST(Conversion, EverySizeOfTheTarget) {
    const std::string bytes = "0123456789abcdefA\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u16string wide = u"0123456789abcdefA\u00E9\u20AC\U0001F600";
    std::vector<size_t> ends(17);
    for (size_t i = 0; i < ends.size(); ++i)
        ends[i] = i + 1;
    std::vector<size_t> wide_ends = ends;
    ends.insert(ends.end(), {19, 22, 26});
    wide_ends.insert(wide_ends.end(), {18, 19, 21});
    CheckEverySize<char16_t>(wide, wide_ends, [&](WCHAR* out, int size) {
        return MultiByteToWideChar(CP_UTF8, 0, bytes.data(), 26, out, size);
    });
    CheckEverySize<char>(bytes, ends, [&](char* out, int size) {
        return WideCharToMultiByte(CP_UTF8, 0, wide.data(), 21, out, size, nullptr, nullptr);
    });
}

TEST(Conversion, EverySizeOfATwoBytePagesTarget) {
    CheckEverySize<char>(
        "a\x83\x41\x88\x9F"
        "b",
        {1, 3, 5, 6}, [](char* out, int size) {
            return WideCharToMultiByte(932, 0,
                                       u"a\u30A2\u4E9C"
                                       u"b",
                                       4, out, size, nullptr, nullptr);
        });
}

}  // namespace
