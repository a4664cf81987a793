#pragma once

// The standard enumerators (IEnumConnectionPoints, IEnumConnections): one walk over a snapshot.

#include "component/ComEdge.h"
#include "component/ModuleState.h"
#include "platform/ComValues.h"

#include <atomic>
#include <memory>
#include <vector>

namespace tervane {

// `Interface` enumerates values of `Element`; `Traits` says how one is copied (`Copy(const
// Element&)`, which adds what references it carries) and dropped (`Drop(Element&)`).
template <typename Interface, typename Element, typename Traits>
class InterfaceEnumerator final : public Interface {
public:
    // What is enumerated, with the references that it carries.
    class Elements {
    public:
        Elements() = default;
        ~Elements() {
            for (Element& element : all_) {
                Traits::Drop(element);
            }
        }
        Elements(const Elements&) = delete;
        Elements& operator=(const Elements&) = delete;

        // Adds a copy.
        void Add(const Element& element) {
            all_.reserve(all_.size() + 1); // a reference once taken must not be lost
            all_.push_back(Traits::Copy(element));
        }
        std::size_t Size() const noexcept { return all_.size(); }
        const Element& operator[](std::size_t index) const noexcept { return all_[index]; }

    private:
        std::vector<Element> all_;
    };

    // The result holds one reference.
    static Interface* Create(std::shared_ptr<const Elements> elements) {
        return new InterfaceEnumerator(std::move(elements), 0);
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
        while (given < count && next_ < elements_->Size()) {
            out[given++] = Traits::Copy((*elements_)[next_++]);
        }
        if (fetched) {
            *fetched = given;
        }
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const std::size_t left = elements_->Size() - next_;
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
    InterfaceEnumerator(std::shared_ptr<const Elements> elements, std::size_t next)
        : elements_(std::move(elements)), next_(next) {}
    ~InterfaceEnumerator() = default;

    ModuleLock lock_;
    std::shared_ptr<const Elements> elements_;
    std::size_t next_;
    std::atomic<ULONG> references_ = 1;
};

} // namespace tervane
