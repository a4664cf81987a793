#pragma once

// Dial-up networking that the tests own: a phone book, devices and connections behind the table of
// the system's functions, in their wide and their narrow form. It is as strict as the real one
// about sizes, names and handles, and plays whatever outcome a test asks for.

#include "objects/dialup/RasApi.h"
#include "objects/dialup/RasText.h"
#include "platform/text/LetterCase.h"
#include "tests/support/TestThreads.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tervane::test {

struct FakeEntry {
    std::wstring name;
    std::vector<unsigned char> image;
    std::wstring userName;
    std::wstring domain;
    std::optional<std::wstring> password;
};

struct FakeConnection {
    std::wstring entry;
    DWORD state = RASCS_OpenPort;
    int pollsUntilGone = -1; // counts once it is hung up; -1 before
    HANDLE endEvent = nullptr;
};

struct Progress {
    DWORD state;
    DWORD error;
};

// What a test chooses, and what becomes of it.
struct RasState {
    // Which release of Windows it is: 0 XP, 1 2000, 2 NT 4, 3 95; larger structures are refused.
    int release = 0;
    std::map<std::wstring, FakeEntry> entries; // by their names in lower case
    std::vector<std::pair<std::wstring, std::wstring>> devices = {
        {L"Parallel cable", L"PARALLEL"},
        {L"Modem 56K", L"modem"},
        {L"WAN Miniport", L"vpn"}}; // names and types
    std::map<DWORD, DWORD> countries = {
        {1, 1}, {7, 7}, {44, 44}, {49, 49}, {107, 1}}; // codes by identifiers
    std::map<HRASCONN, FakeConnection> connections;
    DWORD listError = 0;
    DWORD setEntryError = 0;
    DWORD setCredentialsError = 0;
    // What dialling leads to.
    DWORD dialError = 0;
    std::vector<Progress> progress;
    int pollsUntilGone = 2;
    int hangUps = 0;
    bool canNotify = true;
    // What was dialled last.
    std::wstring dialledUser;
    std::wstring dialledPassword;
    bool hearsBroadcasts = false; // the window that is told
};

struct FakeRas : RasState {
    TestMutex mutex;
    std::list<TestThread> senders;

    static FakeRas& Get() {
        static FakeRas ras;
        return ras;
    }
    // Forgets everything and waits for what is still being sent.
    void Reset();
    FakeEntry* Find(const std::wstring& name) {
        const auto found = entries.find(LowerCase(name));
        return found == entries.end() ? nullptr : &found->second;
    }
    // Ends a connection as if somebody else had hung up.
    void Drop(const std::wstring& entry);

    template <typename Form>
    static RasApi<Form> Api();
};

} // namespace tervane::test
