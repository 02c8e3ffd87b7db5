#include "tools/page/page.h"

#include <nlohmann/json.hpp>
#include <string_view>

namespace zelto::tools {

namespace {

constexpr std::string_view kPage =
#include "page_text.inc"
    ;
constexpr std::string_view kPlaceOfRecording = "@RECORDING@";

// JSON that cannot end the element it stands in, whatever its texts hold.
std::string JsonForHtml(const nlohmann::json& value) {
    const std::string plain = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    std::string escaped;
    escaped.reserve(plain.size());
    for (const char c : plain) {
        if (c == '<')
            escaped += "\\u003c";
        else
            escaped += c;
    }
    return escaped;
}

}  // namespace

std::string RenderPage(const nlohmann::json& recording) {
    const size_t place = kPage.find(kPlaceOfRecording);
    std::string page(kPage.substr(0, place));
    page += JsonForHtml(recording);
    page += kPage.substr(place + kPlaceOfRecording.size());
    return page;
}

}  // namespace zelto::tools
