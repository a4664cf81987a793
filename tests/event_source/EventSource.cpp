// Fires its events directly on whatever thread it is about, as components do that care little for
// apartments. Its destructor waits for its threads, which is where a sink that blocks would
// deadlock; then it tells standard error that it is gone. How many sinks nobody disconnected is
// told there too, at the end of the process.

#include "platform/ComValues.h"
#include "tests/support/TestThreads.h"
#include "tools/script_host/ComBase.h"

#include <ocidl.h>
#include <olectl.h>

#include <EventSourceLib.h>

#include <atomic>
#include <map>
#include <string>
#include <vector>

namespace tervane::test {
namespace {

using Sinks = std::vector<ComPtr<IDispatch>>;

void Say(const std::string& text) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()),
              &written, nullptr);
}

// Counts the sinks of all sources and tells at the end of the process how many are left.
struct SinkCount {
    std::atomic<int> left{0};
    ~SinkCount() { Say(std::to_string(left) + " sinks left\n"); }
} sinkCount;

std::wstring PinnedModulePath() {
    static const char here = 0;
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH];
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&here), &module);
    return std::wstring(path, GetModuleFileNameW(module, path, MAX_PATH));
}

// Arguments as DISPPARAMS has them, the last one first.
void Fire(const Sinks& sinks, DISPID event, std::vector<VARIANT> arguments) {
    DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    for (const auto& sink : sinks) {
        Variant result;
        sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                     result.Put(), nullptr, nullptr);
    }
}

// The flag is passed as a number, as the component does it.
void FireTick(const Sinks& sinks, LONG number, bool last) {
    VARIANT flag = {};
    flag.vt = VT_I2;
    flag.iVal = last ? -1 : 0;
    Fire(sinks, 1, {flag, Variant::FromLong(number).Get()});
}

// Text by reference, so that a sink which only kept the pointer would read a dead stack.
void FireTextListAndObject(const Sinks& sinks, ComPtr<IDispatch> object) {
    const UniqueBstr owned = MakeBstr(L"text");
    BSTR byReference = owned.Get();
    VARIANT text = {};
    text.vt = VT_BSTR | VT_BYREF;
    text.pbstrVal = &byReference;
    std::vector<Variant> elements;
    elements.push_back(Variant::FromLong(7));
    elements.push_back(*Variant::FromText(L"seven"));
    const Variant list = *MakeArray(std::move(elements));
    const Variant held = Variant::FromObject(std::move(object));
    Fire(sinks, 2, {held.Get(), list.Get(), text});
}

void FireWithObject(const Sinks& sinks) {
    CLSID clsid{};
    ComPtr<IDispatch> object;
    CLSIDFromProgID(L"Scripting.Dictionary", &clsid);
    CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDispatch),
                     reinterpret_cast<void**>(object.Put()));
    FireTextListAndObject(sinks, std::move(object));
    // The object's apartment must live until the script has used it.
    Sleep(1000);
}

