#include "objects/sysinfo/DriveInfo.h"

#include "component/Answers.h"
#include "objects/Classes.h"
#include "objects/sysinfo/Drives.h"
#include "objects/sysinfo/SystemSnapshot.h"

namespace tervane {

DriveFacts ReadDriveFacts(char letter) {
    const Drives drives;
    const DriveSpace space = drives.SpaceOf(letter);
    return {DriveClassText(drives.ClassOf(letter)), std::wstring(1, static_cast<wchar_t>(letter)),
            ToScriptNumber(space.total), ToScriptNumber(space.free),
            letter == drives.SystemLetter()};
}

HRESULT CreateDriveInfo(const DriveFacts& facts, REFIID iid, void** out) {
    return CreateFilled<DriveInfo>(CLSID_DriveInfo, facts, iid, out);
}

HRESULT DriveInfo::get_Type(BSTR* text) {
    return ReturnText(facts_.type, text);
}

HRESULT DriveInfo::get_Letter(BSTR* text) {
    return ReturnText(facts_.letter, text);
}

HRESULT DriveInfo::get_TotalSize(long* megabytes) {
    return AnswerNumber(megabytes, [&] { return facts_.totalSize; });
}

HRESULT DriveInfo::get_FreeSpace(long* megabytes) {
    return AnswerNumber(megabytes, [&] { return facts_.freeSpace; });
}

// A plain number, 1 for true.
HRESULT DriveInfo::get_SystemDrive(long* value) {
    return AnswerNumber(value, [&] { return facts_.systemDrive; });
}

namespace create {

HRESULT DriveInfo(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::DriveInfo>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
