#pragma once

// Where lines go: to a console with colours, to a file or pipe as they are, and into a file
// besides.

#include "ZelBase/UniqueResource.h"

#include <windows.h>

#include <cstdio>
#include <string>

enum class Tone { kPlain, kError, kWarning, kNotice };

class Output {
public:
    explicit Output(bool colours);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // Lines also go to this file, in UTF-8, from now on; what it held is lost. False if it cannot
    // be written.
    bool SaveTo(const std::wstring& file);
    // `line` is in the ANSI code page, without line end. A console's colour is restored at once.
    void Write(const std::string& line, Tone tone);

    // False when nobody reads the output any more.
    bool Flush();
    // False when something could not be written to the file.
    bool IsSaved() const { return isSaved_; }

private:
    struct FileTraits {
        using Type = std::FILE*;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type file) noexcept { std::fclose(file); }
    };

    void WriteToConsole(const std::wstring& line, Tone tone) const;

    const HANDLE console_; // null if the output is none
    const bool colours_;
    ZelBase::UniqueResource<FileTraits> file_;
    bool isSaved_ = true;
};
