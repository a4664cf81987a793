#pragma once

// What the tests of settings share: hives of their own, and a registry that refuses.

#include "platform/registry/RegistryKey.h"

#include <string>

namespace tervane::test {

// For its lifetime this process sees an empty hive in the place of `hive`; nothing that is done
// there reaches the real one. The last one made must go first, as locals and members do.
class ScratchHive {
public:
    explicit ScratchHive(RegistryHive hive);
    ~ScratchHive();
    ScratchHive(const ScratchHive&) = delete;
    ScratchHive& operator=(const ScratchHive&) = delete;

    RegistryKey Open(const std::wstring& path) const;
    RegistryKey Create(const std::wstring& path) const;
    // Makes keys and values that are written a key a line, "path: name=value; name=value", with
    // `base` before each path: a text as it stands, a number as "#5", texts as "[a|b]".
    void Fill(const std::wstring& base, const std::wstring& text) const;

private:
    RegistryHive hive_;
    HKEY handle_;
    std::wstring place_;
};

// Deletes a key with everything below it.
void DeleteTree(RegistryHive hive, const std::wstring& path);

// Leaves everybody `rights` on a key, and no others.
void GrantOnly(HKEY key, DWORD rights);

// The system's registry, except that it refuses to write or delete the value of that name; Wine
// lets root do everything. One such registry at a time.
const RegistryApi& RefuseValue(const std::wstring& name);
// The same for creating keys whose path ends in `end`, and for deleting any key.
const RegistryApi& RefuseKey(const std::wstring& end);

} // namespace tervane::test
