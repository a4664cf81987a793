// Whatever becomes of a mail, its object leaves neither handles nor threads behind.

#include "support/HandleCount.h"
#include "support/ScriptedServer.h"
#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <functional>

namespace tervane::test {
namespace {

constexpr DWORD kPatience = 30000;
constexpr int kObjects = 200;

using Script = ScriptedServer::Script;

// What an object goes through: how its server talks, and what is done while it does.
struct Life {
    Script script;
    std::function<void(ComPtr<IDispatch>& object, RecordingSink& sink)> course;
};

void WaitForEnd(ComPtr<IDispatch>&, RecordingSink& sink) {
    EXPECT_TRUE(sink.WaitFor(1, kPatience));
}

void AbortAndWait(ComPtr<IDispatch>& object, RecordingSink& sink, const wchar_t* method) {
    Call(object.Get(), method);
    WaitForEnd(object, sink);
}

void DropAndWait(ComPtr<IDispatch>& object, RecordingSink& sink) {
    object.Reset();
    WaitForEnd(object, sink);
}

class MailHandlesTest : public testing::Test {
protected:
    // Lives all lives in turn, with as many objects.
    void Live(const CLSID& classId, const std::vector<Life>& lives, int objects,
              const std::function<void(IDispatch*, int port)>& start) {
        std::vector<Script> scripts;
        for (int i = 0; i < objects; ++i) {
            scripts.push_back(lives[i % lives.size()].script);
        }
        ScriptedServer server(scripts);
        for (int i = 0; i < objects; ++i) {
            ComPtr<IDispatch> object = TestComponent::Get().Create(classId);
            RecordingSink sink;
            Advise(object.Get(), &sink);
            start(object.Get(), server.Port());
            lives[i % lives.size()].course(object, sink);
            for (size_t event = 0; event < sink.Count(); ++event) {
                sink[event].arguments.clear(); // they keep the object
            }
            object.Reset();
            ASSERT_TRUE(PumpUntil([&] { return sink.References() == 0; }, kPatience)) << i;
        }
        EXPECT_TRUE(
            PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
    }
    void ExpectNothingLeft(const CLSID& classId, const std::vector<Life>& lives,
                           const std::function<void(IDispatch*, int port)>& start) {
        Live(classId, lives, static_cast<int>(lives.size()), start); // opens what stays open
        const size_t before = OpenHandleCount();
        ASSERT_NE(before, 0u);
        Live(classId, lives, kObjects, start);
        EXPECT_LE(OpenHandleCount(), before + 3);
    }

    Apartment apartment;
};

TEST_F(MailHandlesTest, SmtpCtlLeavesNone) {
    const std::vector<Life> lives = {
        {{"S:220 hi\r\n", "C:HELO*", "S:250 ok\r\n", "C:MAIL*", "S:550 no\r\n", "C:QUIT",
          "S:221 bye\r\n"},
         WaitForEnd},
        {{"RESET"}, WaitForEnd},
        {{"S:220 hi\r\n", "SILENCE"},
         [](auto& object, auto& sink) { AbortAndWait(object, sink, L"Abort"); }},
        {{"S:220 hi\r\n", "C:HELO*", "CLOSE"}, DropAndWait}};
    ExpectNothingLeft(__uuidof(::SmtpCtl), lives, [](IDispatch* smtp, int port) {
        const auto mail = TestComponent::Get().Create(__uuidof(::EmailData));
        Write(smtp, L"SmtpServer", L"127.0.0.1");
        Write(smtp, L"Port", port);
        Write(smtp, L"EmailData", Variant::FromObject(AddReference(mail.Get())).Get());
        EXPECT_EQ(Call(smtp, L"SendMail").Number(), 1);
    });
}

TEST_F(MailHandlesTest, PopCtlLeavesNone) {
    const Script login = {"S:+OK\r\n", "C:USER*", "S:+OK\r\n", "C:PASS*", "S:+OK\r\n"};
    Script closed = login;
    closed.push_back("CLOSE");
    const std::vector<Life> lives = {
        {login, WaitForEnd}, // and is dropped while connected
        {closed, WaitForEnd},
        {{"S:-ERR no\r\n"}, WaitForEnd},
        {{"SILENCE"},
         [](auto& object, auto& sink) { AbortAndWait(object, sink, L"AbortCurrentAction"); }},
        {{"S:+OK\r\n", "C:USER*", "RESET"}, DropAndWait}};
    ExpectNothingLeft(__uuidof(::PopCtl), lives, [](IDispatch* pop, int port) {
        Write(pop, L"PopServer", L"127.0.0.1");
        Write(pop, L"Port", port);
        Write(pop, L"Login", L"me");
        Write(pop, L"Password", L"secret");
        EXPECT_EQ(Call(pop, L"Connect").Number(), VARIANT_TRUE);
    });
}

} // namespace
} // namespace tervane::test
