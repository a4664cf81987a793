#include "tools/script_host/script/ScriptEngine.h"

namespace tervane::scripthost {

HRESULT ScriptEngine::Open(const std::wstring& progId, IActiveScriptSite* site,
                           std::initializer_list<const wchar_t*> items) {
    CLSID clsid{};
    HRESULT result = CLSIDFromProgID(progId.c_str(), &clsid);
    if (FAILED(result)) {
        return result;
    }
    ComPtr<IActiveScript> engine;
    result = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IActiveScript),
                              reinterpret_cast<void**>(engine.Put()));
    if (FAILED(result)) {
        return result;
    }
    parser_ = QueryFor<IActiveScriptParse>(engine.Get());
    if (!parser_) {
        return E_NOINTERFACE;
    }
    result = engine->SetScriptSite(site);
    if (SUCCEEDED(result)) {
        result = parser_->InitNew();
    }
    for (const wchar_t* item : items) {
        if (SUCCEEDED(result)) {
            result = engine->AddNamedItem(item, SCRIPTITEM_ISVISIBLE);
        }
    }
    const ZelBase::CriticalSectionLock lock(mutex_);
    engine_ = std::move(engine);
    return result;
}

HRESULT ScriptEngine::Run(const std::wstring& text) {
    // Compiled at once, but run only when the engine is started.
    HRESULT result = parser_->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0,
                                              SCRIPTTEXT_ISVISIBLE, nullptr, nullptr);
    return FAILED(result) ? result : engine_->SetScriptState(SCRIPTSTATE_CONNECTED);
}

HRESULT ScriptEngine::Call(const std::wstring& function, DISPPARAMS& arguments,
                           EXCEPINFO& exception) {
    ComPtr<IDispatch> globals;
    HRESULT result = engine_->GetScriptDispatch(nullptr, globals.Put());
    if (FAILED(result)) {
        return result;
    }
    DISPID id = DISPID_UNKNOWN;
    auto* name = const_cast<wchar_t*>(function.c_str());
    if (FAILED(globals->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id))) {
        return S_FALSE;
    }
    Variant ignored;
    return globals->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &arguments,
                           ignored.Put(), &exception, nullptr);
}

bool ScriptEngine::Interrupt() noexcept {
    const ZelBase::CriticalSectionLock lock(mutex_);
    EXCEPINFO none{};
    return engine_ && SUCCEEDED(engine_->InterruptScriptThread(SCRIPTTHREADID_BASE, &none, 0));
}

void ScriptEngine::Close() noexcept {
    parser_.Reset();
    ComPtr<IActiveScript> engine;
    {
        const ZelBase::CriticalSectionLock lock(mutex_);
        engine = std::move(engine_);
    }
    if (engine) {
        engine->Close();
    }
}

} // namespace tervane::scripthost
