#pragma once

// Other programs' windows for scripts: wait until one comes or goes, ask whether it is visible,
// show, hide or close it, read its title, press its buttons. Windows are named by regular
// expressions on titles. Waits return at once with an identifier and end with an event, fired on
// the thread of the wait, that carries the identifier.

#include "component/Automation.h"
#include "component/ConnectionPoint.h"
#include "component/SinkArray.h"
#include "objects/config/windows/WaitTable.h"
#include "objects/config/windows/WindowWait.h"

#include <TERVANELib.h>

#include <atomic>
#include <memory>

namespace tervane {

// The events of the window manager. They are fired on wait threads, which hold on to the sinks and
// not to the object.

// Each calls every sink on this thread; the result is the last sink's.
HRESULT Fire_OnWaitOnWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept;
HRESULT Fire_OnWaitForWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept;
HRESULT Fire_OnWaitForWindowToComeAndGoComplete(SinkArray& sinks, LONG waitId,
                                                WaitResult result) noexcept;

class WindowMgr final : public AutomationObject<IWindowMgr, EventSource> {
public:
    WindowMgr(const ClassRow& row, IUnknown* outer) : Object(row, outer) {}
    // Ends all running waits, without their events. It may take as long as the slowest sink.
    ~WindowMgr() override { waits_->Close(); }

    HRESULT STDMETHODCALLTYPE WaitOnWindow(BSTR topLevelPattern, BSTR childPattern,
                                           long checkInterval, VARIANT_BOOL includeInvisible,
                                           long timeout, long* waitId) override;
    HRESULT STDMETHODCALLTYPE WaitForWindow(BSTR topLevelPattern, BSTR childPattern,
                                            long checkInterval, VARIANT_BOOL includeInvisible,
                                            long timeout, long* waitId) override;
    HRESULT STDMETHODCALLTYPE WaitForWindowToComeAndGo(BSTR topLevelPattern, BSTR childPattern,
                                                       long checkInterval,
                                                       VARIANT_BOOL includeInvisible, long timeout,
                                                       VARIANT_BOOL timeoutForAppearanceOnly,
                                                       long* waitId) override;
    HRESULT STDMETHODCALLTYPE GetWindowState(BSTR topLevelPattern, BSTR childPattern,
                                             long* state) override;
    HRESULT STDMETHODCALLTYPE SetWindowState(long state, BSTR topLevelPattern, BSTR childPattern,
                                             VARIANT_BOOL* found) override;
    HRESULT STDMETHODCALLTYPE GetMatchingWindowTitleText(BSTR topLevelPattern, BSTR childPattern,
                                                         BSTR* title) override;
    HRESULT STDMETHODCALLTYPE ClickButton(BSTR topLevelPattern, BSTR buttonPattern,
                                          VARIANT_BOOL* clicked) override;
    HRESULT STDMETHODCALLTYPE SetButtonCheckState(BSTR topLevelPattern, BSTR buttonPattern,
                                                  VARIANT_BOOL checked,
                                                  VARIANT_BOOL* done) override;
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long* code) override;
    HRESULT STDMETHODCALLTYPE AbortWait(long waitId, VARIANT_BOOL* aborted) override;

private:
    using Fire = HRESULT (*)(SinkArray& sinks, LONG waitId, WaitResult result) noexcept;
    enum ErrorCode : long {
        kNoError = 0,
        kNoResources = 1,
        kException = 2,
        kNoWindow = 4,
        kNoWait = 5
    };
    class FiringWait;

    long StartWait(const WindowWait::Request& request, Fire fire);
    bool TrySetWindowState(long state, BSTR topLevelPattern, BSTR childPattern) noexcept;
    bool TryAbortWait(long waitId);

    std::shared_ptr<WaitTable> waits_ = std::make_shared<WaitTable>();
    // Set by failures only: the code of the last failure stays until the next one.
    std::atomic<long> lastErrorCode_ = kNoError;
};

} // namespace tervane
