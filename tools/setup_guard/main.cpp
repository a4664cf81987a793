// What the set-up asks about the system and cannot find out by its own means. Prints one line when
// the answer is no.
//
//   setup_guard folder PATH          makes the folder, if need be one that only administrators may
//                                    change; refuses where that cannot be had
//   setup_guard registered DLL BITS  whether all classes of the library are registered for 32- or
//                                    64-bit programs and lead to that file
//
// Exit code: 0 yes, 1 no, 2 bad usage.

#include "ZelBase/Handles.h"
#include "platform/text/NarrowText.h"
#include "tools/setup_guard/FolderAccess.h"
#include "tools/setup_guard/Registration.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>

namespace {

using setup_guard::Access;
using setup_guard::Role;

enum ExitCode { kYes = 0, kNo = 1, kUsage = 2 };

// Lies in every folder that the set-up has filled.
constexpr wchar_t kOwnMark[] = L"\\installed-files.txt";

int Refuse(const std::wstring& reason) {
    std::puts(tervane::ToNarrow(reason).value_or("a name has letters of another language").c_str());
    return kNo;
}

std::wstring Complaint(const std::wstring& folder, Access access, const std::wstring& account) {
    return folder + (access == Access::kUnknown ? L" keeps no access rights"
                                                : L" can be changed by the account " + account);
}

bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsEmpty(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    const ZelBase::UniqueFind search(FindFirstFileW((folder + L"\\*").c_str(), &entry));
    if (!search) {
        return false;
    }
    do {
        if (std::wcscmp(entry.cFileName, L".") != 0 && std::wcscmp(entry.cFileName, L"..") != 0) {
            return false;
        }
    } while (FindNextFileW(search.Get(), &entry));
    return true;
}

// The folder above, with its backslash for a drive's root; empty above that.
std::wstring Above(const std::wstring& folder) {
    const std::size_t end = folder.find_last_of(L'\\');
    if (end == std::wstring::npos || end + 1 == folder.size()) {
        return {};
    }
    return folder.substr(0, end > 0 && folder[end - 1] == L':' ? end + 1 : end);
}

int MakeSafe(const std::wstring& folder) {
    std::wstring account;
    const Access access = setup_guard::FindAccess(folder, Role::kTarget, account);
    if (access == Access::kSafe) {
        return kYes;
    }
    // What others keep there would lose its rights, too.
    if (!IsEmpty(folder) && !Exists(folder + kOwnMark)) {
        return Refuse(Complaint(folder, access, account));
    }
    setup_guard::Tighten(folder);
    const Access left = setup_guard::FindAccess(folder, Role::kTarget, account);
    return left == Access::kSafe ? int{kYes} : Refuse(Complaint(folder, left, account));
}

int MakeNewFolder(const std::wstring& folder) {
    if (!CreateDirectoryW(folder.c_str(), nullptr)) {
        return Refuse(folder + L" cannot be made");
    }
    const int result = MakeSafe(folder);
    if (result != kYes) {
        RemoveDirectoryW(folder.c_str());
    }
    return result;
}

// From the drive's root downwards: a folder is made only when those above it are safe.
int MakeFolder(const std::wstring& folder, bool isTarget) {
    const std::wstring above = Above(folder);
    if (!above.empty()) {
        if (const int result = MakeFolder(above, false); result != kYes) {
            return result;
        }
    }
    if (!Exists(folder)) {
        return MakeNewFolder(folder);
    }
    if (isTarget) {
        return MakeSafe(folder);
    }
    std::wstring account;
    const Access access = setup_guard::FindAccess(folder, Role::kAncestor, account);
    return access == Access::kSafe ? int{kYes} : Refuse(Complaint(folder, access, account));
}

int CheckRegistered(const wchar_t* library, const wchar_t* bits) {
    std::wstring complaint;
    const REGSAM view = std::wcscmp(bits, L"64") == 0 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
    return setup_guard::LeadsTo(library, view, complaint) ? int{kYes} : Refuse(complaint);
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count == 3 && std::wcscmp(arguments[1], L"folder") == 0) {
        return MakeFolder(arguments[2], true);
    }
    if (count == 4 && std::wcscmp(arguments[1], L"registered") == 0) {
        return CheckRegistered(arguments[2], arguments[3]);
    }
    std::fputs("usage: setup_guard folder PATH | registered DLL 32|64\n", stderr);
    return kUsage;
}
