// The library as a module: its exports, its class factories, what holds it loaded, and objects as
// every host meets them.

#include "ZelBase/Handles.h"
#include "support/Classes.h"
#include "support/ObjectTest.h"
#include "support/ProcessUsage.h"
#include "support/TestThreads.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <span>

#include <olectl.h>

namespace tervane::test {
namespace {

// An outer object that aggregates one class: the inner interfaces must show its identity.
class OuterObject final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (IsEqualIID(iid, IID_IUnknown)) {
            AddRef();
            *out = static_cast<IUnknown*>(this);
            return S_OK;
        }
        return inner ? inner->QueryInterface(iid, out) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ComPtr<IUnknown> inner;
    ULONG references = 1;
};

GUID IdentifierOf(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    info->GetTypeAttr(&attributes);
    const GUID identifier = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    return identifier;
}

class ModuleTest : public testing::Test {
protected:
    const Apartment apartment_;
    TestComponent& component_ = TestComponent::Get();
};

class ClassTest : public ModuleTest, public testing::WithParamInterface<ClassFacts> {};

INSTANTIATE_TEST_SUITE_P(Classes, ClassTest, testing::ValuesIn(kClasses), [](const auto& info) {
    const std::wstring name = info.param.name;
    return std::string(name.begin(), name.end());
});

TEST_P(ClassTest, IsCreatedWithItsDefaultInterfaceAndTellsWhatItIs) {
    const ClassFacts& row = GetParam();
    const ComPtr<IDispatch> object = component_.Create(row.clsid);
    ASSERT_TRUE(object);

    ComPtr<IDispatch> dual;
    ASSERT_EQ(S_OK, object->QueryInterface(row.interfaceId, reinterpret_cast<void**>(dual.Put())));
    EXPECT_EQ(QueryFor<IUnknown>(object.Get()).Get(), QueryFor<IUnknown>(dual.Get()).Get());

    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, dual->GetTypeInfo(0, 0, info.Put()));
    EXPECT_TRUE(IsEqualGUID(row.interfaceId, IdentifierOf(info.Get())));

    const auto classInfo = QueryFor<IProvideClassInfo2>(object.Get());
    ASSERT_TRUE(classInfo);
    ComPtr<ITypeInfo> coclass;
    ASSERT_EQ(S_OK, classInfo->GetClassInfo(coclass.Put()));
    EXPECT_TRUE(IsEqualGUID(row.clsid, IdentifierOf(coclass.Get())));

    const auto errors = QueryFor<ISupportErrorInfo>(object.Get());
    ASSERT_TRUE(errors);
    EXPECT_EQ(S_OK, errors->InterfaceSupportsErrorInfo(row.interfaceId));
    EXPECT_EQ(S_FALSE, errors->InterfaceSupportsErrorInfo(IID_IOleObject));
}

TEST_P(ClassTest, HasItsConnectionPointAndNoOther) {
    const ClassFacts& row = GetParam();
    const ComPtr<IDispatch> object = component_.Create(row.clsid);
    ASSERT_TRUE(object);
    const auto container = QueryFor<IConnectionPointContainer>(object.Get());
    GUID source = {};
    const HRESULT told = QueryFor<IProvideClassInfo2>(object.Get())
                             ->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source);
    if (!row.events) {
        EXPECT_FALSE(container);
        EXPECT_TRUE(FAILED(told));
        return;
    }
    EXPECT_EQ(S_OK, told);
    EXPECT_TRUE(IsEqualGUID(*row.events, source));
    ASSERT_TRUE(container);

    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(points.Put()));
    ComPtr<IConnectionPoint> point;
    ComPtr<IConnectionPoint> another;
    ASSERT_EQ(S_OK, points->Next(1, point.Put(), nullptr));
    EXPECT_EQ(S_FALSE, points->Next(1, another.Put(), nullptr));
    IID events = {};
    ASSERT_EQ(S_OK, point->GetConnectionInterface(&events));
    EXPECT_TRUE(IsEqualIID(*row.events, events));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, container->FindConnectionPoint(IID_IDispatch, another.Put()));

    // An identity of its own, with the way back to the object.
    EXPECT_FALSE(QueryFor<IDispatch>(point.Get()));
    ComPtr<IConnectionPointContainer> back;
    EXPECT_EQ(S_OK, point->GetConnectionPointContainer(back.Put()));
    EXPECT_EQ(container.Get(), back.Get());
}

