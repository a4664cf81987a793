#pragma once

// The dial-up functions of "rasapi32.dll" as a table, found at run time because systems without
// dial-up networking lack the library and old ones some of its functions. Each exists in a wide and
// a narrow form that differ in the type of their characters only, and so does the table: on the 9x
// family only the narrow ones work.
//
// A function that is missing is in the table all the same and returns why it cannot be called, so
// nobody needs to ask. Tests put a table of their own in the place of the system's.

#include "ZelBase/SystemLibrary.h"

#include <windows.h>

#include <ras.h>
#include <raserror.h>

#include <array>
#include <cstddef>
#include <string>

namespace tervane {

struct WideRas {
    using Character = wchar_t;
    using EntryName = RASENTRYNAMEW;
    using Entry = RASENTRYW;
    using DialParams = RASDIALPARAMSW;
    using Connection = RASCONNW;
    using Status = RASCONNSTATUSW;
    using Device = RASDEVINFOW;
    static constexpr char kSuffix = 'W';
};

struct NarrowRas {
    using Character = char;
    using EntryName = RASENTRYNAMEA;
    using Entry = RASENTRYA;
    using DialParams = RASDIALPARAMSA;
    using Connection = RASCONNA;
    using Status = RASCONNSTATUSA;
    using Device = RASDEVINFOA;
    static constexpr char kSuffix = 'A';
};

template <typename Form>
struct RasApi {
    using Name = const typename Form::Character*;

    DWORD(WINAPI* enumEntries)
    (Name, Name, typename Form::EntryName*, DWORD*, DWORD*);
    DWORD(WINAPI* getEntry)(Name, Name, typename Form::Entry*, DWORD*, BYTE*, DWORD*);
    DWORD(WINAPI* setEntry)(Name, Name, typename Form::Entry*, DWORD, BYTE*, DWORD);
    DWORD(WINAPI* validateName)(Name, Name);
    DWORD(WINAPI* renameEntry)(Name, Name, Name);
    DWORD(WINAPI* deleteEntry)(Name, Name);
    DWORD(WINAPI* getDialParams)(Name, typename Form::DialParams*, BOOL*);
    DWORD(WINAPI* setDialParams)(Name, typename Form::DialParams*, BOOL);
    DWORD(WINAPI* dial)
    (RASDIALEXTENSIONS*, Name, typename Form::DialParams*, DWORD, void*, HRASCONN*);
    DWORD(WINAPI* hangUp)(HRASCONN);
    DWORD(WINAPI* enumConnections)(typename Form::Connection*, DWORD*, DWORD*);
    DWORD(WINAPI* getStatus)(HRASCONN, typename Form::Status*);
    DWORD(WINAPI* enumDevices)(typename Form::Device*, DWORD*, DWORD*);
    DWORD(WINAPI* getErrorText)(UINT, typename Form::Character*, DWORD);
    DWORD(WINAPI* getCountry)(RASCTRYINFO*, DWORD*);
    DWORD(WINAPI* notifyConnection)(HRASCONN, HANDLE, DWORD);

    // The functions of a loaded library; ERROR_PROC_NOT_FOUND from those that it lacks.
    static RasApi Of(const ZelBase::SystemLibrary& library) {
        return Fill<ERROR_PROC_NOT_FOUND>(library);
    }
    // Of a system without the library: ERROR_MOD_NOT_FOUND from all of them.
    static RasApi Missing() { return Fill<ERROR_MOD_NOT_FOUND>(ZelBase::SystemLibrary()); }

private:
    template <DWORD error, typename... Arguments>
    static DWORD WINAPI Refuse(Arguments...) {
        return error;
    }
    template <DWORD error, typename... Arguments>
    static void Find(const ZelBase::SystemLibrary& library, const char* stem,
                     DWORD(WINAPI*& function)(Arguments...)) {
        const std::string name = std::string(stem) + Form::kSuffix;
        function = library.Find<DWORD(WINAPI*)(Arguments...)>(name.c_str());
        if (!function) {
            function = &Refuse<error, Arguments...>;
        }
    }
    template <DWORD error>
    static RasApi Fill(const ZelBase::SystemLibrary& library) {
        RasApi api;
        Find<error>(library, "RasEnumEntries", api.enumEntries);
        Find<error>(library, "RasGetEntryProperties", api.getEntry);
        Find<error>(library, "RasSetEntryProperties", api.setEntry);
        Find<error>(library, "RasValidateEntryName", api.validateName);
        Find<error>(library, "RasRenameEntry", api.renameEntry);
        Find<error>(library, "RasDeleteEntry", api.deleteEntry);
        Find<error>(library, "RasGetEntryDialParams", api.getDialParams);
        Find<error>(library, "RasSetEntryDialParams", api.setDialParams);
        Find<error>(library, "RasDial", api.dial);
        Find<error>(library, "RasHangUp", api.hangUp);
        Find<error>(library, "RasEnumConnections", api.enumConnections);
        Find<error>(library, "RasGetConnectStatus", api.getStatus);
        Find<error>(library, "RasEnumDevices", api.enumDevices);
        Find<error>(library, "RasGetErrorString", api.getErrorText);
        Find<error>(library, "RasGetCountryInfo", api.getCountry);
        Find<error>(library, "RasConnectionNotification", api.notifyConnection);
        return api;
    }
};

// The structures of dial-up networking have grown with Windows, and each release tells its own by
// their sizes: it refuses (ERROR_INVALID_SIZE) a structure larger than the one it knows, while
// newer releases take every older one. So each call is tried with the sizes of Windows XP, 2000, NT
// 4 and 95 in turn, as far as they differ.

// Structures end on a multiple of four bytes.
constexpr DWORD RasSizeUpTo(std::size_t offset) noexcept {
    return static_cast<DWORD>((offset + 3) / 4 * 4);
}

template <typename EntryName>
inline constexpr std::array<DWORD, 2> kRasEntryNameSizes = {
    sizeof(EntryName), RasSizeUpTo(offsetof(EntryName, dwFlags))};

template <typename Entry>
inline constexpr std::array<DWORD, 4> kRasEntrySizes = {
    sizeof(Entry), RasSizeUpTo(offsetof(Entry, dwfOptions2)), RasSizeUpTo(offsetof(Entry, dwType)),
    RasSizeUpTo(offsetof(Entry, dwSubEntries))};

template <typename DialParams>
inline constexpr std::array<DWORD, 2> kRasDialParamsSizes = {
    sizeof(DialParams), RasSizeUpTo(offsetof(DialParams, dwSubEntry))};

template <typename Connection>
inline constexpr std::array<DWORD, 4> kRasConnectionSizes = {
    sizeof(Connection), RasSizeUpTo(offsetof(Connection, dwFlags)),
    RasSizeUpTo(offsetof(Connection, guidEntry)), RasSizeUpTo(offsetof(Connection, szPhonebook))};

template <typename Status>
inline constexpr std::array<DWORD, 2> kRasStatusSizes = {
    sizeof(Status), RasSizeUpTo(offsetof(Status, szPhoneNumber))};

template <typename Device>
inline constexpr std::array<DWORD, 1> kRasDeviceSizes = {sizeof(Device)};

// Calls with each size until one is not refused, and returns what that call returned.
template <typename Sizes, typename Call>
DWORD TryRasSizes(const Sizes& sizes, Call call) {
    DWORD status = ERROR_INVALID_SIZE;
    for (auto size = sizes.begin(); status == ERROR_INVALID_SIZE && size != sizes.end(); ++size) {
        status = call(*size);
    }
    return status;
}

} // namespace tervane
