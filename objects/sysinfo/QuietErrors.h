#pragma once

// While it lives, the system fails a call where it would otherwise show a box and wait for the user
// to put a disk into a drive: whoever looks at all drives must not stop at an empty one. Where the
// system can, this is limited to the calling thread; otherwise it holds for the process.

#include <windows.h>

namespace tervane {

class QuietErrors {
public:
    QuietErrors() noexcept;
    ~QuietErrors();
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    DWORD before_ = 0;
};

} // namespace tervane
