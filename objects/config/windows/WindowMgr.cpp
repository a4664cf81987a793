#include "objects/config/windows/WindowMgr.h"

#include "component/Answers.h"
#include "component/ConnectionPoint.h"
#include "objects/Classes.h"
#include "objects/config/windows/WindowActions.h"
#include "platform/ComValues.h"

#include <objbase.h>

namespace tervane {
namespace {

// The event's numbers in the type library.
enum Event : DISPID { kOnWaitOnWindow = 1, kOnWaitForWindow = 2, kOnWaitForWindowToComeAndGo = 3 };

} // namespace

HRESULT Fire_OnWaitOnWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept {
    return FireEvent(sinks, kOnWaitOnWindow, {waitId, static_cast<LONG>(result)});
}

HRESULT Fire_OnWaitForWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept {
    return FireEvent(sinks, kOnWaitForWindow, {waitId, static_cast<LONG>(result)});
}

HRESULT Fire_OnWaitForWindowToComeAndGoComplete(SinkArray& sinks, LONG waitId,
                                                WaitResult result) noexcept {
    return FireEvent(sinks, kOnWaitForWindowToComeAndGo, {waitId, static_cast<LONG>(result)});
}

namespace {

// A null string is an empty pattern, which every title matches.
WindowFinder FinderFor(BSTR topLevelPattern, BSTR childPattern) {
    return WindowFinder(TextOf(topLevelPattern), TextOf(childPattern));
}

// Invisible windows count only for the one true VARIANT_BOOL: deliberate, other numbers are false.
WindowWait::Request RequestFor(WindowWait::Kind kind, BSTR topLevelPattern, BSTR childPattern,
                               long checkInterval, VARIANT_BOOL includeInvisible, long timeout,
                               VARIANT_BOOL timeoutForAppearanceOnly = VARIANT_FALSE) {
    return {kind,
            std::wstring(TextOf(topLevelPattern)),
            std::wstring(TextOf(childPattern)),
            checkInterval,
            includeInvisible == VARIANT_TRUE,
            timeout,
            timeoutForAppearanceOnly != VARIANT_FALSE};
}

} // namespace

// A wait that ends with an event.
class WindowMgr::FiringWait final : public WaitTask {
public:
    FiringWait(const WindowWait::Request& request, std::shared_ptr<SinkArray> sinks, Fire fire)
        : wait_(request), sinks_(std::move(sinks)), fire_(fire) {}

    std::optional<WaitResult> Wait(HANDLE abort) override { return wait_.Run(abort); }

