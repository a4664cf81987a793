#pragma once

// A script's text, whatever encoding it was saved in: UTF-16 of either byte order or UTF-8 by their
// byte order marks, without a mark UTF-8 if the bytes are valid UTF-8, else the ANSI code page.

#include <optional>
#include <string>
#include <string_view>

namespace tervane::scripthost {

class ScriptFile {
public:
    // nullopt, with a reason in `error`, if the file cannot be read or is no text.
    static std::optional<ScriptFile> Load(const std::wstring& path, std::wstring& error);

    const std::wstring& FullPath() const noexcept { return fullPath_; }
    // The last part of the full path.
    std::wstring_view Name() const noexcept;
    // ProgID of the engine that the extension stands for; empty for an unknown one.
    std::wstring_view EngineByExtension() const noexcept;
    const std::wstring& Text() const noexcept { return text_; }

private:
    ScriptFile(std::wstring fullPath, std::wstring text)
        : fullPath_(std::move(fullPath)), text_(std::move(text)) {}

    std::wstring fullPath_;
    std::wstring text_;
};

} // namespace tervane::scripthost
