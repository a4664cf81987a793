#include "tools/script_host/Console.h"

#include <algorithm>
#include <string>

namespace tervane::scripthost {
namespace {

// Long texts go out in pieces: older consoles refuse more than 64 KB at once, and the lengths of
// the conversion are ints.
constexpr std::size_t kPiece = 8192;

std::string ToUtf8(std::wstring_view text) {
    int length = static_cast<int>(text.size());
    int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

// The beginning of `text` that is written next; no surrogate pair is torn apart.
std::wstring_view NextPiece(std::wstring_view text) {
    std::size_t size = std::min(text.size(), kPiece);
    if (size < text.size() && IS_HIGH_SURROGATE(text[size - 1])) {
        --size;
    }
    return text.substr(0, size);
}

bool WriteBytes(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

bool WriteCharacters(HANDLE console, std::wstring_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        if (!WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written,
                           nullptr)) {
            return false;
        }
        text.remove_prefix(written);
    }
    return true;
}

} // namespace

HRESULT Console::Write(Stream stream, std::wstring_view text) {
    HANDLE handle = GetStdHandle(stream == Stream::kOut ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        return S_OK;
    }
    DWORD mode = 0;
    bool isConsole = GetConsoleMode(handle, &mode) != 0;
    while (!text.empty()) {
        std::wstring_view piece = NextPiece(text);
        if (!(isConsole ? WriteCharacters(handle, piece) : WriteBytes(handle, ToUtf8(piece)))) {
            DWORD error = GetLastError();
            return HRESULT_FROM_WIN32(error);
        }
        text.remove_prefix(piece.size());
    }
    return S_OK;
}

HRESULT Console::WriteLine(Stream stream, std::wstring_view text) {
    return Write(stream, std::wstring(text) + L"\r\n");
}

} // namespace tervane::scripthost
