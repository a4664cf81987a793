#include "platform/text/NarrowText.h"

#include <utility>

namespace tervane {

std::optional<std::string> ToNarrow(std::wstring_view text) {
    std::string narrow = ZelBase::WideToAnsi(text);
    return FromNarrow(narrow) == text ? std::optional(std::move(narrow)) : std::nullopt;
}

} // namespace tervane
