#include "tools/script_host/events/EventSink.h"

#include "component/ComEdge.h"

namespace tervane::scripthost {

HRESULT EventSink::QueryInterface(REFIID iid, void** object) {
    // A dispinterface is IDispatch under a name of its own, and sources may ask for that name.
    return ComBase::QueryInterface(IsEqualIID(iid, events_.Id()) ? __uuidof(IDispatch) : iid,
                                   object);
}

HRESULT EventSink::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 0;
    return S_OK;
}

HRESULT EventSink::GetTypeInfo(UINT, LCID, ITypeInfo**) {
    return DISP_E_BADINDEX;
}

HRESULT EventSink::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) {
    return E_NOTIMPL;
}

HRESULT EventSink::Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                          EXCEPINFO*, UINT*) {
    const std::wstring* name = events_.NameOf(event);
    if (name == nullptr) {
        return DISP_E_MEMBERNOTFOUND;
    }
    if (parameters == nullptr) {
        return E_POINTER;
    }
    if (result != nullptr) {
        VariantInit(result);
    }
    return Guarded([&]() -> HRESULT {
        if (queue_->IsOwnThread()) {
            // The handler may disconnect this sink.
            ComPtr<IDispatch> self = AddReference<IDispatch>(this);
            queue_->Deliver(connection_, *name, *parameters);
            return S_OK;
        }
        std::optional<EventArguments> arguments = EventArguments::CopyOf(*parameters);
        if (!arguments) {
            return DISP_E_TYPEMISMATCH;
        }
        return queue_->Post(connection_, *name, *std::move(arguments)) ? S_OK : E_OUTOFMEMORY;
    });
}

} // namespace tervane::scripthost