TEST_P(ClassTest, CanBeAggregated) {
    const ClassFacts& row = GetParam();
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, component_.GetClassObject(row.clsid, IID_IClassFactory,
                                              reinterpret_cast<void**>(factory.Put())));
    OuterObject outer;
    ComPtr<IUnknown> refused;
    EXPECT_EQ(
        CLASS_E_NOAGGREGATION,
        factory->CreateInstance(&outer, IID_IDispatch, reinterpret_cast<void**>(refused.Put())));
    ASSERT_EQ(S_OK, factory->CreateInstance(&outer, IID_IUnknown,
                                            reinterpret_cast<void**>(outer.inner.Put())));
    {
        const auto dispatch = QueryFor<IDispatch>(&outer);
        ASSERT_TRUE(dispatch);
        EXPECT_EQ(2u, outer.references);
        EXPECT_EQ(static_cast<IUnknown*>(&outer), QueryFor<IUnknown>(dispatch.Get()).Get());
        DISPID id = 0;
        LPOLESTR unknown = const_cast<LPOLESTR>(L"NoSuchMember");
        EXPECT_EQ(DISP_E_UNKNOWNNAME, dispatch->GetIDsOfNames(IID_NULL, &unknown, 1, 0, &id));
    }
    EXPECT_EQ(1u, outer.references);
    outer.inner.Reset();
}

// What a container does with a control before its script runs: site, state, verb, and back again.
TEST_P(ClassTest, IsHostedAsAControlWhereRegisteredAsOne) {
    const ClassFacts& row = GetParam();
    const ComPtr<IDispatch> object = component_.Create(row.clsid);
    const auto control = QueryFor<IOleObject>(object.Get());
    ASSERT_EQ(row.bitmap != nullptr, static_cast<bool>(control));
    if (!control) {
        return;
    }
    DWORD status = 0;
    EXPECT_EQ(S_OK, control->GetMiscStatus(DVASPECT_CONTENT, &status));
    EXPECT_EQ(132497u, status);
    CLSID clsid = {};
    EXPECT_EQ(S_OK, control->GetUserClassID(&clsid));
    EXPECT_TRUE(IsEqualCLSID(row.clsid, clsid));
    EXPECT_EQ(S_OK, QueryFor<IPersistStreamInit>(object.Get())->InitNew());

    const SIZEL wanted = {1234, 567};
    SIZEL extent = wanted;
    EXPECT_EQ(S_OK, control->SetExtent(DVASPECT_CONTENT, &extent));
    extent = {};
    EXPECT_EQ(
        S_OK,
        QueryFor<IViewObject2>(object.Get())->GetExtent(DVASPECT_CONTENT, -1, nullptr, &extent));
    EXPECT_EQ(wanted.cx, extent.cx);
    EXPECT_EQ(wanted.cy, extent.cy);
    EXPECT_EQ(OLEOBJ_S_INVALIDVERB, control->DoVerb(7, nullptr, nullptr, 0, nullptr, nullptr));
    EXPECT_FALSE(QueryFor<IObjectWithSite>(object.Get())) << "hosts without a site would refuse it";
    EXPECT_EQ(S_OK, control->Close(OLECLOSE_NOSAVE));
}

TEST_P(ClassTest, RefusesBadCalls) {
    const ComPtr<IDispatch> object = component_.Create(GetParam().clsid);
    ASSERT_TRUE(object);
    DISPPARAMS none = {};
    VARIANT arguments[20] = {};
    DISPPARAMS many = {arguments, nullptr, 20, 0};
    const auto invoke = [&](DISPID id, REFIID iid, DISPPARAMS* parameters) {
        return object->Invoke(id, iid, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET, parameters,
                              nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(4711, IID_NULL, &none));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, invoke(1, IID_IDispatch, &none));
    EXPECT_EQ(E_INVALIDARG, invoke(1, IID_NULL, nullptr));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(1, IID_NULL, &many));
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(DISP_E_BADINDEX, object->GetTypeInfo(1, 0, info.Put()));
    EXPECT_EQ(E_POINTER, object->GetTypeInfo(0, 0, nullptr));
    EXPECT_EQ(E_POINTER, object->GetTypeInfoCount(nullptr));
    EXPECT_EQ(E_POINTER, object->QueryInterface(IID_IUnknown, nullptr));
    LPOLESTR name = const_cast<LPOLESTR>(L"");
    DISPID id = 0;
    EXPECT_EQ(E_INVALIDARG, object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, object->GetIDsOfNames(IID_IDispatch, &name, 1, 0, &id));
}

