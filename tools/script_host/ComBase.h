#pragma once

// IUnknown for the host's own objects, written once: interfaces are listed, the count is
// interlocked, the last release deletes. Objects start with one reference, owned by their maker.

#include <windows.h>

#include <unknwn.h>

#include <atomic>

namespace tervane::scripthost {

template <typename First, typename... Others>
class ComBase : public First, public Others... {
public:
    ComBase() = default;
    ComBase(const ComBase&) = delete;
    ComBase& operator=(const ComBase&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = IsEqualIID(iid, __uuidof(IUnknown)) ? static_cast<First*>(this) : nullptr;
        (Offer<First>(iid, object), ..., Offer<Others>(iid, object));
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    virtual ~ComBase() = default;

private:
    template <typename Interface>
    void Offer(REFIID iid, void** object) {
        if (IsEqualIID(iid, __uuidof(Interface))) {
            *object = static_cast<Interface*>(this);
        }
    }

    std::atomic<ULONG> references_{1};
};

} // namespace tervane::scripthost
