#pragma once

// The standard enumerators (IEnumConnectionPoints, IEnumConnections): one walk over a snapshot.

#include "component/ComEdge.h"
#include "component/ModuleState.h"
#include "platform/Automation.h"

#include <atomic>
#include <memory>
#include <vector>

namespace tervane {

// `Interface` enumerates values of `Element`; `Traits` says how one is copied (`Copy(const
// Element&)`, which adds what references it carries) and dropped (`Drop(Element&)`).
template <typename Interface, typename Element, typename Traits>
class InterfaceEnumerator final : public Interface {
public:
    using Elements = std::vector<Element>;

    // Takes over the elements. The result holds one reference.
    static Interface* Create(Elements elements) {
        auto held = std::shared_ptr<Elements>(new Elements(std::move(elements)), [](Elements* all) {
            for (Element& element : *all) {
                Traits::Drop(element);
            }
            delete all;
        });
        return new InterfaceEnumerator(std::move(held), 0);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) {
            return E_POINTER;
        }
        *out = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, __uuidof(Interface))) {
            return E_NOINTERFACE;
        }
        AddRef();
        *out = static_cast<Interface*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG count, Element* out, ULONG* fetched) override {
        if (!out || (!fetched && count != 1)) {
            return E_POINTER;
        }
        ULONG given = 0;
        while (given < count && next_ < elements_->size()) {
            out[given++] = Traits::Copy((*elements_)[next_++]);
        }
        if (fetched) {
            *fetched = given;
        }
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const size_t left = elements_->size() - next_;
        next_ += count < left ? count : left;
        return count <= left ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        next_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(Interface** out) override {
        if (!out) {
            return E_POINTER;
        }
        *out = nullptr;
        return Guarded([&] {
            *out = new InterfaceEnumerator(elements_, next_);
            return S_OK;
        });
    }

private:
    InterfaceEnumerator(std::shared_ptr<Elements> elements, size_t next)
        : elements_(std::move(elements)), next_(next) {}
    ~InterfaceEnumerator() = default;

    ModuleLock lock_;
    std::shared_ptr<Elements> elements_;
    size_t next_;
    std::atomic<ULONG> references_ = 1;
};

} // namespace tervane
