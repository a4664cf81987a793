#pragma once

// Lists of the installed or the live adapters for scripts, gathered in the background: a request
// returns its number at once, an event on the script's thread tells its end, and the array of its
// objects can then be fetched as often as wanted.

#include "component/Automation.h"
#include "component/ConnectionPoint.h"
#include "component/Control.h"
#include "component/PostbackWindow.h"
#include "objects/sysinfo/AdapterRequests.h"

#include <TERVANELib.h>

#include <optional>

namespace tervane {

class AdapterInfo final : public AutomationObject<IAdapterInfo, EventSource, Control>,
                          private PostbackOwner {
public:
    AdapterInfo(const ClassRow& row, IUnknown* outer);
    // Ends all running requests, without their events: that may take seconds for each whose thread
    // is stuck.
    ~AdapterInfo() override { requests_->Close(); }

    HRESULT STDMETHODCALLTYPE GetAdapterInfo(BSTR returnType, long wantedId, long* id) override;
    HRESULT STDMETHODCALLTYPE GetRequestedAdapterInfo(long id, VARIANT* adapters) override;
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long* code) override;

private:
    enum ErrorCode : long {
        kNoError = 0,
        kNoResources = 1,
        kUnknownReturnType = 2,
        kLocked = 4,
    };

    // A request has ended. Anybody may post anything, so what is told is looked up.
    void OnPostback(unsigned code, unsigned wParam) override;
    long StartRequest(std::wstring_view returnType, long wantedId);
    HRESULT Fire_OnAdapterInfoComplete(long id, bool gathered) const;

    // Made with the first request, on the thread whose requests they are.
    std::optional<PostbackWindow> window_;
    const std::shared_ptr<AdapterRequests> requests_;
    // Set by failures only: the code of the last failure stays until the next one.
    std::atomic<long> lastErrorCode_ = kNoError;
};

} // namespace tervane
