#include "platform/coredll/linux/registry/registry_data.h"

#include <algorithm>
#include <utility>

#include "platform/coredll/linux/base/unicode.h"

namespace zelto::coredll {
namespace {

const char* NameProblem(std::u16string_view name) {
    if (name.empty())
        return "a key's name is empty";
    if (name.size() > kMaxRegistryName)
        return "a key's name is longer than 255 units";
    for (size_t i = 0; i < name.size();) {
        const Taken taken = TakeUtf16(name.data() + i, name.size() - i);
        if (taken.value == kNoCharacter || taken.value < 0x20)
            return "a key's name holds a character that names may not have";
        i += taken.used;
    }
    return nullptr;
}

bool IsRoot(std::u16string_view name) {
    const std::u16string folded = FoldRegistryName(name);
    return std::ranges::any_of(kRegistryRoots, [&folded](std::u16string_view root) {
        return FoldRegistryName(root) == folded;
    });
}

}  // namespace

std::u16string FoldRegistryName(std::u16string_view name) {
    std::u16string folded(name);
    std::ranges::transform(folded, folded.begin(), FoldLetter);
    return folded;
}

const char* KeyPathProblem(std::u16string_view path) {
    size_t slash = path.find(u'\\');
    if (!IsRoot(path.substr(0, slash)))
        return "no root has this name";
    for (size_t level = 1; slash != std::u16string_view::npos; ++level) {
        if (level > kMaxKeyLevels)
            return "keys are nested deeper than 16 levels";
        path.remove_prefix(slash + 1);
        slash = path.find(u'\\');
        const char* problem = NameProblem(path.substr(0, slash));
        if (problem != nullptr)
            return problem;
    }
    return nullptr;
}

Registry::Registry() {
    for (const std::u16string_view root : kRegistryRoots)
        keys_[FoldRegistryName(root)].path = root;
}

RegistryKey* Registry::Find(std::u16string_view path) {
    return const_cast<RegistryKey*>(std::as_const(*this).Find(path));
}

const RegistryKey* Registry::Find(std::u16string_view path) const {
    const auto found = keys_.find(FoldRegistryName(path));
    return found == keys_.end() ? nullptr : &found->second;
}

RegistryKey& Registry::Add(std::u16string_view path, bool& made) {
    RegistryKey* key = Find(path);
    made = key == nullptr;
    if (!made)
        return *key;
    const size_t slash = path.rfind(u'\\');
    bool parent_made = false;
    const RegistryKey& parent = Add(path.substr(0, slash), parent_made);
    // In the case in which the parents were made.
    std::u16string full = parent.path + std::u16string(path.substr(slash));
    RegistryKey& added = keys_[FoldRegistryName(full)];
    added.path = std::move(full);
    return added;
}

}  // namespace zelto::coredll
