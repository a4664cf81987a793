#pragma once

// The built DLL as a host sees it: loaded by path, its classes made through its class factories,
// its members called late-bound, its events recorded.

#include "ZelBase/Handles.h"
#include "platform/ComValues.h"
#include "support/TestThreads.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <ocidl.h>

namespace tervane::test {

// COM for the time of a test, on its thread.
class Apartment {
public:
    Apartment() { CoInitialize(nullptr); }
    ~Apartment() { CoUninitialize(); }
};

class TestComponent {
public:
    // Tervane.DLL of the build that this test belongs to, loaded until the process ends.
    static TestComponent& Get();
    // Loads a copy of it; Module() is null when that fails.
    explicit TestComponent(const std::wstring& path);

    HMODULE Module() const { return module_.Get(); }
    const std::wstring& Path() const { return path_; }

    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** out) const;
    HRESULT CanUnloadNow() const;

    // An object's IDispatch; null when it cannot be made.
    ComPtr<IDispatch> Create(REFCLSID clsid) const;

private:
    std::wstring path_;
    ZelBase::UniqueLibrary module_;
};

// An object of the class with that name.
ComPtr<IDispatch> New(std::wstring_view name);

// Arguments of a late-bound call, in their declared order.
struct Argument {
    Argument(int number) : value(Variant::FromLong(number)) {}
    Argument(long number) : value(Variant::FromLong(number)) {}
    Argument(bool truth) : value(Variant::FromBool(truth)) {}
    Argument(const wchar_t* text) : value(std::move(*Variant::FromText(text))) {}
    Argument(const std::wstring& text) : value(std::move(*Variant::FromText(text))) {}
    Argument(const ComPtr<IDispatch>& object)
        : value(Variant::FromObject(AddReference(object.Get()))) {}
    Argument(const std::vector<std::wstring>& texts) : value(std::move(*MakeTextArray(texts))) {}
    // A copy by value.
    Argument(const VARIANT& other) : value(std::move(*Variant::CopyOf(other))) {}
    Argument(const Argument& other) : Argument(other.value.Get()) {}
    Argument& operator=(const Argument& other) {
        value = std::move(*Variant::CopyOf(other.value.Get()));
        return *this;
    }
    Variant value;
};

struct CallResult {
    HRESULT status;
    Variant value;
};

// A late-bound call with everything in its place: running it allocates nothing here. Refers to the
// arguments.
class LateCall {
public:
    LateCall(std::wstring member, WORD flags, const std::vector<Argument>& arguments);
    // Of a method, a property or, with "=" behind its name, of putting one.
    LateCall(const std::wstring& member, const std::vector<Argument>& arguments);
    // What the member itself answers.
    HRESULT Run(IDispatch* object, VARIANT* result);

private:
    std::wstring member_;
    WORD flags_;
    std::vector<VARIANT> reversed_;
};

CallResult Invoke(IDispatch* object, const wchar_t* member, WORD flags,
                  const std::vector<Argument>& arguments);
// A method.
CallResult Call(IDispatch* object, const wchar_t* method,
                const std::vector<Argument>& arguments = {});
// A property.
CallResult Read(IDispatch* object, const wchar_t* property);
CallResult Write(IDispatch* object, const wchar_t* property, const Argument& value);

// A value in words that tell its type: a text as it stands, 7 (VT_I4), 7u (VT_UI4), 7s (VT_I2),
// "true" (-1; "other true" for other numbers), "[a, b]", "object", "nothing", "empty", or "type N".
std::wstring Say(const VARIANT& value);
// The answer to a method, a property or, with "=" behind its name, to putting one; "error N" in
// hexadecimal digits for a failure, "status N" for any other success than S_OK.
std::wstring Ask(IDispatch* object, const std::wstring& member,
                 const std::vector<Argument>& arguments = {});
// Reads the object's own name for that member of a type.
std::wstring NameOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL);

// What one firing delivered.
struct ReceivedEvent {
    DISPID id;
    std::vector<Variant> arguments; // in their declared order
    DWORD thread;
};

// A sink that records what it is called with; a test may let it do more. The test owns it on its
// stack or heap; references are counted only to see that they come back to none.
class RecordingSink : public IDispatch {
public:
    // Waits a while for whoever still holds a reference: an event is recorded, and the test goes
    // on, before the thread that fires it has left the sink.
    virtual ~RecordingSink();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** out) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID iid, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) override;

    // Waits until that many events have come, at most `milliseconds`; messages of this thread are
    // dispatched meanwhile. False on time-out.
    bool WaitFor(std::size_t events, DWORD milliseconds);
    std::size_t Count();
    // The event with that number, from 0; only after WaitFor said that it came.
    ReceivedEvent& operator[](std::size_t index);
    // "number(argument, ...)", arguments in the words of `Say`.
    std::wstring Text(std::size_t index);
    // Drops the arguments of all events, which may keep the object.
    void Forget();
    LONG References() const { return references_; }

    // Called after the event was recorded, on the thread that fires. Its result is the sink's.
    std::function<HRESULT(DISPID)> onEvent;

protected:
    virtual HRESULT OnEvent(DISPID event) { return onEvent ? onEvent(event) : S_OK; }

private:
    TestMutex mutex_;
    std::vector<std::unique_ptr<ReceivedEvent>> events_;
    ZelBase::UniqueHandle arrived_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    std::atomic<LONG> references_ = 0;
};

// The object's one connection point for its events; null when it has none.
ComPtr<IConnectionPoint> EventsOf(IUnknown* object);
// Advises and returns the cookie; 0 when that fails.
DWORD Advise(IUnknown* object, IUnknown* sink);
HRESULT Unadvise(IUnknown* object, DWORD cookie);

// The hidden windows of the objects of this thread.
std::vector<HWND> PostbackWindows();
// Posts to them what strangers may post: a completion, and that they shall close. Dispatches it.
void DisturbPostbackWindows();

// Dispatches this thread's messages until `condition` holds; false after `milliseconds`.
bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds);

} // namespace tervane::test
