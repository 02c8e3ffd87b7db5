#include "platform/coredll/linux/text/codepages.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <iconv.h>
#include <iterator>
#include <mutex>
#include <optional>

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

struct PageName {
    UINT number;
    const char* host_name;
};

constexpr PageName kPageNames[] = {
    {437, "CP437"},         {737, "CP737"},        {775, "CP775"},        {850, "CP850"},
    {852, "CP852"},         {855, "CP855"},        {857, "CP857"},        {858, "CP858"},
    {860, "CP860"},         {861, "CP861"},        {862, "CP862"},        {863, "CP863"},
    {864, "CP864"},         {865, "CP865"},        {866, "CP866"},        {869, "CP869"},
    {874, "WINDOWS-874"},   {932, "CP932"},        {936, "CP936"},        {949, "CP949"},
    {950, "CP950"},         {1250, "CP1250"},      {1251, "CP1251"},      {1252, "CP1252"},
    {1253, "CP1253"},       {1254, "CP1254"},      {1255, "CP1255"},      {1256, "CP1256"},
    {1257, "CP1257"},       {1258, "CP1258"},      {1361, "JOHAB"},       {10000, "MACINTOSH"},
    {20866, "KOI8-R"},      {21866, "KOI8-U"},     {28591, "ISO-8859-1"}, {28592, "ISO-8859-2"},
    {28593, "ISO-8859-3"},  {28594, "ISO-8859-4"}, {28595, "ISO-8859-5"}, {28596, "ISO-8859-6"},
    {28597, "ISO-8859-7"},  {28598, "ISO-8859-8"}, {28599, "ISO-8859-9"}, {28603, "ISO-8859-13"},
    {28605, "ISO-8859-15"},
};
constexpr size_t kPageCount = std::size(kPageNames);

// Trivially destroyed, so that conversions work while other globals go.
struct PageList {
    std::mutex making;
    std::atomic<const CodePage*> pages[kPageCount];
};
constinit PageList g_list{};

struct PageRelease {
    ~PageRelease() {
        for (auto& page : g_list.pages)
            delete page.exchange(nullptr);
    }
};
const PageRelease g_release;

}  // namespace

// Fills a page from the host's two converters.
class CodePageMaker {
  public:
    explicit CodePageMaker(const char* name)
        : decode_(kHostUtf16, name), encode_(name, kHostUtf16) {}

    std::unique_ptr<const CodePage> Make(UINT number) {
        if (!decode_.IsOpen() || !encode_.IsOpen())
            return nullptr;
        page_.reset(new CodePage);
        for (uint16_t byte = 0; byte < 0x80; ++byte)
            page_->Assign(byte, byte);
        for (uint16_t byte = 0x80; byte < 0x100; ++byte)
            AddByte(byte);
        AddControls(number);
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

    // The device's Windows pages have a control character where the host's have nothing.
    void AddControls(UINT number) {
        const bool windows = (number >= 1250 && number <= 1258) || number == 874;
        for (uint16_t byte = 0x80; windows && byte < 0xA0; ++byte) {
            if (page_->single_[byte] == CodePage::kNone)
                page_->Assign(byte, byte);
        }
    }

    HostConverter decode_;
    HostConverter encode_;
    std::unique_ptr<CodePage> page_;
};

CodePage::CodePage() : codes_(1) {
    single_.fill(kNone);
}

std::unique_ptr<const CodePage> CodePage::Make(UINT number, const char* host_name) {
    return CodePageMaker(host_name).Make(number);
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

const CodePage* FindCodePage(UINT number) {
    const PageName* name =
        std::lower_bound(std::begin(kPageNames), std::end(kPageNames), number,
                         [](const PageName& entry, UINT wanted) { return entry.number < wanted; });
    if (name == std::end(kPageNames) || name->number != number)
        return nullptr;
    auto& slot = g_list.pages[name - std::begin(kPageNames)];
    if (const CodePage* page = slot.load(std::memory_order_acquire))
        return page;
    const std::lock_guard lock(g_list.making);
    if (slot.load(std::memory_order_relaxed) == nullptr)
        slot.store(CodePage::Make(number, name->host_name).release(), std::memory_order_release);
    return slot.load(std::memory_order_relaxed);
}

}  // namespace zelto::coredll
