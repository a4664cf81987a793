// Every asynchronous method where the system gives no thread: its documented outcome at once, and
// no event ever after.

#include "support/ObjectClasses.h"
#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace tervane::test {
namespace {

using ThreadRoutine = unsigned(__stdcall*)(void*);
using BeginThread = uintptr_t(__cdecl*)(void*, unsigned, ThreadRoutine, void*, unsigned, unsigned*);

bool noThreads = false;

uintptr_t __cdecl BeginThreadOrNot(void* security, unsigned stack, ThreadRoutine routine,
                                   void* argument, unsigned flags, unsigned* id) {
    static const auto begin = reinterpret_cast<BeginThread>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "_beginthreadex")));
    return noThreads ? 0 : begin(security, stack, routine, argument, flags, id);
}

} // namespace

// The place from which this program's code takes the imported function; the linker takes it from
// here instead of the import library.
extern "C" {
#ifdef _WIN64
extern const BeginThread importedBeginThread asm("__imp__beginthreadex");
#else
extern const BeginThread importedBeginThread asm("__imp___beginthreadex");
#endif
const BeginThread importedBeginThread = &BeginThreadOrNot;
}

namespace {

std::string Told(HRESULT status, long result, long error) {
    char text[60];
    snprintf(text, sizeof text, "%lx, result %ld, error %ld", status, result, error);
    return text;
}

template <typename Control>
std::string Told(Control* control, HRESULT (STDMETHODCALLTYPE Control::*start)(VARIANT_BOOL*),
                 HRESULT (STDMETHODCALLTYPE Control::*outcome)(BSTR*)) {
    VARIANT_BOOL started = VARIANT_TRUE;
    const HRESULT status = (control->*start)(&started);
    UniqueBstr text;
    (control->*outcome)(text.Put());
    const std::wstring_view name = TextOf(text.Get());
    return Told(status, started, 0) + ", " + std::string(name.begin(), name.end());
}

using Wait = HRESULT (STDMETHODCALLTYPE IWindowMgr::*)(BSTR, BSTR, LONG, VARIANT_BOOL, LONG, LONG*);

std::string ToldByWait(IWindowMgr* windows, HRESULT status, LONG id) {
    LONG error = 0;
    windows->get_LastErrorCode(&error);
    return Told(status, id, error);
}

template <Wait method>
std::string StartWait(IUnknown* object) {
    const auto windows = QueryFor<IWindowMgr>(object);
    LONG id = 4711;
    const HRESULT status = (windows.Get()->*method)(nullptr, nullptr, 10, VARIANT_TRUE, 1, &id);
    return ToldByWait(windows.Get(), status, id);
}

struct Row {
    const char* method;
    const CLSID& clsid;
    std::string (*start)(IUnknown* object);
    const char* told;
};

constexpr char kOutOfMemory[] = "8007000e, result 0, error 0";
constexpr char kNoneStarted[] = "0, result 0, error 1";

const Row kRows[] = {
    {"DNSLookup", __uuidof(ConnectivityTester),
     [](IUnknown* o) {
         return Told(QueryFor<IConnectivityTester>(o)->DNSLookup(nullptr, 1), 0, 0);
     },
     kOutOfMemory},
    {"TestTCPPort", __uuidof(ConnectivityTester),
     [](IUnknown* o) {
         return Told(QueryFor<IConnectivityTester>(o)->TestTCPPort(nullptr, 1, 1), 0, 0);
     },
     kOutOfMemory},
    {"Ping", __uuidof(ConnectivityTester),
     [](IUnknown* o) { return Told(QueryFor<IConnectivityTester>(o)->Ping(nullptr, 1, 0), 0, 0); },
     kOutOfMemory},
    {"ReleaseRenew", __uuidof(DHCP),
     [](IUnknown* o) { return Told(QueryFor<IDHCP>(o)->ReleaseRenew(), 0, 0); }, kOutOfMemory},
    {"GetSystemInfo", __uuidof(GeneralSysInfo),
     [](IUnknown* o) { return Told(QueryFor<IGeneralSysInfo>(o)->GetSystemInfo(), 0, 0); },
     kOutOfMemory},
    {"WaitOnWindow", __uuidof(WindowMgr), &StartWait<&IWindowMgr::WaitOnWindow>, kNoneStarted},
    {"WaitForWindow", __uuidof(WindowMgr), &StartWait<&IWindowMgr::WaitForWindow>, kNoneStarted},
    {"WaitForWindowToComeAndGo", __uuidof(WindowMgr),
     [](IUnknown* o) {
         const auto windows = QueryFor<IWindowMgr>(o);
         LONG id = 4711;
         const HRESULT status = windows->WaitForWindowToComeAndGo(
             nullptr, nullptr, 10, VARIANT_TRUE, 1, VARIANT_FALSE, &id);
         return ToldByWait(windows.Get(), status, id);
     },
     kNoneStarted},
    {"GetAdapterInfo", __uuidof(AdapterInfo),
     [](IUnknown* o) {
         const auto adapters = QueryFor<IAdapterInfo>(o);
         const UniqueBstr live = MakeBstr(L"C4FEF9B0-0EF2-40E6-9474-36A915527057");
         LONG id = 4711;
         LONG error = 0;
         const HRESULT status = adapters->GetAdapterInfo(live.Get(), -1, &id);
         adapters->get_LastErrorCode(&error);
         return Told(status, id, error);
     },
     kNoneStarted},
    {"SendMail", __uuidof(SmtpCtl),
     [](IUnknown* o) {
         return Told(QueryFor<ISmtpCtl>(o).Get(), &ISmtpCtl::SendMail, &ISmtpCtl::get_StatusCode);
     },
     "0, result 0, error 0, SMTP_INTERNAL_ERR"},
    {"Connect", __uuidof(PopCtl),
     [](IUnknown* o) {
         return Told(QueryFor<IPopCtl>(o).Get(), &IPopCtl::Connect, &IPopCtl::get_LastError);
     },
     "0, result 0, error 0, POP_INTERNAL_ERR"},
};

TEST(NoThread, IsToldByEveryAsynchronousMethodAndFiresNothing) {
    const Apartment apartment;
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.method);
        noThreads = true;
        RecordingSink sink;
        {
            const ClassRow& factory = *FindClass(row.clsid);
            ComPtr<IUnknown> object;
            ASSERT_EQ(S_OK, factory.create(factory, nullptr, IID_IUnknown,
                                           reinterpret_cast<void**>(object.Put())));
            ASSERT_NE(0u, Advise(object.Get(), &sink));
            EXPECT_EQ(row.told, row.start(object.Get()));
            noThreads = false;
            PumpUntil([] { return false; }, 30);
        }
        EXPECT_EQ(0u, sink.Count());
        EXPECT_EQ(0, sink.References()) << "the object is still held";
    }
}

} // namespace
} // namespace tervane::test