TEST_F(ModuleTest, HandsOutOneCachedFactoryPerClass) {
    const auto factoryOf = [this](REFCLSID clsid) {
        ComPtr<IUnknown> factory;
        EXPECT_EQ(S_OK, component_.GetClassObject(clsid, IID_IUnknown,
                                                  reinterpret_cast<void**>(factory.Put())));
        return factory;
    };
    const auto first = factoryOf(__uuidof(Registry2));
    EXPECT_EQ(first.Get(), factoryOf(__uuidof(Registry2)).Get());
    EXPECT_NE(first.Get(), factoryOf(__uuidof(WindowMgr)).Get());

    void* out = &out;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              component_.GetClassObject(IID_IDispatch, IID_IUnknown, &out));
    EXPECT_EQ(nullptr, out);
    out = &out;
    EXPECT_EQ(E_NOINTERFACE, component_.GetClassObject(__uuidof(Registry2), IID_IDispatch, &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(E_POINTER, component_.GetClassObject(__uuidof(Registry2), IID_IUnknown, nullptr));
}

TEST_F(ModuleTest, StaysLoadedWhileAnythingHoldsIt) {
    EXPECT_EQ(S_OK, component_.CanUnloadNow());
    ComPtr<IDispatch> object = component_.Create(__uuidof(Registry2));
    EXPECT_EQ(S_FALSE, component_.CanUnloadNow());
    auto second = QueryFor<IUnknown>(object.Get()); // one more reference, not one more object
    object.Reset();
    EXPECT_EQ(S_FALSE, component_.CanUnloadNow());
    second.Reset();
    EXPECT_EQ(S_OK, component_.CanUnloadNow());

    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, component_.GetClassObject(__uuidof(WindowMgr), IID_IClassFactory,
                                              reinterpret_cast<void**>(factory.Put())));
    EXPECT_EQ(S_FALSE, component_.CanUnloadNow());
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    factory.Reset();
    EXPECT_EQ(S_FALSE, component_.CanUnloadNow());
    component_.GetClassObject(__uuidof(WindowMgr), IID_IClassFactory,
                              reinterpret_cast<void**>(factory.Put()));
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    EXPECT_EQ(S_FALSE, component_.CanUnloadNow());
    factory.Reset();
    EXPECT_EQ(S_OK, component_.CanUnloadNow());
}

// Takes calls on the test's thread only, as a script engine's sink does.
TEST_F(ModuleTest, StaysLoadedForAnEventThatItsSinkRefused) {
    RecordingSink sink;
    sink.onEvent = [home = GetCurrentThreadId()](DISPID) {
        return GetCurrentThreadId() == home ? S_OK : RPC_E_WRONG_THREAD;
    };
    {
        const auto object = New(L"ConnectivityTester");
        Advise(object.Get(), &sink);
        ASSERT_EQ(L"empty", Ask(object.Get(), L"DNSLookup", {L"", 1}));
    }
    for (int i = 0; i < 1000 && sink.Count() == 0; ++i) {
        Sleep(10); // dispatches nothing
    }
    ASSERT_EQ(1u, sink.Count());
    EXPECT_EQ(S_FALSE, component_.CanUnloadNow()) << "by the worker, or by the event alone";
    EXPECT_TRUE(sink.WaitFor(2, kPatience));
    EXPECT_EQ(GetCurrentThreadId(), sink[1].thread);
    EXPECT_TRUE(CanUnloadSoon());
    EXPECT_EQ(0, sink.References());
}

