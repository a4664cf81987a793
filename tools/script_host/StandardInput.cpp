#include "tools/script_host/StandardInput.h"

#include "ZelBase/text/AnsiText.h"
#include "tools/script_host/script/Encoding.h"

namespace tervane::scripthost {
namespace {

constexpr wchar_t kEndKey = 0x1A; // Ctrl+Z

// The length of a UTF-8 character by its first byte (RFC 3629); 0 for a byte inside of one.
std::size_t CharacterLength(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC0) {
        return 0;
    }
    return first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
}

// How many bytes can be decoded now: not the beginning of a UTF-8 character whose rest is to come.
std::size_t CompleteBytes(std::string_view bytes) {
    for (std::size_t i = 1; i <= 3 && i <= bytes.size(); ++i) {
        const std::size_t length =
            CharacterLength(static_cast<unsigned char>(bytes[bytes.size() - i]));
        if (length != 0) {
            return length > i ? bytes.size() - i : bytes.size();
        }
    }
    return bytes.size();
}

} // namespace

StandardInput::StandardInput() : handle_(GetStdHandle(STD_INPUT_HANDLE)) {
    DWORD mode = 0;
    isConsole_ = GetConsoleMode(handle_, &mode) != 0;
}

bool StandardInput::HasMore() {
    while (next_ == text_.size()) {
        if (!ReadMore()) {
            return false;
        }
    }
    return true;
}

bool StandardInput::IsAtLineEnd() {
    return !HasMore() || text_[next_] == L'\r' || text_[next_] == L'\n';
}

std::wstring StandardInput::Take(std::size_t count) {
    std::wstring taken;
    while (taken.size() < count && HasMore()) {
        taken += TakeOne();
    }
    return taken;
}

std::wstring StandardInput::TakeLine() {
    std::wstring line;
    while (HasMore()) {
        const wchar_t character = TakeOne();
        if (character == L'\n') {
            if (line.ends_with(L'\r')) {
                line.pop_back();
            }
            break;
        }
        line += character;
    }
    return line;
}

std::wstring StandardInput::TakeAll() {
    return Take(static_cast<std::size_t>(-1));
}

void StandardInput::Close() {
    isAtEnd_ = true;
    bytes_.clear();
    text_.clear();
    next_ = 0;
}

wchar_t StandardInput::TakeOne() {
    const wchar_t character = text_[next_++];
    const bool isLineEnd = character == L'\n';
    line_ += isLineEnd ? 1 : 0;
    column_ = isLineEnd ? 1 : column_ + 1;
    return character;
}

// False at the end; true does not mean that a character has come.
bool StandardInput::ReadMore() {
    if (isAtEnd_) {
        return false;
    }
    text_.clear();
    next_ = 0;
    isConsole_ ? ReadCharacters() : ReadBytes();
    return !isAtEnd_ || !text_.empty();
}

void StandardInput::ReadCharacters() {
    wchar_t piece[1024];
    DWORD got = 0;
    isAtEnd_ = !ReadConsoleW(handle_, piece, ARRAYSIZE(piece), &got, nullptr) || got == 0 ||
               piece[0] == kEndKey;
    if (!isAtEnd_) {
        text_.assign(piece, got);
    }
}

void StandardInput::ReadBytes() {
    char piece[4096];
    DWORD got = 0;
    isAtEnd_ = !ReadFile(handle_, piece, sizeof piece, &got, nullptr) || got == 0;
    bytes_.append(piece, isAtEnd_ ? 0 : got);
    Decode(isAtEnd_ ? bytes_.size() : CompleteBytes(bytes_));
}

void StandardInput::Decode(std::size_t count) {
    std::string_view bytes = std::string_view(bytes_).substr(0, count);
    if (isAtStart_ && bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    isAtStart_ = isAtStart_ && count == 0;
    std::optional<std::wstring> text = FromCodePage(CP_UTF8, bytes);
    text_ = text ? *std::move(text) : ZelBase::AnsiToWide(bytes);
    bytes_.erase(0, count);
}

} // namespace tervane::scripthost
