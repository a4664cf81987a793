#pragma once

// A drive that exists for the time of a test. Only Wine can make one of any type out of a folder.

#include <windows.h>

namespace tervane::test {

class MappedDrive {
public:
    // One of the DRIVE_ types; its root is the machine's folder for temporary files.
    MappedDrive(char letter, UINT type);
    ~MappedDrive();
    MappedDrive(const MappedDrive&) = delete;
    MappedDrive& operator=(const MappedDrive&) = delete;

    // False when the letter was taken, or the system is not Wine.
    bool IsMapped() const { return mapped_; }

private:
    char letter_;
    bool mapped_ = false;
};

} // namespace tervane::test
