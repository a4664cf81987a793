// Every control class in a real container: the platform's own control host.

#include "ZelBase/Handles.h"
#include "support/Classes.h"
#include "support/ObjectTest.h"

namespace tervane::test {
namespace {

using CreateControlEx = HRESULT(WINAPI*)(LPCOLESTR, HWND, IStream*, IUnknown**, IUnknown**, REFIID,
                                         IUnknown*);

// The container finds the class through the system, so the class factory is announced to it for the
// time of a test.
class AnnouncedClass {
public:
    explicit AnnouncedClass(REFCLSID clsid) {
        ComPtr<IUnknown> factory;
        TestComponent::Get().GetClassObject(clsid, IID_IUnknown,
                                            reinterpret_cast<void**>(factory.Put()));
        CoRegisterClassObject(clsid, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                              &cookie_);
    }
    ~AnnouncedClass() { CoRevokeClassObject(cookie_); }

private:
    DWORD cookie_ = 0;
};

TEST(ControlHost, HostsEveryControlAndItsEvents) {
    const Apartment apartment;
    const ZelBase::UniqueLibrary host(LoadLibraryW(L"atl.dll"));
    const auto create = reinterpret_cast<CreateControlEx>(
        reinterpret_cast<void*>(GetProcAddress(host.Get(), "AtlAxCreateControlEx")));
    ASSERT_NE(nullptr, create);
    for (const ClassFacts& control : kClasses) {
        if (!control.bitmap) {
            continue;
        }
        SCOPED_TRACE(control.name);
        const AnnouncedClass announced(control.clsid);
        const HWND window = CreateWindowW(L"STATIC", L"container", WS_OVERLAPPEDWINDOW, 0, 0, 200,
                                          200, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, window);
        RecordingSink sink;
        {
            ComPtr<IUnknown> container;
            ComPtr<IUnknown> object;
            ASSERT_EQ(S_OK, create(control.text, window, nullptr, container.Put(), object.Put(),
                                   IID_NULL, nullptr));
            ASSERT_TRUE(object);
            ComPtr<IOleClientSite> site;
            EXPECT_EQ(S_OK, QueryFor<IOleObject>(object.Get())->GetClientSite(site.Put()));
            EXPECT_TRUE(site);
            EXPECT_EQ(control.events != nullptr, Advise(object.Get(), &sink) != 0);
            const auto dispatch = QueryFor<IDispatch>(object.Get());
            ComPtr<ITypeInfo> info;
            EXPECT_EQ(S_OK, dispatch->GetTypeInfo(0, 0, info.Put()));
        }
        DestroyWindow(window);
        EXPECT_EQ(0, sink.References()) << "the container is gone, so is the control";
    }
    EXPECT_EQ(S_OK, TestComponent::Get().CanUnloadNow()) << "a hosted control was leaked";
}

} // namespace
} // namespace tervane::test