// Objects made, called and dropped in great number, from several threads at once: nothing remains.
TEST_F(ModuleTest, TenThousandRoundsLeaveNothingBehind) {
    const auto rounds = [this](int count) {
        const Apartment apartment;
        for (int i = 0; i < count; ++i) {
            const ClassFacts& row = kClasses[i % std::size(kClasses)];
            const ComPtr<IDispatch> object = component_.Create(row.clsid);
            DISPID id = 0;
            LPOLESTR name = const_cast<LPOLESTR>(L"NoSuchMember");
            object->GetIDsOfNames(IID_NULL, &name, 1, 0, &id);
            if (row.events) {
                RecordingSink sink;
                Unadvise(object.Get(), Advise(object.Get(), &sink));
                ASSERT_EQ(0, sink.References());
            }
        }
    };
    rounds(100); // whatever is made once only
    const std::size_t before = OpenHandleCount();
    TestThread other(rounds, 5000);
    rounds(5000);
    other.join();
    EXPECT_NE(0u, before);
    EXPECT_LE(OpenHandleCount(), before + 2);
    EXPECT_EQ(S_OK, component_.CanUnloadNow());
}

// A host that loads the library for one call and unloads it, again and again. A copy, because other
// tests of this program keep the library itself loaded; one per architecture, whose programs may
// run at the same time in the same folder.
constexpr const wchar_t* kCopy = sizeof(void*) == 8 ? L"TervaneCopy64.DLL" : L"TervaneCopy32.DLL";

int failedCloses = 0;

BOOL WINAPI CloseAndCount(HANDLE handle) {
    const BOOL isClosed = CloseHandle(handle);
    failedCloses += isClosed ? 0 : 1;
    return isClosed;
}

// Puts that in the place of the function that the library imports.
void CountFailedCloses(HMODULE module) {
    auto* const base = reinterpret_cast<std::byte*>(module);
    const auto* const start = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + start->e_lfanew);
    const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    const std::span imports(reinterpret_cast<decltype(&CloseHandle)*>(base + table.VirtualAddress),
                            table.Size / sizeof(&CloseHandle));
    DWORD before = 0; // some linkers put the table where nobody may write
    ASSERT_TRUE(VirtualProtect(imports.data(), table.Size, PAGE_READWRITE, &before));
    std::ranges::replace(imports, &CloseHandle, &CloseAndCount);
}

void LoadCallUnload() {
    const TestComponent component(kCopy);
    ASSERT_TRUE(component.Module());
    CountFailedCloses(component.Module());
    const ComPtr<IDispatch> manager = component.Create(__uuidof(WindowMgr));
    ASSERT_TRUE(manager);
    // An exception is thrown and caught inside.
    EXPECT_EQ(L"false", Ask(manager.Get(), L"SetWindowState", {3, L"("}));
    EXPECT_EQ(L"2", Ask(manager.Get(), L"LastErrorCode"));
}

struct Taken {
    DWORD slot; // the lowest that is free
    std::size_t handles;
    std::size_t bytes;
};

Taken TakenNow() {
    return {LowestFreeTlsSlot(), OpenHandleCount(), CommittedMemory()};
}

// The environment may ask for more, TERVANE_CYCLES=10000.
TEST(Module, TakesNothingAlongWhenUnloaded) {
    constexpr int kWarmUp = 30;
    constexpr std::size_t kMostBytesPerCycle = 100;
    constexpr std::size_t kHeapGrowth = 512 * 1024; // once, whatever the number of cycles
    const char* wanted = std::getenv("TERVANE_CYCLES");
    const int cycles = wanted ? std::atoi(wanted) : 300;
    const Apartment apartment;
    ASSERT_TRUE(CopyFileW(TestComponent::Get().Path().c_str(), kCopy, FALSE));
    const auto run = [](int count) {
        for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
            LoadCallUnload();
            EXPECT_FALSE(GetModuleHandleW(kCopy));
        }
    };
    run(kWarmUp);
    const Taken before = TakenNow();
    run(cycles);
    const Taken after = TakenNow();
    EXPECT_EQ(before.slot, after.slot);
    EXPECT_LE(after.handles, before.handles);
    EXPECT_EQ(0, failedCloses); // a handle that is closed twice may be somebody else's by then
    EXPECT_LE(after.bytes, before.bytes + kHeapGrowth + cycles * kMostBytesPerCycle);
    RecordProperty("bytes", std::to_string(static_cast<long>(after.bytes - before.bytes)));
    EXPECT_TRUE(DeleteFileW(kCopy));
}

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

