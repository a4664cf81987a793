#pragma once

// What kind of window the program is asked to show, read from its command line.
//
//   --title TEXT        title of the window; with --count, " 1" to " N" is added
//   --count N           N windows instead of one
//   --hidden            create it invisible
//   --appear-after MS   create it that much later
//   --vanish-after MS   destroy it that long after it appeared
//   --hang-after MS     stop answering messages that long after it appeared, for good
//   --group TEXT        a child that contains the controls up to --end; groups nest
//   --button TEXT       a push button; control identifiers count from 101 in the order given
//   --check-box TEXT    a check box
//   --edit TEXT         an edit control
//   --end               closes the innermost group
//   --lifetime SECONDS  the program ends itself after this time (60)

#include <string>
#include <vector>

#include <windows.h>

struct ControlOption {
    enum class Kind { kGroup, kButton, kCheckBox, kEdit, kEnd };
    Kind kind;
    std::wstring text;
};

struct Options {
    std::wstring title = L"Tervane test window";
    int count = 1;
    bool hidden = false;
    // Milliseconds; 0 is never, for appearAfter at once.
    UINT appearAfter = 0;
    UINT vanishAfter = 0;
    UINT hangAfter = 0;
    DWORD lifetimeSeconds = 60;
    std::vector<ControlOption> controls;
};

// False when an argument is unknown or lacks its value.
bool ReadOptions(int count, wchar_t** arguments, Options& options);
