#include "ZelNet/SourceCode/WIN32_Ping.h"

#include "ZelBase/threads/CriticalSection.h"

#include <algorithm>
#include <cstring>

namespace ZelNet {

std::unique_ptr<WIN32_IcmpLibrary>
WIN32_IcmpLibrary::Load(std::initializer_list<const char*> names) {
    std::unique_ptr<WIN32_IcmpLibrary> icmp(new WIN32_IcmpLibrary);
    // All of them before the first look-up of a function: a forwarded one is found in a module that
    // somebody else may be about to unload.
    for (const char* name : names) {
        icmp->libraries_.emplace_back(name);
    }
    const bool found = std::any_of(
        icmp->libraries_.begin(), icmp->libraries_.end(),
        [&](const ZelBase::SystemLibrary& library) { return icmp->FindFunctions(library); });
    if (!found) {
        return nullptr;
    }
    icmp->HoldModuleOf(reinterpret_cast<const void*>(icmp->createFile_));
    icmp->HoldModuleOf(reinterpret_cast<const void*>(icmp->closeHandle_));
    icmp->HoldModuleOf(reinterpret_cast<const void*>(icmp->sendEcho_));
    icmp->handle_ = icmp->createFile_();
    return icmp->handle_ != INVALID_HANDLE_VALUE ? std::move(icmp) : nullptr;
}

WIN32_IcmpLibrary::~WIN32_IcmpLibrary() {
    if (closeHandle_ && handle_ != INVALID_HANDLE_VALUE) {
        closeHandle_(handle_);
    }
}

bool WIN32_IcmpLibrary::FindFunctions(const ZelBase::SystemLibrary& library) {
    library.Find("IcmpCreateFile", createFile_);
    library.Find("IcmpCloseHandle", closeHandle_);
    library.Find("IcmpSendEcho", sendEcho_);
    return createFile_ && closeHandle_ && sendEcho_;
}

// A reference to a library that forwards does not hold the library that has the code: that one went
// when the last look-up of a name was done with it, and took the pings under way with it. Code that
// lies in no module, as a hook's may, stays where it is.
void WIN32_IcmpLibrary::HoldModuleOf(const void* function) {
    modules_.push_back(ZelBase::ReferenceModuleOf(function));
}

DWORD WIN32_IcmpLibrary::SendEcho(std::uint32_t address, const std::string& data, std::uint8_t ttl,
                                  void* reply, DWORD replySize, DWORD timeoutMs) const {
    IP_OPTION_INFORMATION options{};
    options.Ttl = ttl;
    // The data is only read.
    return sendEcho_(handle_, address, const_cast<char*>(data.data()),
                     static_cast<WORD>(data.size()), &options, reply, replySize, timeoutMs);
}

namespace {

using ZelBase::CriticalSectionLock;

struct SharedIcmp {
    SharedIcmp() = default;
    // A user that is left was killed with its thread. No library is unloaded while this one is.
    ~SharedIcmp() { static_cast<void>(library.release()); }
    SharedIcmp(const SharedIcmp&) = delete;
    SharedIcmp& operator=(const SharedIcmp&) = delete;

    // Held while loading, so that the second object finds the library ready.
    ZelBase::CriticalSection lock;
    int users ZELBASE_GUARDED_BY(lock) = 0;
    std::unique_ptr<WIN32_IcmpLibrary> library ZELBASE_GUARDED_BY(lock);
};

SharedIcmp shared;

const WIN32_IcmpLibrary* Library() {
    CriticalSectionLock guard(shared.lock);
    return shared.library.get();
}

} // namespace

std::unique_ptr<APing> APing::Create() {
    auto ping = std::make_unique<WIN32_Ping>();
    return ping->LoadFailed() ? nullptr : std::move(ping);
}

WIN32_Ping::WIN32_Ping() {
    CriticalSectionLock guard(shared.lock);
    if (shared.users == 0) {
        shared.library = WIN32_IcmpLibrary::Load();
    }
    ++shared.users;
    loadFailed_ = !shared.library;
}

WIN32_Ping::~WIN32_Ping() {
    CriticalSectionLock guard(shared.lock);
    if (--shared.users == 0) {
        shared.library.reset();
    }
}

int WIN32_Ping::Ping(const IpAddress& address, IpAddress& replyAddress, std::uint32_t& roundTripMs,
                     std::uint16_t timeoutMs, std::uint8_t ttl, int dataSize) {
    if (loadFailed_) {
        replyAddress = IpAddress();
        roundTripMs = 0;
        return kPingFailed;
    }
    // Room for a reply, the largest data and an ICMP error message.
    union {
        ICMP_ECHO_REPLY reply;
        char bytes[1528];
    } buffer{};
    static_assert(sizeof buffer == 1528);
    std::memset(&buffer, 0, sizeof buffer);
    const DWORD replies = Library()->SendEcho(address.GetValue(), RequestData(dataSize), ttl,
                                              &buffer, sizeof buffer, timeoutMs);
    replyAddress.SetAddress(static_cast<std::uint32_t>(buffer.reply.Address));
    roundTripMs = buffer.reply.RoundTripTime;
    return Result(buffer.reply.Status, replies, roundTripMs);
}

} // namespace ZelNet