// Deliberately no error here; the empty name stands for all members.
const std::set<std::pair<std::wstring, std::wstring>> kUnmoved = {
    {L"IEmailData", L""},
    {L"IPopCtl", L"LastError"},
    {L"IRegistry2", L"GetValue"},
    {L"IDHCPConfiguration", L"IsRebootNeeded"},
    {L"IDHCPConfiguration", L"LastError"},
    {L"IDHCPConfiguration", L"LastErrorCode"}};

// Zeroes of the declared types, and null for the result.
HRESULT CallWithoutPlace(IUnknown* object, const FUNCDESC& function) {
    std::vector<VARIANT> values(static_cast<std::size_t>(function.cParams));
    std::vector<VARTYPE> types;
    std::vector<VARIANTARG*> places;
    for (SHORT i = 0; i < function.cParams; ++i) {
        const VARTYPE type = function.lprgelemdescParam[i].tdesc.vt;
        types.push_back(type == VT_PTR ? static_cast<VARTYPE>(sizeof(void*) == 8 ? VT_I8 : VT_I4)
                                       : type);
        values[i].vt = type == VT_VARIANT ? static_cast<VARTYPE>(VT_EMPTY) : types.back();
        places.push_back(&values[i]);
    }
    VARIANT result = {};
    const HRESULT called =
        DispCallFunc(object, static_cast<ULONG_PTR>(function.oVft), CC_STDCALL, VT_I4,
                     static_cast<UINT>(function.cParams), types.data(), places.data(), &result);
    return FAILED(called) ? called : result.lVal;
}

ComPtr<ITypeInfo> CoclassOf(IUnknown* object) {
    ComPtr<ITypeInfo> coclass;
    QueryFor<IProvideClassInfo>(object)->GetClassInfo(coclass.Put());
    return coclass;
}

// What the interface's own description, with the virtual table, lists.
int CallAll(IUnknown* object, ITypeInfo* table) {
    int members = 0;
    const std::wstring name = NameOf(table);
    FUNCDESC* function = nullptr;
    for (UINT f = 0; SUCCEEDED(table->GetFuncDesc(f, &function)); ++f) {
        const SHORT last = function->cParams - 1;
        if (last >= 0 &&
            function->lprgelemdescParam[last].paramdesc.wParamFlags & PARAMFLAG_FRETVAL) {
            const std::wstring member = NameOf(table, function->memid);
            const bool unmoved = kUnmoved.count({name, L""}) || kUnmoved.count({name, member});
            EXPECT_EQ(unmoved ? S_FALSE : E_POINTER, CallWithoutPlace(object, *function))
                << testing::PrintToString(name) << "." << testing::PrintToString(member);
            ++members;
        }
        table->ReleaseFuncDesc(function);
    }
    return members;
}

// As compiled clients can: without a place for the result.
TEST_P(ClassTest, RefusesNullPlacesOfEveryMember) {
    const auto object = New(GetParam().name);
    const auto coclass = CoclassOf(object.Get());
    int members = 0;
    HREFTYPE reference = 0;
    for (UINT n = 0; SUCCEEDED(coclass->GetRefTypeOfImplType(n, &reference)); ++n) {
        ComPtr<ITypeInfo> info, table;
        ComPtr<IUnknown> side;
        coclass->GetRefTypeInfo(reference, info.Put());
        if (FAILED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference)) ||
            FAILED(info->GetRefTypeInfo(reference, table.Put()))) {
            continue; // events
        }
        const GUID identifier = IdentifierOf(table.Get());
        EXPECT_EQ(S_OK, object->QueryInterface(identifier, reinterpret_cast<void**>(side.Put())));
        members += CallAll(side.Get(), table.Get());
    }
    // These two tell everything by events.
    const std::wstring_view name = GetParam().name;
    EXPECT_EQ(name != L"DHCP" && name != L"ConnectivityTester", members > 0);
}

} // namespace
} // namespace tervane::test
