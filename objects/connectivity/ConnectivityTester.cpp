#include "objects/connectivity/ConnectivityTester.h"

#include "ZelBase/text/AnsiText.h"
#include "ZelNet/SourceCode/IpHelper.h"
#include "ZelNet/SourceCode/sockets/InitializeSockets.h"
#include "component/ComEdge.h"
#include "component/Worker.h"
#include "objects/Classes.h"
#include "objects/connectivity/HostProbes.h"

#include <memory>
#include <string>

namespace tervane {
namespace {

constexpr long kDnsTimeoutMs = 10000;
constexpr long kTcpTimeoutMs = 4000;
constexpr long kPingTimeoutMs = 10000;

} // namespace

// The three time-out rules differ, deliberately: here 0 means none.
HRESULT ConnectivityTester::DNSLookup(BSTR name, long timeout) {
    return Guarded([&] {
        const auto limit = static_cast<std::uint32_t>(timeout < 0 ? kDnsTimeoutMs : timeout);
        return StartTest(
            [this, name = ZelBase::WideToAnsi(TextOf(name)), limit] {
                return CanResolve(name, limit, limit != 0 ? KeptIpHelper() : nullptr);
            },
            &ConnectivityTester::Fire_OnDNSLookupComplete, WorkerEnd::GiveEverythingBack);
    });
}

HRESULT ConnectivityTester::TestTCPPort(BSTR location, unsigned short port, long timeout) {
    return Guarded([&] {
        const auto limit = static_cast<std::uint32_t>(timeout < 1 ? kTcpTimeoutMs : timeout);
        return StartTest(
            [location = ZelBase::WideToAnsi(TextOf(location)), port, limit] {
                TcpConnectProbe probe;
                return probe.Run(location, port, limit);
            },
            &ConnectivityTester::Fire_OnTCPPortTestComplete, WorkerEnd::KeepSocketLayerInUse);
    });
}

HRESULT ConnectivityTester::Ping(BSTR name, long timeout, long retries) {
    return Guarded([&] {
        // The ping facility takes 16 bits; longer time-outs lose their high bits.
        const auto limit = static_cast<std::uint16_t>(timeout < 1 ? kPingTimeoutMs : timeout);
        return StartTest([name = ZelBase::WideToAnsi(TextOf(name)), limit,
                          retries] { return AnswersPing(name, limit, retries); },
                         &ConnectivityTester::Fire_OnPingComplete, WorkerEnd::GiveEverythingBack);
    });
}

HRESULT ConnectivityTester::StartTest(std::function<bool()> test,
                                      HRESULT (ConnectivityTester::*fire)(bool success) const,
                                      WorkerEnd end) {
    WorkerRequest request;
    request.object = AddReference(Controlling());
    request.work = [this, test = std::move(test), fire] { (this->*fire)(Contained(test, false)); };
    if (end == WorkerEnd::GiveEverythingBack) {
        auto sockets = std::make_shared<std::unique_ptr<ZelNet::SocketLayerUse>>();
        request.enter = [sockets] { *sockets = std::make_unique<ZelNet::SocketLayerUse>(); };
        request.leave = [sockets] { sockets->reset(); };
    } else {
        // Deliberately never given back: once a port was tested, the socket layer stays for as
        // long as the library is loaded.
        request.enter = [] { ZelNet::InitializeSockets(); };
        request.uninitializeCom = false;
    }
    return StartWorker(std::move(request)) ? S_OK : E_OUTOFMEMORY;
}

std::shared_ptr<const ZelNet::IpHelper> ConnectivityTester::KeptIpHelper() {
    const ZelBase::LocalMutexLock lock(mutex_);
    if (ipHelper_) {
        return ipHelper_;
    }
    std::shared_ptr<const ZelNet::IpHelper> loaded = ZelNet::IpHelper::Load();
    if (loaded->IsAvailable()) { // what could not be loaded may be the next time
        ipHelper_ = loaded;
    }
    return loaded;
}

HRESULT ConnectivityTester::Fire_OnDNSLookupComplete(bool success) const {
    return FireEvent(*Sinks(), 1, {success});
}

HRESULT ConnectivityTester::Fire_OnTCPPortTestComplete(bool success) const {
    return FireEvent(*Sinks(), 2, {success});
}

HRESULT ConnectivityTester::Fire_OnPingComplete(bool success) const {
    return FireEvent(*Sinks(), 3, {success});
}

namespace create {

HRESULT ConnectivityTester(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::ConnectivityTester>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
