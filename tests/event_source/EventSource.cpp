#include "tests/event_source/EventSource.h"

#include <olectl.h>

#include <atomic>
#include <string>

namespace tervane::test {
namespace {

constexpr DISPID kOnTick = 1;
constexpr DISPID kOnValues = 2;

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

HMODULE PinnedModule() {
    static const char here = 0;
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&here), &module);
    return module;
}

void Fire(const std::vector<ComPtr<IDispatch>>& sinks, DISPID event, DISPPARAMS parameters) {
    for (const auto& sink : sinks) {
        Variant result;
        sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                     result.Put(), nullptr, nullptr);
    }
}

// The flag is passed as a number, as the component does it.
void FireTick(const std::vector<ComPtr<IDispatch>>& sinks, LONG number, bool last) {
    VARIANT arguments[2]{};
    arguments[0].vt = VT_I2;
    arguments[0].iVal = last ? -1 : 0;
    arguments[1].vt = VT_I4;
    arguments[1].lVal = number;
    Fire(sinks, kOnTick, {arguments, nullptr, 2, 0});
}

// Text by reference, so that a sink which only kept the pointer would read a dead stack.
void FireTextListAndObject(const std::vector<ComPtr<IDispatch>>& sinks, IDispatch* object) {
    UniqueBstr text = MakeBstr(L"text");
    BSTR byReference = text.Get();
    std::vector<Variant> elements;
    elements.push_back(Variant::FromLong(7));
    elements.push_back(*Variant::FromText(L"seven"));
    Variant list = *MakeArray(std::move(elements));
    VARIANT arguments[3]{};
    arguments[0].vt = VT_DISPATCH;
    arguments[0].pdispVal = object;
    arguments[1] = list.Get();
    arguments[2].vt = VT_BSTR | VT_BYREF;
    arguments[2].pbstrVal = &byReference;
    Fire(sinks, kOnValues, {arguments, nullptr, 3, 0});
}

} // namespace

EventSource::EventSource() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(PinnedModule(), path, MAX_PATH);
    if (SUCCEEDED(LoadTypeLibEx(path, REGKIND_NONE, library_.Put()))) {
        library_->GetTypeInfoOfGuid(__uuidof(IEventSource), type_.Put());
    }
}

EventSource::~EventSource() {
    WaitForThreads();
    Say("destroyed\n");
}

HRESULT EventSource::QueryInterface(REFIID iid, void** object) {
    if (IsEqualIID(iid, __uuidof(IDispatch))) {
        return ComBase::QueryInterface(__uuidof(IEventSource), object);
    }
    bool isOld = IsEqualIID(iid, __uuidof(IProvideClassInfo));
    return ComBase::QueryInterface(isOld ? __uuidof(IProvideClassInfo2) : iid, object);
}

HRESULT EventSource::GetTypeInfoCount(UINT* count) {
    *count = 1;
    return S_OK;
}

HRESULT EventSource::GetTypeInfo(UINT, LCID, ITypeInfo** type) {
    *type = AddReference(type_.Get()).Release();
    return S_OK;
}

HRESULT EventSource::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    return type_->GetIDsOfNames(names, count, ids);
}

HRESULT EventSource::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                            VARIANT* result, EXCEPINFO* exception, UINT* badArgument) {
    return type_->Invoke(static_cast<IEventSource*>(this), id, flags, parameters, result, exception,
                         badArgument);
}

void EventSource::Start(std::function<void()> body) {
    threads_.emplace_back([body = std::move(body)] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        body();
        CoUninitialize();
    });
}

HRESULT EventSource::FireLater(LONG count, LONG delay) {
    Start([sinks = CurrentSinks(), count, delay] {
        for (LONG number = 1; number <= count; ++number) {
            Sleep(static_cast<DWORD>(delay));
            FireTick(*sinks, number, number == count);
        }
    });
    return S_OK;
}

HRESULT EventSource::FireHere(LONG number) {
    FireTick(*CurrentSinks(), number, true);
    return S_OK;
}

HRESULT EventSource::FireValues() {
    Start([sinks = CurrentSinks()] {
        CLSID clsid{};
        ComPtr<IDispatch> object;
        CLSIDFromProgID(L"Scripting.Dictionary", &clsid);
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDispatch),
                         reinterpret_cast<void**>(object.Put()));
        FireTextListAndObject(*sinks, object.Get());
        object.Reset();
        // The object's apartment must live until the script has used it.
        Sleep(1000);
    });
    return S_OK;
}

HRESULT EventSource::FireForEver() {
    TestThread([sinks = CurrentSinks()] {
        for (LONG number = 1;; ++number) {
            FireTick(*sinks, number, false);
        }
    }).detach();
    return S_OK;
}

HRESULT EventSource::WaitForThreads() {
    for (TestThread& thread : threads_) {
        thread.join();
    }
    threads_.clear();
    return S_OK;
}

HRESULT EventSource::PressCtrlC(LONG delay) {
    TestThread([delay] {
        Sleep(static_cast<DWORD>(delay));
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
    }).detach();
    return S_OK;
}

HRESULT EventSource::get_Advised(LONG* count) {
    *count = static_cast<LONG>(CurrentSinks()->size());
    return S_OK;
}

std::shared_ptr<EventSource::Sinks> EventSource::CurrentSinks() {
    auto current = std::make_shared<Sinks>();
    std::lock_guard lock(mutex_);
    for (const auto& [cookie, sink] : sinks_) {
        current->push_back(AddReference(sink.Get()));
    }
    return current;
}

HRESULT EventSource::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
    *point = nullptr;
    return IsEqualIID(iid, __uuidof(_IEventSourceEvents))
               ? QueryInterface(__uuidof(IConnectionPoint), reinterpret_cast<void**>(point))
               : CONNECT_E_NOCONNECTION;
}

HRESULT EventSource::GetConnectionInterface(IID* iid) {
    *iid = __uuidof(_IEventSourceEvents);
    return S_OK;
}

HRESULT EventSource::GetConnectionPointContainer(IConnectionPointContainer** container) {
    return QueryInterface(__uuidof(IConnectionPointContainer), reinterpret_cast<void**>(container));
}

// Asks the sink for the event interface by its own name, as many sources do.
HRESULT EventSource::Advise(IUnknown* sink, DWORD* cookie) {
    ComPtr<IDispatch> events;
    if (FAILED(sink->QueryInterface(__uuidof(_IEventSourceEvents),
                                    reinterpret_cast<void**>(events.Put())))) {
        return CONNECT_E_CANNOTCONNECT;
    }
    std::lock_guard lock(mutex_);
    *cookie = ++lastCookie_;
    sinks_.emplace(*cookie, std::move(events));
    ++sinkCount.left;
    return S_OK;
}

HRESULT EventSource::Unadvise(DWORD cookie) {
    std::lock_guard lock(mutex_);
    if (sinks_.erase(cookie) == 0) {
        return CONNECT_E_NOCONNECTION;
    }
    --sinkCount.left;
    return S_OK;
}

HRESULT EventSource::GetClassInfo(ITypeInfo** type) {
    return library_->GetTypeInfoOfGuid(__uuidof(::EventSource), type);
}

HRESULT EventSource::GetGUID(DWORD kind, GUID* guid) {
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
        return E_INVALIDARG;
    }
    *guid = __uuidof(_IEventSourceEvents);
    return S_OK;
}

} // namespace tervane::test
