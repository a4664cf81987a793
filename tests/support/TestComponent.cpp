#include "support/TestComponent.h"

#include "support/Classes.h"

#include <algorithm>

namespace tervane::test {
namespace {

constexpr DWORD kPumpStep = 20; // ms; how often a condition that signals nothing is looked at

std::wstring BuildFolder() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program(path, length);
    const std::wstring tests = program.substr(0, program.find_last_of(L"\\/"));
    return tests.substr(0, tests.find_last_of(L"\\/"));
}

template <typename Function>
Function ExportOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

void DispatchMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
}

} // namespace

TestComponent& TestComponent::Get() {
    static TestComponent component(BuildFolder() + L"\\Tervane.DLL");
    return component;
}

TestComponent::TestComponent(const std::wstring& path)
    : path_(path), module_(LoadLibraryW(path_.c_str())) {}

HRESULT TestComponent::GetClassObject(REFCLSID clsid, REFIID iid, void** out) const {
    using Function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    return ExportOf<Function>(module_.Get(), "DllGetClassObject")(clsid, iid, out);
}

HRESULT TestComponent::CanUnloadNow() const {
    return ExportOf<HRESULT(STDAPICALLTYPE*)()>(module_.Get(), "DllCanUnloadNow")();
}

ComPtr<IDispatch> TestComponent::Create(REFCLSID clsid) const {
    ComPtr<IClassFactory> factory;
    ComPtr<IDispatch> object;
    if (SUCCEEDED(
            GetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(factory.Put())))) {
        factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(object.Put()));
    }
    return object;
}

ComPtr<IDispatch> New(std::wstring_view name) {
    return TestComponent::Get().Create(FactsOf(name).clsid);
}

LateCall::LateCall(std::wstring member, WORD flags, const std::vector<Argument>& arguments)
    : member_(std::move(member)), flags_(flags), reversed_(arguments.size()) {
    std::transform(arguments.begin(), arguments.end(), reversed_.rbegin(),
                   [](const Argument& argument) { return argument.value.Get(); });
}

LateCall::LateCall(const std::wstring& member, const std::vector<Argument>& arguments)
    : LateCall(member.substr(0, member.find(L'=')),
               member.ends_with(L'=') ? DISPATCH_PROPERTYPUT
                                      : DISPATCH_METHOD | DISPATCH_PROPERTYGET,
               arguments) {}

HRESULT LateCall::Run(IDispatch* object, VARIANT* result) {
    LPOLESTR name = member_.data();
    DISPID id = DISPID_UNKNOWN;
    const HRESULT found = object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(found)) {
        return found;
    }
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters = {reversed_.data(), nullptr, static_cast<UINT>(reversed_.size()), 0};
    if (flags_ & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
        parameters.rgdispidNamedArgs = &put;
        parameters.cNamedArgs = 1;
    }
    EXCEPINFO exception = {};
    const HRESULT called = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags_, &parameters,
                                          result, &exception, nullptr);
    for (const BSTR text :
         {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile}) {
        SysFreeString(text);
    }
    // The type library's way of calling wraps the failures of members.
    return called == DISP_E_EXCEPTION ? exception.scode : called;
}

CallResult Invoke(IDispatch* object, const wchar_t* member, WORD flags,
                  const std::vector<Argument>& arguments) {
    CallResult result;
    result.status = LateCall(member, flags, arguments).Run(object, result.value.Put());
    return result;
}

CallResult Call(IDispatch* object, const wchar_t* method, const std::vector<Argument>& arguments) {
    return Invoke(object, method, DISPATCH_METHOD, arguments);
}

CallResult Read(IDispatch* object, const wchar_t* property) {
    return Invoke(object, property, DISPATCH_PROPERTYGET, {});
}

CallResult Write(IDispatch* object, const wchar_t* property, const Argument& value) {
    return Invoke(object, property, DISPATCH_PROPERTYPUT, {Argument(value.value.Get())});
}

std::wstring Say(const VARIANT& value) {
    switch (value.vt) {
    case VT_EMPTY:
        return L"empty";
    case VT_BSTR:
        return std::wstring(TextOf(value.bstrVal));
    case VT_BOOL:
        return value.boolVal == VARIANT_TRUE ? L"true" : value.boolVal ? L"other true" : L"false";
    case VT_I4:
        return std::to_wstring(value.lVal);
    case VT_UI4:
        return std::to_wstring(value.ulVal) + L"u";
    case VT_I2:
        return std::to_wstring(value.iVal) + L"s";
    case VT_DISPATCH:
        return value.pdispVal ? L"object" : L"nothing";
    default:
        break;
    }
    const auto elements = ReadArray(value);
    if (!elements) {
        return L"type " + std::to_wstring(value.vt);
    }
    std::wstring text;
    for (const Variant& element : *elements) {
        text.append(text.empty() ? L"" : L", ").append(Say(element.Get()));
    }
    return L"[" + text + L"]";
}

