#include "component/PendingObject.h"

#include "component/Automation.h"
#include "component/ConnectionPoint.h"
#include "component/Control.h"

#include <array>
#include <vector>

namespace tervane {
namespace {

// One method of any interface whose arguments take that many machine words beyond `this`.
template <typename... Words>
HRESULT STDMETHODCALLTYPE NotImplemented(void*, Words...) noexcept {
    return E_NOTIMPL;
}

constexpr size_t kMostWords = 16;

template <size_t Words, typename... Arguments>
void* NotImplementedWith() {
    if constexpr (Words == 0) {
        return reinterpret_cast<void*>(&NotImplemented<Arguments...>);
    } else {
        return NotImplementedWith<Words - 1, Arguments..., INT_PTR>();
    }
}

template <size_t... Words>
void* NotImplementedWith(size_t words, std::index_sequence<Words...>) {
    void* const methods[] = {NotImplementedWith<Words>()...};
    return methods[words < kMostWords ? words : kMostWords - 1];
}

size_t WordsOf(const TYPEDESC& type) noexcept {
    switch (type.vt) {
    case VT_VARIANT:
        return sizeof(void*) == 4 ? sizeof(VARIANT) / 4 : 1;
    case VT_R8:
    case VT_DATE:
    case VT_CY:
        return 8 / sizeof(void*);
    default:
        return 1;
    }
}

// The default interface as compiled callers see it: a function table made from the type
// information, which says how many words each method takes off the stack.
class PendingInterface {
public:
    PendingInterface(IDispatch& object, REFIID iid) : object_(object) {
        methods_.assign(
            {reinterpret_cast<void*>(&QueryInterface), reinterpret_cast<void*>(&AddRef),
             reinterpret_cast<void*>(&Release), reinterpret_cast<void*>(&GetTypeInfoCount),
             reinterpret_cast<void*>(&GetTypeInfo), reinterpret_cast<void*>(&GetIDsOfNames),
             reinterpret_cast<void*>(&Invoke)});
        AppendMembers(iid);
        table_ = methods_.data();
    }
    PendingInterface(const PendingInterface&) = delete;
    PendingInterface& operator=(const PendingInterface&) = delete;

    void* Pointer() noexcept { return &table_; }

private:
    static IDispatch& ObjectOf(void* self) noexcept {
        // The table pointer is this class's first member.
        return static_cast<PendingInterface*>(self)->object_;
    }
    static HRESULT STDMETHODCALLTYPE QueryInterface(void* self, REFIID iid, void** out) {
        return ObjectOf(self).QueryInterface(iid, out);
    }
    static ULONG STDMETHODCALLTYPE AddRef(void* self) { return ObjectOf(self).AddRef(); }
    static ULONG STDMETHODCALLTYPE Release(void* self) { return ObjectOf(self).Release(); }
    static HRESULT STDMETHODCALLTYPE GetTypeInfoCount(void* self, UINT* count) {
        return ObjectOf(self).GetTypeInfoCount(count);
    }
    static HRESULT STDMETHODCALLTYPE GetTypeInfo(void* self, UINT index, LCID locale,
                                                 ITypeInfo** out) {
        return ObjectOf(self).GetTypeInfo(index, locale, out);
    }
    static HRESULT STDMETHODCALLTYPE GetIDsOfNames(void* self, REFIID iid, LPOLESTR* names,
                                                   UINT count, LCID locale, DISPID* ids) {
        return ObjectOf(self).GetIDsOfNames(iid, names, count, locale, ids);
    }
    static HRESULT STDMETHODCALLTYPE Invoke(void* self, DISPID member, REFIID iid, LCID locale,
                                            WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                            EXCEPINFO* exception, UINT* argumentError) {
        return ObjectOf(self).Invoke(member, iid, locale, flags, parameters, result, exception,
                                     argumentError);
    }

    void AppendMembers(REFIID iid) {
        ITypeInfo* dispatch = TypeInfoFor(iid);
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> members;
        if (!dispatch ||
            FAILED(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference)) ||
            FAILED(dispatch->GetRefTypeInfo(reference, members.Put()))) {
            return;
        }
        FUNCDESC* function = nullptr;
        for (UINT i = 0; SUCCEEDED(members->GetFuncDesc(i, &function)); ++i) {
            size_t words = 0;
            for (SHORT p = 0; p < function->cParams; ++p) {
                words += WordsOf(function->lprgelemdescParam[p].tdesc);
            }
            methods_.push_back(NotImplementedWith(words, std::make_index_sequence<kMostWords>()));
            members->ReleaseFuncDesc(function);
        }
    }

    void** table_ = nullptr;
    IDispatch& object_;
    std::vector<void*> methods_;
};

class PendingDispatch : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** out) override {
        return DispatchGetTypeInfo(Info(), index, out);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override {
        return DispatchGetIDsOfNames(Info(), reserved, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) override {
        return DispatchInvoke(Info(), interface_.Pointer(), member, reserved, flags, parameters,
                              result, exception, argumentError);
    }

    void* FindInterface(REFIID iid) noexcept {
        if (IsEqualIID(iid, IID_IDispatch)) {
            return static_cast<IDispatch*>(this);
        }
        return IsEqualIID(iid, *row_.defaultInterface) ? interface_.Pointer() : nullptr;
    }

protected:
    explicit PendingDispatch(const ClassRow& row)
        : row_(row), interface_(*this, *row.defaultInterface) {}
    ~PendingDispatch() = default;

private:
    ITypeInfo* Info() const noexcept { return TypeInfoFor(*row_.defaultInterface); }

    const ClassRow& row_;
    PendingInterface interface_;
};

template <typename... More>
class PendingObject final : public Object<PendingDispatch, More..., ClassInfo> {
public:
    PendingObject(const ClassRow& row, IUnknown* outer)
        : Object<PendingDispatch, More..., ClassInfo>(row, outer) {}
};

} // namespace

HRESULT CreatePendingObject(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<PendingObject<>>(row, outer, iid, out);
}

HRESULT CreatePendingEventObject(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<PendingObject<EventSource>>(row, outer, iid, out);
}

HRESULT CreatePendingControl(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<PendingObject<Control>>(row, outer, iid, out);
}

HRESULT CreatePendingEventControl(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<PendingObject<EventSource, Control>>(row, outer, iid, out);
}

} // namespace tervane