    void Report(LONG id, WaitResult result) noexcept override {
        CoInitialize(nullptr);
        fire_(*sinks_, id, result);
        // Perhaps they go with this: while there is an apartment to release them in.
        sinks_.reset();
        CoUninitialize();
    }

private:
    WindowWait wait_;
    std::shared_ptr<SinkArray> sinks_;
    Fire fire_;
};

HRESULT WindowMgr::WaitOnWindow(BSTR topLevelPattern, BSTR childPattern, long checkInterval,
                                VARIANT_BOOL includeInvisible, long timeout, long* waitId) {
    return AnswerNumber(waitId, [&] {
        return StartWait(RequestFor(WindowWait::Kind::kGone, topLevelPattern, childPattern,
                                    checkInterval, includeInvisible, timeout),
                         &Fire_OnWaitOnWindowComplete);
    });
}

HRESULT WindowMgr::WaitForWindow(BSTR topLevelPattern, BSTR childPattern, long checkInterval,
                                 VARIANT_BOOL includeInvisible, long timeout, long* waitId) {
    return AnswerNumber(waitId, [&] {
        return StartWait(RequestFor(WindowWait::Kind::kPresent, topLevelPattern, childPattern,
                                    checkInterval, includeInvisible, timeout),
                         &Fire_OnWaitForWindowComplete);
    });
}

HRESULT WindowMgr::WaitForWindowToComeAndGo(BSTR topLevelPattern, BSTR childPattern,
                                            long checkInterval, VARIANT_BOOL includeInvisible,
                                            long timeout, VARIANT_BOOL timeoutForAppearanceOnly,
                                            long* waitId) {
    return AnswerNumber(waitId, [&] {
        return StartWait(RequestFor(WindowWait::Kind::kComeAndGo, topLevelPattern, childPattern,
                                    checkInterval, includeInvisible, timeout,
                                    timeoutForAppearanceOnly),
                         &Fire_OnWaitForWindowToComeAndGoComplete);
    });
}

long WindowMgr::StartWait(const WindowWait::Request& request, Fire fire) {
    const LONG id = waits_->Start(std::make_unique<FiringWait>(request, Sinks(), fire));
    if (id == 0) {
        lastErrorCode_ = kNoResources;
    }
    return id;
}

HRESULT WindowMgr::GetWindowState(BSTR topLevelPattern, BSTR childPattern, long* state) {
    return AnswerNumber(state, [&] {
        WindowFinder finder = FinderFor(topLevelPattern, childPattern);
        return StateOf(finder);
    });
}

HRESULT WindowMgr::SetWindowState(long state, BSTR topLevelPattern, BSTR childPattern,
                                  VARIANT_BOOL* found) {
    return AnswerFlag(found,
                      [&] { return TrySetWindowState(state, topLevelPattern, childPattern); });
}

bool WindowMgr::TrySetWindowState(long state, BSTR topLevelPattern, BSTR childPattern) noexcept {
    try {
        WindowFinder finder = FinderFor(topLevelPattern, childPattern);
        if (!finder.IsValid()) {
            lastErrorCode_ = kException;
            return false;
        }
        if (!ChangeState(finder, static_cast<StateChange>(state))) {
            lastErrorCode_ = kNoWindow;
            return false;
        }
        return true;
    } catch (...) {
        lastErrorCode_ = kException;
        return false;
    }
}

HRESULT WindowMgr::GetMatchingWindowTitleText(BSTR topLevelPattern, BSTR childPattern,
                                              BSTR* title) {
    return AnswerText(title, [&] {
        WindowFinder finder = FinderFor(topLevelPattern, childPattern);
        return TitleOf(finder);
    });
}

HRESULT WindowMgr::ClickButton(BSTR topLevelPattern, BSTR buttonPattern, VARIANT_BOOL* clicked) {
    return AnswerFlag(clicked, [&] {
        WindowFinder finder = FinderFor(topLevelPattern, buttonPattern);
        return tervane::ClickButton(finder);
    });
}

HRESULT WindowMgr::SetButtonCheckState(BSTR topLevelPattern, BSTR buttonPattern,
                                       VARIANT_BOOL checked, VARIANT_BOOL* done) {
    return AnswerFlag(done, [&] {
        WindowFinder finder = FinderFor(topLevelPattern, buttonPattern);
        return ClickAndCheck(finder, checked != VARIANT_FALSE);
    });
}

HRESULT WindowMgr::get_LastErrorCode(long* code) {
    return AnswerNumber(code, [&] { return lastErrorCode_.load(); });
}

HRESULT WindowMgr::AbortWait(long waitId, VARIANT_BOOL* aborted) {
    return AnswerFlag(aborted, [&] { return TryAbortWait(waitId); });
}

bool WindowMgr::TryAbortWait(long waitId) {
    switch (waits_->Abort(waitId)) {
    case WaitTable::AbortResult::kAborted:
        return true;
    case WaitTable::AbortResult::kUnknown:
        lastErrorCode_ = kNoWait;
        return false;
    case WaitTable::AbortResult::kLocked:
        lastErrorCode_ = kNoResources;
        return false;
    }
    return false;
}

namespace create {

HRESULT WindowMgr(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::WindowMgr>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
