// Uses the library without having it registered: makes an object of every class by its name, and
// takes an event. Everything that registration would tell stands in two files beside the program:
// unregistered.exe.manifest says that it needs the assembly Tervane.Components, and
// Tervane.Components.manifest describes the classes in Tervane.DLL. A program of yours needs those
// three files in its folder, the first under its own name.
//
// Exit code: 0 when all of it worked, else 1.

#include "TERVANELib.h"

#include <windows.h>

#include <cstdio>

namespace {

constexpr const wchar_t* kClasses[] = {
    L"Tervane.AdapterInfo",
    L"Tervane.ConfigureIE",
    L"Tervane.ConnectivityTester",
    L"Tervane.ConfigureOutlookExpress",
    L"Tervane.DHCP",
    L"Tervane.DHCPConfiguration",
    L"Tervane.DriveInfo",
    L"Tervane.DisableFileAndPrintSharing",
    L"Tervane.LiveAdapterInfo",
    L"Tervane.PhoneBookEntry",
    L"Tervane.RASMgr",
    L"Tervane.Registry2",
    L"Tervane.StaticAdapterInfo",
    L"Tervane.WindowMgr",
    L"Ostrel.GeneralSysInfo",
    L"Pellow.EmailData",
    L"Pellow.PopCtl",
    L"Pellow.SmtpCtl",
};
constexpr DWORD kPatienceMs = 20000;
constexpr DISPID kOnWaitForWindowComplete = 2;

// Takes the events of a WindowMgr. They come on a thread of the object's, so all that is done here
// is to note that one came. Lives on the stack of wmain, which outlives the connection.
class WindowEvents final : public IDispatch {
public:
    WindowEvents() : came_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    WindowEvents(const WindowEvents&) = delete;
    WindowEvents& operator=(const WindowEvents&) = delete;
    ~WindowEvents() { CloseHandle(came_); }

    bool Await() const { return WaitForSingleObject(came_, kPatienceMs) == WAIT_OBJECT_0; }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
        if (iid != IID_IUnknown && iid != IID_IDispatch && iid != __uuidof(_IWindowMgrEvents)) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = static_cast<IDispatch*>(this);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, OLECHAR**, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        if (event == kOnWaitForWindowComplete) {
            SetEvent(came_);
        }
        return S_OK;
    }

private:
    HANDLE came_;
};

HRESULT Create(const wchar_t* name, REFIID iid, void** object) {
    CLSID clsid;
    const HRESULT result = CLSIDFromProgID(name, &clsid);
    return FAILED(result) ? result
                          : CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object);
}

bool CreateAll() {
    bool all = true;
    for (const wchar_t* name : kClasses) {
        IDispatch* object = nullptr;
        const HRESULT result = Create(name, IID_IDispatch, reinterpret_cast<void**>(&object));
        std::printf("%-36ls %s 0x%08lX\n", name, SUCCEEDED(result) ? "ok" : "FAILED", result);
        if (FAILED(result)) {
            all = false;
        } else {
            object->Release();
        }
    }
    return all;
}

// Looks twice for a window that is not there and waits for the event that says so.
bool WaitForEvent(IWindowMgr* manager, IConnectionPoint* point) {
    WindowEvents events;
    DWORD cookie = 0;
    if (FAILED(point->Advise(&events, &cookie))) {
        return false;
    }
    const BSTR title = SysAllocString(L"no window has this title");
    long id = 0;
    const bool came = SUCCEEDED(manager->WaitForWindow(title, nullptr, 10, VARIANT_TRUE, 2, &id)) &&
                      events.Await();
    SysFreeString(title);
    point->Unadvise(cookie);
    return came;
}

bool TakeEvent() {
    IWindowMgr* manager = nullptr;
    IConnectionPointContainer* container = nullptr;
    IConnectionPoint* point = nullptr;
    bool came = false;
    if (SUCCEEDED(Create(L"Tervane.WindowMgr", __uuidof(IWindowMgr),
                         reinterpret_cast<void**>(&manager)))) {
        if (SUCCEEDED(manager->QueryInterface(IID_IConnectionPointContainer,
                                              reinterpret_cast<void**>(&container)))) {
            if (SUCCEEDED(container->FindConnectionPoint(__uuidof(_IWindowMgrEvents), &point))) {
                came = WaitForEvent(manager, point);
                point->Release();
            }
            container->Release();
        }
        manager->Release();
    }
    std::printf("%-36s %s\n", "event of WindowMgr", came ? "ok" : "FAILED");
    return came;
}

} // namespace

int wmain() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const bool created = CreateAll();
    const bool came = TakeEvent();
    CoUninitialize();
    return created && came ? 0 : 1;
}