std::wstring Ask(IDispatch* object, const std::wstring& member,
                 const std::vector<Argument>& arguments) {
    Variant result;
    const HRESULT status = LateCall(member, arguments).Run(object, result.Put());
    if (status == S_OK) {
        return Say(result.Get());
    }
    wchar_t text[20];
    swprintf(text, std::size(text), FAILED(status) ? L"error %lX" : L"status %lX",
             static_cast<unsigned long>(status));
    return text;
}

std::wstring NameOf(ITypeInfo* info, MEMBERID member) {
    UniqueBstr name;
    info->GetDocumentation(member, name.Put(), nullptr, nullptr, nullptr);
    return std::wstring(TextOf(name.Get()));
}

RecordingSink::~RecordingSink() {
    constexpr ULONGLONG kPatience = 2000; // ms
    Forget();
    const ULONGLONG end = GetTickCount64() + kPatience;
    while (references_ > 0 && GetTickCount64() < end) {
        Sleep(1);
    }
}

HRESULT STDMETHODCALLTYPE RecordingSink::QueryInterface(REFIID iid, void** out) {
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch)) {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    *out = static_cast<IDispatch*>(this);
    return S_OK;
}

ULONG STDMETHODCALLTYPE RecordingSink::AddRef() {
    return ++references_;
}

ULONG STDMETHODCALLTYPE RecordingSink::Release() {
    return --references_;
}

HRESULT STDMETHODCALLTYPE RecordingSink::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE RecordingSink::GetTypeInfo(UINT, LCID, ITypeInfo**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE RecordingSink::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE RecordingSink::Invoke(DISPID member, REFIID, LCID, WORD,
                                                DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                                                UINT*) {
    {
        auto event = std::make_unique<ReceivedEvent>();
        event->id = member;
        event->thread = GetCurrentThreadId();
        for (UINT i = parameters->cArgs; i > 0; --i) {
            event->arguments.push_back(std::move(*Variant::CopyOf(parameters->rgvarg[i - 1])));
        }
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
    }
    SetEvent(arrived_.Get());
    return OnEvent(member);
}

bool RecordingSink::WaitFor(std::size_t events, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (Count() < events) {
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            return false;
        }
        HANDLE arrived = arrived_.Get();
        MsgWaitForMultipleObjects(1, &arrived, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        DispatchMessages();
    }
    return true;
}

std::size_t RecordingSink::Count() {
    const std::lock_guard lock(mutex_);
    return events_.size();
}

std::wstring RecordingSink::Text(std::size_t index) {
    const std::lock_guard lock(mutex_);
    const ReceivedEvent& event = *events_.at(index);
    std::wstring text = std::to_wstring(event.id) + L"(";
    for (const Variant& argument : event.arguments) {
        text.append(text.ends_with(L'(') ? L"" : L", ").append(Say(argument.Get()));
    }
    return text + L")";
}

void RecordingSink::Forget() {
    std::vector<std::vector<Variant>> forgotten; // the last reference may go, and call anything
    const std::lock_guard lock(mutex_);
    for (const auto& event : events_) {
        forgotten.push_back(std::exchange(event->arguments, {}));
    }
}

ReceivedEvent& RecordingSink::operator[](std::size_t index) {
    const std::lock_guard lock(mutex_);
    return *events_.at(index);
}

ComPtr<IConnectionPoint> EventsOf(IUnknown* object) {
    ComPtr<IConnectionPoint> point;
    ComPtr<IEnumConnectionPoints> points;
    const auto container = QueryFor<IConnectionPointContainer>(object);
    if (container && SUCCEEDED(container->EnumConnectionPoints(points.Put()))) {
        points->Next(1, point.Put(), nullptr);
    }
    return point;
}

DWORD Advise(IUnknown* object, IUnknown* sink) {
    DWORD cookie = 0;
    const auto point = EventsOf(object);
    return point && SUCCEEDED(point->Advise(sink, &cookie)) ? cookie : 0;
}

HRESULT Unadvise(IUnknown* object, DWORD cookie) {
    const auto point = EventsOf(object);
    return point ? point->Unadvise(cookie) : E_NOINTERFACE;
}

std::vector<HWND> PostbackWindows() {
    std::vector<HWND> windows;
    HWND window = nullptr;
    while ((window = FindWindowExA(nullptr, window, nullptr, "PostbackWindow")) != nullptr) {
        if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) {
            windows.push_back(window);
        }
    }
    return windows;
}

void DisturbPostbackWindows() {
    for (const HWND window : PostbackWindows()) {
        PostMessageA(window, WM_USER, 0, 0);
        PostMessageA(window, WM_CLOSE, 0, 0);
    }
    DispatchMessages();
}

bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!condition()) {
        if (GetTickCount64() >= end) {
            return false;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, kPumpStep, QS_ALLINPUT);
        DispatchMessages();
    }
    return true;
}

} // namespace tervane::test