class EventSource
    : public scripthost::ComBase<IEventSource, IConnectionPointContainer, IConnectionPoint,
                                 IProvideClassInfo2, IObjectWithSite> {
public:
    EventSource() {
        if (SUCCEEDED(LoadTypeLibEx(PinnedModulePath().c_str(), REGKIND_NONE, library_.Put()))) {
            library_->GetTypeInfoOfGuid(__uuidof(IEventSource), type_.Put());
        }
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        const bool isDispatch = IsEqualIID(iid, __uuidof(IDispatch));
        const bool isOld = IsEqualIID(iid, __uuidof(IProvideClassInfo));
        return ComBase::QueryInterface(isDispatch ? __uuidof(IEventSource)
                                       : isOld    ? __uuidof(IProvideClassInfo2)
                                                  : iid,
                                       object);
    }

    // IDispatch
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** type) override {
        *type = AddReference(type_.Get()).Release();
        return S_OK;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        return type_->GetIDsOfNames(names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
        return type_->Invoke(static_cast<IEventSource*>(this), id, flags, parameters, result,
                             exception, badArgument);
    }

    // IEventSource
    STDMETHODIMP FireLater(LONG count, LONG delay) override {
        return Start([sinks = CurrentSinks(), count, delay] {
            for (LONG number = 1; number <= count; ++number) {
                Sleep(static_cast<DWORD>(delay));
                FireTick(*sinks, number, number == count);
            }
        });
    }
    STDMETHODIMP FireHere(LONG number) override {
        FireTick(*CurrentSinks(), number, true);
        return S_OK;
    }
    STDMETHODIMP FireValues() override {
        return Start([sinks = CurrentSinks()] { FireWithObject(*sinks); });
    }
    STDMETHODIMP FireForEver() override {
        TestThread([sinks = CurrentSinks()] {
            for (LONG number = 1;; ++number) {
                FireTick(*sinks, number, false);
            }
        }).detach();
        return S_OK;
    }
    STDMETHODIMP WaitForThreads() override {
        threads_.clear();
        return S_OK;
    }
    STDMETHODIMP PressCtrlC(LONG delay) override {
        TestThread([delay] {
            Sleep(static_cast<DWORD>(delay));
            GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
        }).detach();
        return S_OK;
    }
    STDMETHODIMP get_Advised(LONG* count) override {
        *count = static_cast<LONG>(CurrentSinks()->size());
        return S_OK;
    }

    // IConnectionPointContainer and IConnectionPoint
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        *point = nullptr;
        return IsEqualIID(iid, __uuidof(_IEventSourceEvents))
                   ? QueryInterface(__uuidof(IConnectionPoint), reinterpret_cast<void**>(point))
                   : CONNECT_E_NOCONNECTION;
    }
    STDMETHODIMP GetConnectionInterface(IID* iid) override {
        *iid = __uuidof(_IEventSourceEvents);
        return S_OK;
    }
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override {
        return QueryInterface(__uuidof(IConnectionPointContainer),
                              reinterpret_cast<void**>(container));
    }
    // Asks the sink for the event interface by its own name, as many sources do.
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override {
        ComPtr<IDispatch> events;
        if (FAILED(sink->QueryInterface(__uuidof(_IEventSourceEvents),
                                        reinterpret_cast<void**>(events.Put())))) {
            return CONNECT_E_CANNOTCONNECT;
        }
        const std::lock_guard lock(mutex_);
        *cookie = ++lastCookie_;
        sinks_.emplace(*cookie, std::move(events));
        ++sinkCount.left;
        return S_OK;
    }
    STDMETHODIMP Unadvise(DWORD cookie) override {
        const std::lock_guard lock(mutex_);
        const auto gone = static_cast<int>(sinks_.erase(cookie));
        sinkCount.left -= gone;
        return gone ? S_OK : CONNECT_E_NOCONNECTION;
    }
    STDMETHODIMP EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** type) override {
        return library_->GetTypeInfoOfGuid(__uuidof(::EventSource), type);
    }
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override {
        *guid = __uuidof(_IEventSourceEvents);
        return kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID ? S_OK : E_INVALIDARG;
    }

    // IObjectWithSite, as many controls have it: an engine may refuse an object that it has no site
    // for.
    STDMETHODIMP SetSite(IUnknown*) override { return S_OK; }
    STDMETHODIMP GetSite(REFIID, void**) override { return E_FAIL; }

private:
    ~EventSource() override {
        WaitForThreads();
        Say("destroyed\n");
    }
    // The sinks of this moment. A thread goes on calling them, whoever disconnects meanwhile.
    std::shared_ptr<Sinks> CurrentSinks() {
        auto current = std::make_shared<Sinks>();
        const std::lock_guard lock(mutex_);
        for (const auto& [cookie, sink] : sinks_) {
            current->push_back(AddReference(sink.Get()));
        }
        return current;
    }
    HRESULT Start(std::function<void()> body) {
        threads_.emplace_back([body = std::move(body)] {
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            body();
            CoUninitialize();
        });
        return S_OK;
    }

    ComPtr<ITypeLib> library_;
    ComPtr<ITypeInfo> type_;
    std::vector<TestThread> threads_;
    TestMutex mutex_;
    std::map<DWORD, ComPtr<IDispatch>> sinks_; // guarded by mutex_
    DWORD lastCookie_ = 0;                     // guarded by mutex_
};

class Factory : public scripthost::ComBase<IClassFactory> {
public:
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        ComPtr<IEventSource> source(new EventSource);
        return source->QueryInterface(iid, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

} // namespace
} // namespace tervane::test

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (!IsEqualCLSID(clsid, __uuidof(EventSource))) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    tervane::ComPtr<IClassFactory> factory(new tervane::test::Factory);
    return factory->QueryInterface(iid, object);
}

STDAPI DllCanUnloadNow() {
    return S_FALSE;
}
