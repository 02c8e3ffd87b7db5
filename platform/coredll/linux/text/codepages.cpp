#include "platform/coredll/linux/text/codepages.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <iconv.h>
#include <iterator>
#include <mutex>

namespace zelto::coredll {
namespace {

constexpr const char* kHostUtf16 =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// One direction of the host's converter.
class HostConverter {
  public:
    HostConverter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~HostConverter() {
        if (IsOpen())
            iconv_close(handle_);
    }
    HostConverter(const HostConverter&) = delete;
    HostConverter& operator=(const HostConverter&) = delete;

    bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(intptr_t{-1}); }

    // Converts one character of its own. Result: the bytes it became, 0 for none; `incomplete`
    // tells whether more input was needed. `out` has room for kRoom bytes.
    static constexpr size_t kRoom = 16;
    size_t Convert(const void* in, size_t size, void* out, bool& incomplete) {
        char* input = const_cast<char*>(static_cast<const char*>(in));  // never written
        char* output = static_cast<char*>(out);
        size_t room = kRoom;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        const size_t failed = iconv(handle_, &input, &size, &output, &room);
        incomplete = failed != 0 && errno == EINVAL;
        // Some pages hold a letter back, to join it with an accent that might follow.
        if (failed == 0 && iconv(handle_, nullptr, nullptr, &output, &room) == 0)
            return kRoom - room;
        return 0;
    }

  private:
    iconv_t handle_;
};

struct HostPage {
    UINT number;
    const char* name;
};

constexpr HostPage kHostPages[] = {
    {932, "CP932"}, {936, "CP936"}, {949, "CP949"}, {950, "CP950"}, {1361, "JOHAB"},
};

// Trivially destroyed, so that conversions work while other globals go.
struct PageList {
    std::mutex making;
    std::atomic<const CodePage*> own[kSingleBytePageCount];
    std::atomic<const CodePage*> host[std::size(kHostPages)];
};
constinit PageList g_list{};

struct PageRelease {
    ~PageRelease() {
        for (auto& page : g_list.own)
            delete page.exchange(nullptr);
        for (auto& page : g_list.host)
            delete page.exchange(nullptr);
    }
};
const PageRelease g_release;

bool IsPrivateUse(WCHAR unit) {
    return unit >= 0xE000 && unit < 0xF900;
}

}  // namespace

// Fills a page of two bytes from the host's two converters.
class HostPageReader {
  public:
    explicit HostPageReader(const char* name)
        : decode_(kHostUtf16, name), encode_(name, kHostUtf16) {}

    std::unique_ptr<const CodePage> Read() {
        if (!decode_.IsOpen() || !encode_.IsOpen())
            return nullptr;
        page_.reset(new CodePage);
        for (uint16_t byte = 0; byte < 0x80; ++byte)
            page_->Assign(byte, byte);
        for (uint16_t byte = 0x80; byte < 0x100; ++byte)
            AddByte(byte);
        page_->AssignFits(PlainLetters());
        return std::move(page_);
    }

  private:
    void AddByte(uint16_t byte) {
        bool incomplete = false;
        if (!AddCode(byte, incomplete) && incomplete) {
            for (uint16_t trail = 0x01; trail < 0x100; ++trail)
                AddCode(static_cast<uint16_t>(byte << 8 | trail), incomplete);
        }
    }

    bool AddCode(uint16_t code, bool& incomplete) {
        const unsigned char bytes[2] = {static_cast<unsigned char>(code >> 8),
                                        static_cast<unsigned char>(code)};
        const size_t size = code < 0x100 ? 1 : 2;
        WCHAR value[HostConverter::kRoom / sizeof(WCHAR)];
        if (decode_.Convert(bytes + 2 - size, size, value, incomplete) != sizeof(WCHAR))
            return false;
        page_->Assign(code, value[0]);
        // Two codes of one character: the host knows the one to write.
        if (page_->CodeOf(value[0]) != code)
            page_->AssignCode(value[0], PreferredCode(value[0], code));
        return true;
    }

