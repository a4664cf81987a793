// Every asynchronous method where the system gives no thread: its documented outcome at once, and
// no event ever after.

#include "support/Classes.h"
#include "support/ObjectClasses.h"
#include "support/ObjectTest.h"

namespace tervane::test {
namespace {

using ThreadRoutine = unsigned(__stdcall*)(void*);
using BeginThread = uintptr_t(__cdecl*)(void*, unsigned, ThreadRoutine, void*, unsigned, unsigned*);

constexpr wchar_t kLive[] = L"C4FEF9B0-0EF2-40E6-9474-36A915527057";

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

constexpr wchar_t kOutOfMemory[] = L"error 8007000E";

struct Row {
    const wchar_t* type;
    const wchar_t* method;
    std::vector<Argument> arguments;
    const wchar_t* answer;
    const wchar_t* status = nullptr; // a property, and what it says
    const wchar_t* told = nullptr;
};

const Row kRows[] = {
    {L"ConnectivityTester", L"DNSLookup", {L"", 1}, kOutOfMemory},
    {L"ConnectivityTester", L"TestTCPPort", {L"", 1, 1}, kOutOfMemory},
    {L"ConnectivityTester", L"Ping", {L"", 1, 0}, kOutOfMemory},
    {L"DHCP", L"ReleaseRenew", {}, kOutOfMemory},
    {L"GeneralSysInfo", L"GetSystemInfo", {}, kOutOfMemory},
    {L"WindowMgr", L"WaitOnWindow", {L"", L"", 10, true, 1}, L"0", L"LastErrorCode", L"1"},
    {L"WindowMgr", L"WaitForWindow", {L"", L"", 10, true, 1}, L"0", L"LastErrorCode", L"1"},
    {L"WindowMgr", L"WaitForWindowToComeAndGo", {L""}, L"0", L"LastErrorCode", L"1"},
    {L"AdapterInfo", L"GetAdapterInfo", {kLive}, L"0", L"LastErrorCode", L"1"},
    {L"SmtpCtl", L"SendMail", {}, L"false", L"StatusCode", L"SMTP_INTERNAL_ERR"},
    {L"PopCtl", L"Connect", {}, L"false", L"LastError", L"POP_INTERNAL_ERR"},
};

TEST(NoThread, IsToldByEveryAsynchronousMethodAndFiresNothing) {
    const Apartment apartment;
    UseBuiltTypeLibrary();
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.method);
        noThreads = true;
        RecordingSink sink;
        {
            const ClassRow& factory = *FindClass(FactsOf(row.type).clsid);
            ComPtr<IDispatch> object;
            ASSERT_EQ(S_OK, factory.create(factory, nullptr, IID_IDispatch,
                                           reinterpret_cast<void**>(object.Put())));
            ASSERT_NE(0u, Advise(object.Get(), &sink));
            EXPECT_EQ(row.answer, Ask(object.Get(), row.method, row.arguments));
            EXPECT_TRUE(!row.status || Ask(object.Get(), row.status) == row.told);
            noThreads = false;
            PumpUntil([] { return false; }, 30);
        }
        EXPECT_EQ(0u, sink.Count());
        EXPECT_EQ(0, sink.References()) << "the object is still held";
    }
}

} // namespace
} // namespace tervane::test
