#pragma once

// A sink that lives as long as its object, and so can tell whether the object has fired all the
// events that its calls promised. It releases its object inside the first event if it is asked to.

#include <windows.h>

#include <oaidl.h>

#include <atomic>

namespace tervane::test {

class CountingSink final : public IDispatch {
public:
    // Over all sinks, from any thread.
    static inline std::atomic<long> living = 0;
    static inline std::atomic<long> received = 0; // events
    static inline std::atomic<long> lost = 0;     // promised to a sink that has gone

    // With one reference, the caller's. `endsSilently` is for classes whose end ends what runs,
    // without an event; `progress` is an event that none is promised of, 0 when there is none such.
    CountingSink(bool endsSilently, DISPID progress)
        : endsSilently_(endsSilently), progress_(progress) {
        ++living;
    }

    // A call is about to promise an event, or has not done so after all.
    void Promise() { ++promised_; }
    void TakeBack() { --promised_; }
    bool IsOwed() const { return received_ < promised_; }
    // Takes over a reference, and gives it up inside the next event; at once if none is owed.
    void ReleaseInEvent(IDispatch* object) {
        object_ = object;
        if (!IsOwed()) { // the event may have come meanwhile
            ReleaseObject();
        }
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch);
        *out = known ? this : nullptr;
        references_ += known;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        if (event != progress_) {
            ++received_;
            ++received;
            ReleaseObject();
        }
        return S_OK;
    }

private:
    ~CountingSink() {
        lost += endsSilently_ ? 0 : promised_ - received_;
        --living;
    }
    void ReleaseObject() {
        if (IDispatch* object = object_.exchange(nullptr)) {
            object->Release();
        }
    }

    const bool endsSilently_;
    const DISPID progress_;
    std::atomic<ULONG> references_ = 1;
    std::atomic<long> promised_ = 0;
    std::atomic<long> received_ = 0;
    std::atomic<IDispatch*> object_ = nullptr;
};

} // namespace tervane::test
