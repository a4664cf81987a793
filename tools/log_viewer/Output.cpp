#include "tools/log_viewer/Output.h"

#include "ZelBase/text/AnsiText.h"
#include "ZelBase/text/TextConversion.h"

namespace {

HANDLE ConsoleOutput() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) ? output : nullptr;
}

constexpr WORD kTextColour =
    FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE | FOREGROUND_INTENSITY;

// Bright colours are read on dark and on light consoles; plain lines keep the console's own.
WORD Colour(Tone tone, WORD plain) {
    switch (tone) {
    case Tone::kError:
        return (plain & ~kTextColour) | FOREGROUND_RED | FOREGROUND_INTENSITY;
    case Tone::kWarning:
        return (plain & ~kTextColour) | FOREGROUND_RED | FOREGROUND_GREEN;
    case Tone::kNotice:
        return (plain & ~kTextColour) | FOREGROUND_RED | FOREGROUND_BLUE;
    default:
        return plain;
    }
}

} // namespace

Output::Output(bool colours) : console_(ConsoleOutput()), colours_(colours) {}

bool Output::SaveTo(const std::wstring& file) {
    file_.Reset(_wfopen(file.c_str(), L"wb"));
    return isSaved_ = static_cast<bool>(file_);
}

void Output::Write(const std::string& line, Tone tone) {
    if (file_) {
        const std::string text = ZelBase::Utf16ToUtf8(ZelBase::AnsiToWide(line)) + "\r\n";
        isSaved_ = isSaved_ && std::fwrite(text.data(), 1, text.size(), file_.Get()) == text.size();
    }
    if (console_ != nullptr) {
        WriteToConsole(ZelBase::AnsiToWide(line) + L"\r\n", tone);
    } else {
        std::printf("%s\n", line.c_str());
    }
}

// The console shows characters, whatever code page it has for bytes.
void Output::WriteToConsole(const std::wstring& line, Tone tone) const {
    CONSOLE_SCREEN_BUFFER_INFO before{};
    const bool isColoured = colours_ && tone != Tone::kPlain &&
                            GetConsoleScreenBufferInfo(console_, &before) &&
                            SetConsoleTextAttribute(console_, Colour(tone, before.wAttributes));
    DWORD written = 0;
    WriteConsoleW(console_, line.c_str(), static_cast<DWORD>(line.size()), &written, nullptr);
    if (isColoured) {
        SetConsoleTextAttribute(console_, before.wAttributes);
    }
}

bool Output::Flush() {
    isSaved_ = isSaved_ && (!file_ || std::fflush(file_.Get()) == 0);
    return std::fflush(stdout) == 0;
}