    uint16_t PreferredCode(WCHAR value, uint16_t otherwise) {
        unsigned char bytes[HostConverter::kRoom];
        bool incomplete = false;
        switch (encode_.Convert(&value, sizeof(value), bytes, incomplete)) {
            case 1:
                return bytes[0];
            case 2:
                return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
            default:
                return otherwise;
        }
    }

    HostConverter decode_;
    HostConverter encode_;
    std::unique_ptr<CodePage> page_;
};

CodePage::CodePage() : codes_(1) {
    single_.fill(kNone);
    stand_in_.fill(kReplacement);
}

std::unique_ptr<const CodePage> CodePage::Make(const SingleBytePage& data) {
    std::unique_ptr<CodePage> page(new CodePage);
    for (uint16_t byte = 0; byte < 0x100; ++byte) {
        const WCHAR value = byte < 0x80 ? byte : data.high[byte - 0x80];
        if (IsPrivateUse(value)) {
            page->stand_in_[byte] = value;
            page->AssignCode(value, byte);
        } else {
            page->Assign(byte, value);
        }
    }
    page->AssignFits(data.fits);
    return page;
}

std::unique_ptr<const CodePage> CodePage::Make(const char* host_name) {
    return HostPageReader(host_name).Read();
}

// What is not in the page and has a best fit is written as that.
void CodePage::AssignFits(std::u16string_view pairs) {
    constexpr WCHAR kFullWidthFirst = 0xFF01;
    for (WCHAR narrow = '!'; narrow <= '~'; ++narrow) {
        const auto full = static_cast<WCHAR>(kFullWidthFirst + narrow - '!');
        if (CodeOf(full) == 0)
            AssignCode(full, narrow);
    }
    for (size_t i = 0; i + 1 < pairs.size(); i += 2) {
        if (CodeOf(pairs[i]) == 0 && CodeOf(pairs[i + 1]) != 0)
            AssignCode(pairs[i], CodeOf(pairs[i + 1]));
    }
}

// Gives the code its meaning, and the character this code unless it has one.
void CodePage::Assign(uint16_t code, WCHAR value) {
    if (code < 0x100) {
        single_[code] = value;
    } else {
        uint8_t& row = trail_row_[code >> 8];
        if (row == 0) {
            trails_.emplace_back().fill(kNone);
            row = static_cast<uint8_t>(trails_.size());
        }
        trails_[row - 1u][code & 0xFF] = value;
    }
    if (CodeOf(value) == 0)
        AssignCode(value, code);
}

void CodePage::AssignCode(WCHAR value, uint16_t code) {
    uint16_t& row = code_row_[value >> 8];
    if (row == 0) {
        row = static_cast<uint16_t>(codes_.size());
        codes_.emplace_back();
    }
    codes_[row][value & 0xFF] = code;
}

namespace {

// The page that the slot keeps, made by the first who asks. The release hands the finished tables
// over to whoever acquires the pointer.
template <class Make>
const CodePage* Keep(std::atomic<const CodePage*>& slot, Make make) {
    if (const CodePage* page = slot.load(std::memory_order_acquire))
        return page;
    const std::lock_guard lock(g_list.making);
    if (slot.load(std::memory_order_relaxed) == nullptr)
        slot.store(make().release(), std::memory_order_release);
    return slot.load(std::memory_order_relaxed);
}

}  // namespace

const CodePage* FindCodePage(UINT number) {
    const auto own = SingleBytePages();
    const auto found = std::ranges::lower_bound(own, number, {}, &SingleBytePage::number);
    if (found != own.end() && found->number == number)
        return Keep(g_list.own[found - own.begin()], [&] { return CodePage::Make(*found); });
    for (size_t i = 0; i < std::size(kHostPages); ++i) {
        if (kHostPages[i].number == number)
            return Keep(g_list.host[i], [&] { return CodePage::Make(kHostPages[i].name); });
    }
    return nullptr;
}

}  // namespace zelto::coredll
