// Somebody keeps the log's mutex for good, as a process does that stands in a debugger: operations
// come to their ends all the same, and no call holds up the script.

#include "ZelBase/threads/ModulePin.h"
#include "support/ScriptedServer.h"
#include "support/SystemPing.h"
#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <vector>

namespace tervane::test {
namespace {

constexpr DWORD kTimeoutMs = 4000; // of each operation
constexpr DWORD kLateMs = 2000;    // how much longer one may take
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

// An object and what it reports.
struct Reporter {
    explicit Reporter(REFCLSID clsid) : object(TestComponent::Get().Create(clsid)) {
        Advise(object.Get(), &sink);
    }
    ~Reporter() {
        for (size_t i = 0; i < sink.Count(); ++i) {
            sink[i].arguments.clear(); // mail events carry their object, and so keep it
        }
    }
    // Whether the operation starts at once and reports success in time.
    void Expect(const wchar_t* method, std::initializer_list<Argument> arguments = {}) {
        const size_t before = sink.Count();
        const DWORD start = GetTickCount();
        EXPECT_EQ(Call(object.Get(), method, arguments).status, S_OK) << method;
        EXPECT_LT(GetTickCount() - start, kPromptMs) << method;
        ASSERT_TRUE(sink.WaitFor(before + 1, kTimeoutMs + kLateMs)) << method;
        const VARIANT& success = sink[before].arguments.at(0).Get();
        EXPECT_NE(success.vt == VT_I2 ? success.iVal : success.lVal, 0) << method;
    }

    RecordingSink sink; // outlives the object, which holds it
    ComPtr<IDispatch> object;
};

TEST(LockedRing, FreezesNobody) {
    const Apartment apartment;
    ScriptedServer openPort(std::vector<ScriptedServer::Script>(1));
    ScriptedServer smtpServer(
        {{"S:220 hi\r\n", "C:HELO *", "S:250 ok\r\n", "C:MAIL *", "S:250 ok\r\n", "C:RCPT *",
          "S:250 ok\r\n", "C:DATA", "S:354 go on\r\n", "TEXT", "S:250 taken\r\n", "C:QUIT",
          "S:221 bye\r\n"}});
    ScriptedServer popServer(
        {{"S:+OK hi\r\n", "C:USER me", "S:+OK\r\n", "C:PASS x", "S:+OK\r\n", "C:STAT",
          "S:+OK 2 99\r\n", "C:RETR 1", "S:+OK\r\nSubject: a\r\n\r\nb\r\n.\r\n", "C:DELE 1",
          "S:+OK\r\n", "C:QUIT", "S:+OK\r\n"}});
    const RingOwner owner;
    Reporter tester(__uuidof(::ConnectivityTester));
    Reporter smtp(__uuidof(::SmtpCtl));
    Reporter pop(__uuidof(::PopCtl));
    const auto mail = TestComponent::Get().Create(__uuidof(::EmailData));
    Write(mail.Get(), L"From", L"from@a.example");
    Write(mail.Get(), L"To", L"to@b.example");
    Write(smtp.object.Get(), L"SmtpServer", L"127.0.0.1");
    Write(smtp.object.Get(), L"EmailData", Variant::FromObject(AddReference(mail.Get())).Get());
    Write(smtp.object.Get(), L"Port", smtpServer.Port());
    Write(pop.object.Get(), L"PopServer", L"127.0.0.1");
    Write(pop.object.Get(), L"Login", L"me");
    Write(pop.object.Get(), L"Password", L"x");
    Write(pop.object.Get(), L"Port", popServer.Port());
    for (IDispatch* object : {smtp.object.Get(), pop.object.Get()}) {
        Write(object, L"Timeout", static_cast<int>(kTimeoutMs / 1000));
    }

    tester.Expect(L"DNSLookup", {L"localhost", 0});
    tester.Expect(L"TestTCPPort", {L"127.0.0.1", openPort.Port(), static_cast<int>(kTimeoutMs)});
    if (SystemCanPing()) {
        tester.Expect(L"Ping", {L"127.0.0.1", static_cast<int>(kTimeoutMs), 1});
    }
    smtp.Expect(L"SendMail");
    for (const wchar_t* method : {L"Connect", L"GetMailCount"}) {
        pop.Expect(method);
    }
    pop.Expect(L"RetrieveMessage", {1});
    pop.Expect(L"DeleteMessage", {1});
    pop.Expect(L"Disconnect");
    const DWORD start = GetTickCount();
    pop.object.Reset();
    EXPECT_LT(GetTickCount() - start, kPromptMs);
}

} // namespace
} // namespace tervane::test
