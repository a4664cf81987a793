#pragma once

// Three questions for scripts: can this name be resolved, can a connection to this port be opened,
// does this host answer a ping. Each call starts a worker of its own and returns; the answer is an
// event with one flag, fired on the worker's thread.

#include "ZelBase/threads/LocalMutex.h"
#include "component/Automation.h"
#include "component/ConnectionPoint.h"

#include <TERVANELib.h>

#include <functional>
#include <memory>

namespace ZelNet {
class IpHelper;
}

namespace tervane {

class ConnectivityTester final : public AutomationObject<IConnectivityTester, EventSource> {
public:
    ConnectivityTester(const ClassRow& row, IUnknown* outer) : Object(row, outer) {}

    HRESULT STDMETHODCALLTYPE DNSLookup(BSTR name, long timeout) override;
    HRESULT STDMETHODCALLTYPE TestTCPPort(BSTR location, unsigned short port,
                                          long timeout) override;
    HRESULT STDMETHODCALLTYPE Ping(BSTR name, long timeout, long retries) override;

private:
    enum class WorkerEnd {
        GiveEverythingBack,
        // Neither its use of the socket layer nor its apartment.
        KeepSocketLayerInUse,
    };

    // For the first look-up and all later ones of this object. On a worker: loading takes its time.
    std::shared_ptr<const ZelNet::IpHelper> KeptIpHelper();

    // Runs `test` on a worker and fires `event` with its result; false when it throws.
    HRESULT StartTest(std::function<bool()> test,
                      HRESULT (ConnectivityTester::*fire)(bool success) const, WorkerEnd end);

    HRESULT Fire_OnDNSLookupComplete(bool success) const;
    HRESULT Fire_OnTCPPortTestComplete(bool success) const;
    HRESULT Fire_OnPingComplete(bool success) const;

    ZelBase::LocalMutex mutex_;
    std::shared_ptr<const ZelNet::IpHelper> ipHelper_ ZELBASE_GUARDED_BY(mutex_);
};

} // namespace tervane
