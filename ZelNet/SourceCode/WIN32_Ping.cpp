#include "ZelNet/SourceCode/WIN32_Ping.h"

#include "ZelBase/threads/CriticalSection.h"
#include "ZelNet/SourceCode/WIN32_IcmpLibrary.h"

#include <cstring>

namespace ZelNet {
namespace {

using ZelBase::CriticalSectionLock;

struct SharedIcmp {
    // Held while loading, so that the second object finds the library ready.
    ZelBase::CriticalSection lock;
    int users ZELBASE_GUARDED_BY(lock) = 0;
    std::unique_ptr<WIN32_IcmpLibrary> library ZELBASE_GUARDED_BY(lock);
};

// Never destroyed: it must not unload a library while this one is being unloaded.
SharedIcmp& Shared() {
    static SharedIcmp& shared = *new SharedIcmp;
    return shared;
}

const WIN32_IcmpLibrary* Library() {
    SharedIcmp& shared = Shared();
    CriticalSectionLock guard(shared.lock);
    return shared.library.get();
}

} // namespace

std::unique_ptr<APing> APing::Create() {
    auto ping = std::make_unique<WIN32_Ping>();
    return ping->LoadFailed() ? nullptr : std::move(ping);
}

WIN32_Ping::WIN32_Ping() {
    SharedIcmp& shared = Shared();
    CriticalSectionLock guard(shared.lock);
    if (shared.users == 0) {
        shared.library = WIN32_IcmpLibrary::Load();
    }
    ++shared.users;
    loadFailed_ = !shared.library;
}

WIN32_Ping::~WIN32_Ping() {
    SharedIcmp& shared = Shared();
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
