#include "tools/script_host/script/ScriptFile.h"

#include "ZelBase/Handles.h"
#include "tools/script_host/ErrorText.h"
#include "tools/script_host/script/Encoding.h"

#include <cwchar>

namespace tervane::scripthost {
namespace {

// No script is that long; a device or a mistaken file name must not eat all memory.
constexpr std::size_t kLongestFile = 64 << 20;

std::wstring FullPathOf(const std::wstring& path) {
    DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    DWORD length = size == 0 ? 0 : GetFullPathNameW(path.c_str(), size, full.data(), nullptr);
    if (length == 0 || length >= size) {
        return path;
    }
    full.resize(length);
    return full;
}

// ERROR_SUCCESS or the Win32 error.
DWORD ReadBytes(const std::wstring& path, std::string& bytes) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    ZelBase::UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr,
                                         OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) {
        return GetLastError();
    }
    char piece[16384];
    DWORD got = 0;
    do {
        if (!ReadFile(file.Get(), piece, sizeof piece, &got, nullptr)) {
            return GetLastError();
        }
        bytes.append(piece, got);
    } while (got != 0 && bytes.size() <= kLongestFile);
    return bytes.size() <= kLongestFile ? ERROR_SUCCESS : ERROR_FILE_TOO_LARGE;
}

// nullopt if the last character is cut.
std::optional<std::wstring> FromUtf16(std::string_view bytes, bool bigEndian) {
    if (bytes.size() % 2 != 0) {
        return std::nullopt;
    }
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        auto first = static_cast<unsigned char>(bytes[i]);
        auto second = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<wchar_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    return text;
}

std::optional<std::wstring> Decode(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        return FromUtf16(bytes.substr(2), false);
    }
    if (bytes.starts_with("\xFE\xFF")) {
        return FromUtf16(bytes.substr(2), true);
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        return FromCodePage(CP_UTF8, bytes.substr(3));
    }
    std::optional<std::wstring> text = FromCodePage(CP_UTF8, bytes);
    return text ? text : FromCodePage(CP_ACP, bytes);
}

} // namespace

std::optional<ScriptFile> ScriptFile::Load(const std::wstring& path, std::wstring& error) {
    std::string bytes;
    DWORD code = ReadBytes(path, bytes);
    if (code != ERROR_SUCCESS) {
        error = L"Cannot read script \"" + path + L"\": " + ErrorText(HRESULT_FROM_WIN32(code));
        return std::nullopt;
    }
    std::optional<std::wstring> text = Decode(bytes);
    // The engines take a script as a zero-terminated text and would run its first part only.
    if (!text || text->find(L'\0') != std::wstring::npos) {
        error = L"Cannot read script \"" + path + L"\": it is no text file.";
        return std::nullopt;
    }
    return ScriptFile(FullPathOf(path), *std::move(text));
}

std::wstring_view ScriptFile::Name() const noexcept {
    std::wstring_view path = fullPath_;
    return path.substr(path.find_last_of(L"\\/") + 1);
}

std::wstring_view ScriptFile::EngineByExtension() const noexcept {
    std::wstring_view name = Name();
    std::size_t dot = name.rfind(L'.');
    // The name ends its string, so the pointer below is zero-terminated.
    const wchar_t* extension = dot == std::wstring_view::npos ? L"" : name.data() + dot;
    if (_wcsicmp(extension, L".js") == 0) {
        return L"JScript";
    }
    return _wcsicmp(extension, L".vbs") == 0 ? L"VBScript" : L"";
}

} // namespace tervane::scripthost
