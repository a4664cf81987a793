#pragma once

// One drive as scripts see it, as it was when the object was made. The facts never change, so the
// object may be made on one thread and handed to another.

#include "component/Automation.h"
#include "component/Control.h"

#include <TERVANELib.h>

#include <string>

namespace tervane {

struct DriveFacts {
    // One of the texts of DriveClassText.
    std::wstring type;
    std::wstring letter;
    // In MB.
    long totalSize = 0;
    long freeSpace = 0;
    // Whether it holds Windows.
    bool systemDrive = false;
};

// The facts of the drive with that letter, asked for now; a network drive may take its time.
DriveFacts ReadDriveFacts(char letter);

// A new object with these facts, asked for `iid`. The caller owns the reference; null on failure.
// Any thread.
HRESULT CreateDriveInfo(const DriveFacts& facts, REFIID iid, void** out);

class DriveInfo final : public AutomationObject<IDriveInfo, Control> {
public:
    // An object that a script creates itself knows no drive: empty texts and 0.
    DriveInfo(const ClassRow& row, IUnknown* outer, const DriveFacts& facts = {})
        : Object(row, outer), facts_(facts) {}

    HRESULT STDMETHODCALLTYPE get_Type(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_Letter(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_TotalSize(long* megabytes) override;
    HRESULT STDMETHODCALLTYPE get_FreeSpace(long* megabytes) override;
    HRESULT STDMETHODCALLTYPE get_SystemDrive(long* value) override;

private:
    const DriveFacts facts_;
};

} // namespace tervane
