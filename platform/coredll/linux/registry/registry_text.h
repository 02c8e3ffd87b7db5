// The registry as text: the format that docs/registry-format.md describes.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_REGISTRY_TEXT_H
#define ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_REGISTRY_TEXT_H

#include <string>
#include <string_view>

#include "platform/coredll/linux/registry/registry_data.h"

namespace zelto::coredll {

// Adds what the text holds to an empty registry. False when the text is damaged, not a registry or
// of another version; then `problem` receives the line and what is wrong with it.
bool ParseRegistry(std::string_view text, Registry& registry, std::string& problem);

std::string FormatRegistry(const Registry& registry);

}  // namespace zelto::coredll

#endif
