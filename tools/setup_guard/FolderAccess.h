#pragma once

// Who may put other files in the place of installed ones. A folder from which every account's hosts
// load a library must be one that only administrators can change, and so must the way to it.

#include <windows.h>

#include <string>

namespace setup_guard {

// What ordinary accounts may do with one folder.
enum class Access {
    kSafe,     // nothing that changes it
    kWritable, // change it, as `FindAccess` says how
    kUnknown   // its access rights cannot be read, or its drive keeps none
};

// Which rights make a folder unsafe.
enum class Role {
    kTarget,  // files lie in it: adding to it counts, too, and what new files would inherit
    kAncestor // leads there: only what takes the next folder's name away or gives rights away
};

// `account` is set to the identifier of the first account that may change it. Trusted are the
// system, the administrators, its own installer, and the account that asks.
Access FindAccess(const std::wstring& folder, Role role, std::wstring& account);

// Gives the folder and what it holds rights of its own: administrators and the system may change
// it, all others read and run. False if the system refuses.
bool Tighten(const std::wstring& folder);

} // namespace setup_guard
