// What the text readers of a record file read: the text that was put back, then the stream.

#include <algorithm>
#include <typeinfo>

#include "common/files/fichero_itv.h"

namespace zelto {
namespace {

constexpr char kPackageKey = '\xAA';  // every byte of a member's text is combined with it

}  // namespace

void TFicheroITV::PutBack(const DString& text) {
    put_back_.PutBack(text.c_str());
}

void TFicheroITV::PutBack(char character) {
    if (character != '\0')
        put_back_.PutBack({&character, 1});
}

std::string_view TFicheroITV::NextSegment() {
    if (!put_back_.IsEmpty())
        return put_back_.Unread();
    return window_.IsEmpty() && !FillWindow() ? std::string_view{} : window_.Unread();
}

bool TFicheroITV::FillWindow() {
    return !IsEof() && (FetchAhead() || FetchOne());
}

// Fetches many bytes at once, none beyond what the file had when it was opened: there the stream
// decides byte by byte where the end is. So it is in a derived class, whose operations the bytes
// must pass through.
bool TFicheroITV::FetchAhead() {
    if (typeid(*this) != typeid(TFicheroITV))
        return false;
    const int64_t position = GetPos();
    const int64_t left = position < 0 ? 0 : fetch_limit_ - position;
    if (left <= 0)
        return false;
    const std::string_view bytes = FetchBlock(static_cast<size_t>(left));
    if (bytes.empty()) {  // the file has become shorter
        fetch_limit_ = 0;
        MoveTo(position);
        return false;
    }
    window_.Show(bytes, position + static_cast<int64_t>(bytes.size()));
    return true;
}

// At most `count` bytes from the position on, which is then behind them.
std::string_view TFicheroITV::FetchBlock(size_t count) {
    if (memory_.IsLoaded() && package_flag_ == 0) {
        const std::string_view rest = memory_.Rest().substr(0, count);
        memory_.SetPos(memory_.GetPos() + static_cast<int64_t>(rest.size()));
        return rest;
    }
    const size_t size = std::min<size_t>(count, TextWindow::kCapacity);
    char* room = window_.Room();
    if (!Read(room, static_cast<int32_t>(size)))
        return {};
    if (package_flag_ != 0)
        std::transform(room, room + size, room,
                       [](char c) { return static_cast<char>(c ^ kPackageKey); });
    return {room, size};
}

bool TFicheroITV::FetchOne() {
    char_was_read_ = true;  // for a GetChar that does not tell
    const int byte = GetChar();
    if (!char_was_read_)
        return false;
    char* room = window_.Room();
    *room = static_cast<char>(package_flag_ == 0 ? byte : byte ^ kPackageKey);
    window_.Show({room, 1}, 0);
    return true;
}

}  // namespace zelto
