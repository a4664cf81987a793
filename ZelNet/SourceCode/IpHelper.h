#pragma once

// The IP Helper library, which older systems lack: loaded at run time, and every function that is
// not there answers ERROR_NOT_SUPPORTED. The functions are those of "IPHLPAPI.DLL", arguments and
// results included; tests put their own adapters and parameters here.

#include <winsock2.h>

#include <iphlpapi.h>

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace ZelNet {

class IpHelper {
public:
    // The system's. Never null.
    static std::shared_ptr<IpHelper> Load();

    virtual ~IpHelper() = default;
    // Whether the library is there at all.
    virtual bool IsAvailable() const = 0;
    // Whether leases can be listed, released and renewed: the last three functions.
    virtual bool HasLeaseFunctions() const = 0;
    virtual DWORD GetAdaptersInfo(IP_ADAPTER_INFO* adapters, ULONG* size) const = 0;
    virtual DWORD GetNetworkParams(FIXED_INFO* parameters, ULONG* size) const = 0;
    virtual DWORD GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL sorted) const = 0;
    virtual DWORD GetInterfaceInfo(IP_INTERFACE_INFO* interfaces, ULONG* size) const = 0;
    virtual DWORD IpReleaseAddress(IP_ADAPTER_INDEX_MAP* adapter) const = 0;
    virtual DWORD IpRenewAddress(IP_ADAPTER_INDEX_MAP* adapter) const = 0;

protected:
    IpHelper() = default;
    IpHelper(const IpHelper&) = delete;
    IpHelper& operator=(const IpHelper&) = delete;
};

// The characters in a place of a table up to the first zero, or to its end.
template <std::size_t Size>
std::string_view TextIn(const char (&place)[Size]) {
    return {place, strnlen(place, Size)};
}

// A table that one of the functions filled, in a buffer that grew until it fitted.
template <typename Table>
class IpHelperTable {
public:
    // `read` calls the function with a buffer and its size.
    template <typename Read>
    explicit IpHelperTable(Read read) {
        ULONG size = kFirstSize;
        for (int attempt = 0; attempt < kAttempts && NeedsMore(result_); ++attempt) {
            bytes_.assign(size, 0);
            result_ = read(reinterpret_cast<Table*>(bytes_.data()), &size);
        }
        if (result_ != NO_ERROR) {
            bytes_.clear();
        }
    }

    // What the function returned at last.
    DWORD Result() const { return result_; }

    // Null when the function failed.
    const Table* Get() const {
        return bytes_.empty() ? nullptr : reinterpret_cast<const Table*>(bytes_.data());
    }

private:
    static constexpr ULONG kFirstSize = 4096;
    // The table may grow between two calls.
    static constexpr int kAttempts = 5;

    static bool NeedsMore(DWORD result) {
        return result == ERROR_BUFFER_OVERFLOW || result == ERROR_INSUFFICIENT_BUFFER;
    }

    DWORD result_ = ERROR_BUFFER_OVERFLOW;
    std::vector<unsigned char> bytes_;
};

} // namespace ZelNet
