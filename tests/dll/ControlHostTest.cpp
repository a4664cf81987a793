// Every control class in a real container: the platform's own control host.

#include "support/TestComponent.h"

#include "TERVANELib.h"

#include <gtest/gtest.h>

namespace tervane::test {
namespace {

using CreateControlEx = HRESULT(WINAPI*)(LPCOLESTR, HWND, IStream*, IUnknown**, IUnknown**, REFIID,
                                         IUnknown*);

struct ControlCase {
    const wchar_t* progId;
    REFCLSID clsid;
    bool events;
};

const ControlCase kControls[] = {
    {L"Ostrel.GeneralSysInfo", __uuidof(GeneralSysInfo), true},
    {L"Pellow.SmtpCtl", __uuidof(SmtpCtl), true},
    {L"Pellow.PopCtl", __uuidof(PopCtl), true},
    {L"Pellow.EmailData", __uuidof(EmailData), false},
    {L"Tervane.ConfigureIE", __uuidof(ConfigureIE), true},
    {L"Tervane.StaticAdapterInfo", __uuidof(StaticAdapterInfo), false},
    {L"Tervane.LiveAdapterInfo", __uuidof(LiveAdapterInfo), false},
    {L"Tervane.DriveInfo", __uuidof(DriveInfo), false},
    {L"Tervane.AdapterInfo", __uuidof(AdapterInfo), true},
};

// The container finds the class through the system, so the class factories are announced to it for
// the time of a test, by CLSID; names are looked up in the registry.
class AnnouncedClasses {
public:
    AnnouncedClasses() {
        for (const ControlCase& control : kControls) {
            ComPtr<IUnknown> factory;
            DWORD cookie = 0;
            TestComponent::Get().GetClassObject(control.clsid, IID_IUnknown,
                                                reinterpret_cast<void**>(factory.Put()));
            CoRegisterClassObject(control.clsid, factory.Get(), CLSCTX_INPROC_SERVER,
                                  REGCLS_MULTIPLEUSE, &cookie);
            cookies_.push_back(cookie);
        }
    }
    ~AnnouncedClasses() {
        for (const DWORD cookie : cookies_) {
            CoRevokeClassObject(cookie);
        }
    }

private:
    std::vector<DWORD> cookies_;
};

TEST(ControlHost, HostsEveryControlAndItsEvents) {
    const Apartment apartment;
    const ZelBase::UniqueLibrary host(LoadLibraryW(L"atl.dll"));
    const auto create = reinterpret_cast<CreateControlEx>(
        reinterpret_cast<void*>(GetProcAddress(host.Get(), "AtlAxCreateControlEx")));
    ASSERT_NE(nullptr, create);
    auto classes = std::make_unique<AnnouncedClasses>();
    for (const ControlCase& control : kControls) {
        SCOPED_TRACE(control.progId);
        const HWND window = CreateWindowW(L"STATIC", L"container", WS_OVERLAPPEDWINDOW, 0, 0, 200,
                                          200, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, window);
        wchar_t clsid[40];
        StringFromGUID2(control.clsid, clsid, 40);
        RecordingSink sink;
        {
            ComPtr<IUnknown> container;
            ComPtr<IUnknown> object;
            ASSERT_EQ(S_OK, create(clsid, window, nullptr, container.Put(), object.Put(), IID_NULL,
                                   nullptr));
            ASSERT_TRUE(object);
            ComPtr<IOleClientSite> site;
            EXPECT_EQ(S_OK, QueryFor<IOleObject>(object.Get())->GetClientSite(site.Put()));
            EXPECT_TRUE(site);
            EXPECT_EQ(control.events, Advise(object.Get(), &sink) != 0);
            const auto dispatch = QueryFor<IDispatch>(object.Get());
            ComPtr<ITypeInfo> info;
            EXPECT_EQ(S_OK, dispatch->GetTypeInfo(0, 0, info.Put()));
        }
        DestroyWindow(window);
        EXPECT_EQ(0, sink.References()) << "the container is gone, so is the control";
    }
    classes.reset();
    EXPECT_EQ(S_OK, TestComponent::Get().CanUnloadNow()) << "a hosted control was leaked";
}

} // namespace
} // namespace tervane::test
