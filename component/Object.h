#pragma once

// What every object is: counted references, aggregation, and a list of interfaces written once.
//
// A class lists its bases: `class Registry2 final : public AutomationObject<IRegistry2>`. Each base
// implements its interfaces but for IUnknown and says through `FindInterface` which they are;
// Object supplies the three methods of IUnknown for all of them. An object has an inner unknown of
// its own; everything else delegates to the controlling one, which is the inner unknown itself
// unless the object is aggregated.

#include "component/ClassTable.h"
#include "component/ComEdge.h"
#include "component/ModuleState.h"

#include <atomic>
#include <utility>

namespace tervane {

class ObjectRoot {
public:
    ObjectRoot(const ObjectRoot&) = delete;
    ObjectRoot& operator=(const ObjectRoot&) = delete;

    // The inner unknown: whoever creates the object gets its first reference.
    IUnknown* Inner() noexcept { return &inner_; }

protected:
    // `outer` is not counted: it owns this object.
    ObjectRoot(const ClassRow& row, IUnknown* outer) noexcept
        : row_(row), inner_(*this), controlling_(outer ? outer : &inner_) {}
    virtual ~ObjectRoot() = default;

    const ClassRow& RootRow() const noexcept { return row_; }
    IUnknown* Controlling() const noexcept { return controlling_; }

    // The interface without a reference; null when the object has none such.
    virtual void* Find(REFIID iid) noexcept = 0;

private:
    class InnerUnknown final : public IUnknown {
    public:
        explicit InnerUnknown(ObjectRoot& object) noexcept : object_(object) {}
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
        ULONG STDMETHODCALLTYPE AddRef() override;
        ULONG STDMETHODCALLTYPE Release() override;

    private:
        ObjectRoot& object_;
        std::atomic<ULONG> references_ = 1;
    };

    // First member, last to go: the library stays until the object is gone.
    ModuleLock lock_;
    const ClassRow& row_;
    InnerUnknown inner_;
    IUnknown* controlling_;
};

template <typename... Bases>
class Object : public ObjectRoot, public Bases... {
public:
    // Public, so that classes without state inherit it: `using Object::Object`.
    Object(const ClassRow& row, IUnknown* outer) : ObjectRoot(row, outer), Bases(row)... {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        return Controlling()->QueryInterface(iid, out);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return Controlling()->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return Controlling()->Release(); }

protected:
    void* Find(REFIID iid) noexcept override {
        void* found = nullptr;
        ((found = found ? found : Bases::FindInterface(iid)), ...);
        return found;
    }
};

// Creates a `Class` for the class table; `facts` are what its constructor takes beyond that.
template <typename Class, typename... Facts>
HRESULT CreateInstance(const ClassRow& row, IUnknown* outer, REFIID iid, void** out,
                       const Facts&... facts) {
    auto* object = new Class(row, outer, facts...);
    IUnknown* inner = object->Inner();
    const HRESULT result = inner->QueryInterface(iid, out);
    inner->Release();
    return result;
}

// Creates a `Class` that one of our objects hands out, filled with `facts`. The caller owns the
// reference; null on failure. Any thread.
template <typename Class, typename Facts>
HRESULT CreateFilled(REFCLSID clsid, const Facts& facts, REFIID iid, void** out) noexcept {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    return Guarded(
        [&] { return CreateInstance<Class>(*FindClass(clsid), nullptr, iid, out, facts); });
}

} // namespace tervane
