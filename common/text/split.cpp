#include <string_view>

#include "common/text/text_utils.h"
#include "common/text/token_scanner.h"

namespace zelto {
namespace {

std::string_view View(const char* text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

DString& AppendField(FieldList& fields, std::string_view content, int capacity_hint) {
    DString& field = fields.Append();
    if (capacity_hint > 0)
        field.reserve(capacity_hint, true);
    if (!content.empty())
        field.assign(content.data(), static_cast<int>(content.size()));
    return field;
}

}  // namespace

bool SplitTokens(const DString& text, const char* separators, FieldList& fields, int32_t limit,
                 bool keep_empty, int capacity_hint) {
    fields.Clear();
    const ByteSet set(View(separators));
    TokenScanner scanner(text.c_str(), set, limit, keep_empty);
    for (Token token; scanner.Next(token);)
        AppendField(fields, token.Whole(), capacity_hint);
    return true;
}

bool SplitTokensKeepSeparators(const DString& text, const char* separators, FieldList& fields,
                               int32_t limit, bool keep_empty, int capacity_hint) {
    fields.Clear();
    const ByteSet set(View(separators));
    TokenScanner scanner(text.c_str(), set, limit, keep_empty);
    for (Token token; scanner.Next(token);) {
        const size_t length = token.body.size() + (token.closed ? 1 : 0);
        DString& field = AppendField(fields, {token.body.data(), length}, capacity_hint);
        if (!token.rest.empty())
            field += token.rest.data();
    }
    return true;
}

}  // namespace zelto
