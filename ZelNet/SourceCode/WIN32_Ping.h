#pragma once

#include "ZelBase/SystemLibrary.h"
#include "ZelNet/SourceCode/APing.h"

#include <winsock2.h>

#include <iphlpapi.h>

#include <icmpapi.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace ZelNet {

// The system's functions for ICMP echo requests, and the one handle that they are used with.
class WIN32_IcmpLibrary {
public:
    // Takes the functions from the first of the named libraries that has them all, and opens the
    // handle. Null when none has them, or when the system does not let this process ping. Since
    // Windows XP "ICMP.DLL" only forwards to "IPHLPAPI.DLL", and newer systems may do without it.
    static std::unique_ptr<WIN32_IcmpLibrary> Load(std::initializer_list<const char*> names = {
                                                       "ICMP.DLL", "IPHLPAPI.DLL"});

    ~WIN32_IcmpLibrary();
    WIN32_IcmpLibrary(const WIN32_IcmpLibrary&) = delete;
    WIN32_IcmpLibrary& operator=(const WIN32_IcmpLibrary&) = delete;

    // As the system's IcmpSendEcho: the number of replies in `reply`. At most 1400 bytes of data.
    DWORD SendEcho(std::uint32_t address, const std::string& data, std::uint8_t ttl, void* reply,
                   DWORD replySize, DWORD timeoutMs) const;

private:
    WIN32_IcmpLibrary() = default;

    bool FindFunctions(const ZelBase::SystemLibrary& library);
    void HoldModuleOf(const void* function);

    std::vector<ZelBase::SystemLibrary> libraries_;
    // Those that the functions really lie in.
    std::vector<ZelBase::UniqueLibrary> modules_;
    decltype(&::IcmpCreateFile) createFile_ = nullptr;
    decltype(&::IcmpCloseHandle) closeHandle_ = nullptr;
    decltype(&::IcmpSendEcho) sendEcho_ = nullptr;
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// All objects share the ICMP library and one handle of it: the first loads it, the last to go
// unloads it.
class WIN32_Ping final : public APing {
public:
    WIN32_Ping();
    ~WIN32_Ping() override;

    // Whether the library could not be loaded, for which this object is of no use.
    bool LoadFailed() const { return loadFailed_; }
    int Ping(const IpAddress& address, IpAddress& replyAddress, std::uint32_t& roundTripMs,
             std::uint16_t timeoutMs, std::uint8_t ttl, int dataSize) override;

private:
    bool loadFailed_ = true;
};

} // namespace ZelNet
