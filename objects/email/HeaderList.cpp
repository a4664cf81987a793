#include "objects/email/HeaderList.h"

#include <algorithm>
#include <utility>

namespace tervane {
namespace {

constexpr std::size_t kGrowth = 10;
constexpr std::wstring_view kSeparator = L": ";

wchar_t FoldCase(wchar_t character) noexcept {
    return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A')
                                                  : character;
}

bool IsSameName(std::wstring_view left, std::wstring_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](wchar_t a, wchar_t b) { return FoldCase(a) == FoldCase(b); });
}

} // namespace

std::optional<HeaderParts> SplitHeader(std::wstring_view line) noexcept {
    const std::size_t separator = line.find(kSeparator);
    if (separator == std::wstring_view::npos) {
        return std::nullopt;
    }
    return HeaderParts{line.substr(0, separator), line.substr(separator + kSeparator.size())};
}

void HeaderList::Add(std::wstring line) {
    if (count_ == lines_.size()) {
        lines_.resize(lines_.size() + kGrowth);
    }
    lines_[count_] = std::move(line);
    ++count_;
}

bool HeaderList::Remove(std::size_t index) {
    if (index >= count_) {
        return false;
    }
    const auto line = lines_.begin() + static_cast<std::ptrdiff_t>(index);
    std::rotate(line, line + 1, lines_.begin() + static_cast<std::ptrdiff_t>(count_));
    --count_;
    lines_[count_].clear();
    return true;
}

void HeaderList::Clear() {
    lines_.clear();
    count_ = 0;
}

const std::wstring* HeaderList::At(std::size_t index) const noexcept {
    return index < count_ ? &lines_[index] : nullptr;
}

std::optional<std::wstring_view> HeaderList::Find(std::wstring_view name) const noexcept {
    const auto index = IndexOf(name);
    return index ? std::optional(SplitHeader(lines_[*index])->value) : std::nullopt;
}

void HeaderList::Set(std::wstring_view name, std::wstring_view value) {
    std::wstring line;
    line.reserve(name.size() + kSeparator.size() + value.size());
    line.append(name).append(kSeparator).append(value);
    if (const auto index = IndexOf(name)) {
        lines_[*index] = std::move(line);
    } else {
        Add(std::move(line));
    }
}

std::optional<std::size_t> HeaderList::IndexOf(std::wstring_view name) const noexcept {
    for (std::size_t index = 0; index < count_; ++index) {
        const auto parts = SplitHeader(lines_[index]);
        if (parts && IsSameName(parts->name, name)) {
            return index;
        }
    }
    return std::nullopt;
}

} // namespace tervane
