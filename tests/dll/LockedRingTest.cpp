// Somebody keeps the log's mutex for good, as a process does that stands in a debugger: operations
// come to their ends all the same, and no call holds up the script.

#include "ZelBase/threads/ModulePin.h"
#include "support/LoopbackServer.h"
#include "support/ObjectTest.h"
#include "support/SystemPing.h"

namespace tervane::test {
namespace {

// Less than the second that the library's own threads would wait for a record.
constexpr DWORD kPromptMs = 900;

// Has the mutex while it lives.
class RingOwner {
public:
    RingOwner() { WaitForSingleObject(owns_.Get(), INFINITE); }
    ~RingOwner() {
        SetEvent(end_.Get());
        WaitForSingleObject(thread_.Get(), INFINITE);
    }

private:
    const ZelBase::UniqueHandle owns_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const ZelBase::UniqueHandle end_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const ZelBase::UniqueHandle thread_ = ZelBase::ModulePin::StartThread([this] {
        const ZelBase::UniqueHandle mutex(
            CreateMutexA(nullptr, FALSE, "Global\\ZelKit::WIN32_Logger::Mutex2"));
        WaitForSingleObject(mutex.Get(), INFINITE);
        SetEvent(owns_.Get());
        WaitForSingleObject(end_.Get(), INFINITE);
        ReleaseMutex(mutex.Get());
    });
};

TEST(LockedRing, FreezesNobody) {
    const Apartment apartment;
    const LoopbackServer server;
    const int smtpPort = server.Port(LoopbackServer::kSmtp);
    const auto tester = New(L"ConnectivityTester");
    const auto smtp = New(L"SmtpCtl");
    auto pop = New(L"PopCtl");
    PrepareSmtp(smtp.Get(), server);
    PreparePop(pop.Get(), server);
    const struct {
        IDispatch* object;
        const wchar_t* method;
        std::vector<Argument> arguments;
        const wchar_t* event;
    } rows[] = {
        {tester.Get(), L"DNSLookup", {L"localhost", 0}, L"1(-1s)"},
        {tester.Get(), L"TestTCPPort", {L"127.0.0.1", smtpPort, 4000}, L"2(-1s)"},
        {tester.Get(), L"Ping", {L"127.0.0.1", 4000, 1}, SystemCanPing() ? L"3(-1s)" : L"3(0s)"},
        {smtp.Get(), L"SendMail", {}, L"1(1, object)"},
        {pop.Get(), L"Connect", {}, L"1(1, object)"},
        {pop.Get(), L"GetMailCount", {}, L"2(2, object)"},
        {pop.Get(), L"RetrieveMessage", {1}, L"3(1, object)"},
        {pop.Get(), L"DeleteMessage", {1}, L"4(1, 1, object)"},
        {pop.Get(), L"Disconnect", {}, L"5(1, object)"},
    };
    const RingOwner owner;
    for (const auto& row : rows) {
        RecordingSink sink;
        const DWORD cookie = Advise(row.object, &sink);
        const DWORD start = GetTickCount();
        EXPECT_FALSE(Ask(row.object, row.method, row.arguments).starts_with(L"error"));
        EXPECT_LT(GetTickCount() - start, kPromptMs) << row.method;
        ASSERT_TRUE(sink.WaitFor(1, kPatience)) << row.method;
        EXPECT_EQ(row.event, sink.Text(0)) << row.method;
        Unadvise(row.object, cookie);
    }
    const DWORD start = GetTickCount();
    pop.Reset();
    EXPECT_LT(GetTickCount() - start, kPromptMs);
}

} // namespace
} // namespace tervane::test
