#pragma once

// Standard input as characters. A console gives UTF-16; a file or pipe gives bytes, which are read
// piece by piece, as they come: each piece is UTF-8 if it can be, else of the ANSI code page.

#include <windows.h>

#include <string>

namespace tervane::scripthost {

class StandardInput {
public:
    StandardInput();

    // Waits until there is a character to take. False at the end.
    bool HasMore();
    // Whether the next character ends a line; at the end, too. Waits as HasMore does.
    bool IsAtLineEnd();
    // Waits for so many characters; fewer at the end.
    std::wstring Take(std::size_t count);
    // Up to the end of the line, which is taken as well but not part of the result.
    std::wstring TakeLine();
    std::wstring TakeAll();
    // Nothing comes from now on.
    void Close();

    // Of the next character, counted from 1.
    LONG Line() const noexcept { return line_; }
    LONG Column() const noexcept { return column_; }

private:
    bool ReadMore();
    void ReadCharacters();
    void ReadBytes();
    void Decode(std::size_t count);
    wchar_t TakeOne();

    const HANDLE handle_;
    bool isConsole_ = false;
    bool isAtEnd_ = false;
    bool isAtStart_ = true;
    std::string bytes_;    // read, but not decoded
    std::wstring text_;    // decoded
    std::size_t next_ = 0; // of text_
    LONG line_ = 1;
    LONG column_ = 1;
};

} // namespace tervane::scripthost
