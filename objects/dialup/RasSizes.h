#pragma once

// The structures of dial-up networking have grown with Windows, and each release tells its own by
// their sizes: it refuses (ERROR_INVALID_SIZE) a structure larger than the one it knows, while
// newer releases take every older one. So each call is tried with the sizes of Windows XP, 2000, NT
// 4 and 95 in turn, as far as they differ.

#include <windows.h>

#include <ras.h>
#include <raserror.h>

#include <array>
#include <cstddef>

namespace tervane {

// Structures end on a multiple of four bytes.
constexpr DWORD RasSizeUpTo(size_t offset) noexcept {
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
