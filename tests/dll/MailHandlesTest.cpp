// Whatever becomes of a mail, its object leaves neither handles nor threads nor passwords behind.

#include "ZelBase/text/Base64.h"
#include "ZelBase/text/SecretText.h"
#include "ZelBase/threads/ModulePin.h"
#include "support/HandleCount.h"
#include "support/ScriptedServer.h"
#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <algorithm>
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

// The object's thread ends when the completion has been posted and before it looks for messages, or
// with the mailbox open after it did.
TEST_F(MailHandlesTest, GivesEverythingBackWhenItsThreadEndsWithoutPumping) {
    const Script login = {"S:+OK\r\n", "C:USER*", "S:+OK\r\n", "C:PASS*", "S:+OK\r\n"};
    const Script refusal = {"S:550 no\r\n"};
    auto mail = TestComponent::Get().Create(__uuidof(::EmailData));
    for (int i = 0; i < 10; ++i) {
        ScriptedServer pop({login}), smtp({refusal});
        ComPtr<IDispatch> reader; // nobody releases it in time
        const auto thread = ZelBase::ModulePin::StartThread([&] {
            reader = TestComponent::Get().Create(__uuidof(::PopCtl));
            Write(reader.Get(), L"PopServer", L"127.0.0.1");
            Write(reader.Get(), L"Port", pop.Port());
            Write(reader.Get(), L"Login", L"me");
            Write(reader.Get(), L"Password", L"secret");
            EXPECT_EQ(Call(reader.Get(), L"Connect").Number(), VARIANT_TRUE);
            const auto sender = TestComponent::Get().Create(__uuidof(::SmtpCtl));
            Write(sender.Get(), L"SmtpServer", L"127.0.0.1");
            Write(sender.Get(), L"Port", smtp.Port());
            Write(sender.Get(), L"EmailData", Variant::FromObject(AddReference(mail.Get())).Get());
            EXPECT_EQ(Call(sender.Get(), L"SendMail").Number(), 1);
            while (Read(reader.Get(), L"Connected").Number() == 0 ||
                   Read(sender.Get(), L"WorkInProgress").Number() != 0) {
                Sleep(10);
            }
            Sleep(20 * static_cast<DWORD>(i)); // the posts come in between
            PumpUntil([&] { return i % 2 == 0; }, 200);
        });
        EXPECT_EQ(WaitForSingleObject(thread.Get(), kPatience), WAIT_OBJECT_0);
        EXPECT_EQ(pop.Problems() + smtp.Problems(), ""); // ends when the connections are closed
    }
    mail.Reset();
    EXPECT_TRUE(PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
}

// A password that stands nowhere in this program's memory but where it was given to.
class HiddenPassword {
public:
    // Made up, of letters; `length` of them.
    explicit HiddenPassword(size_t length) {
        for (size_t i = 0; i < length; ++i) {
            masked_ += static_cast<char>(('a' + (i * 7 + length) % 26) ^ kMask);
        }
    }
    ZelBase::SecretText Text() const {
        ZelBase::SecretText text;
        for (const char character : masked_) {
            const char plain = static_cast<char>(character ^ kMask);
            text.Append({&plain, 1});
        }
        return text;
    }
    // Gives it to an object's property.
    template <typename Interface>
    void WriteTo(Interface* object) const {
        const ZelBase::SecretText text = Text();
        const UniqueBstr wide(SysAllocStringLen(nullptr, static_cast<UINT>(masked_.size())));
        std::copy(text.Text().begin(), text.Text().end(), wide.Get());
        EXPECT_EQ(object->put_Password(wide.Get()), S_OK);
        ZelBase::WipeMemory(wide.Get(), masked_.size() * sizeof(wchar_t));
    }
    // How often it stands in the process's memory as UTF-16, as bytes or in base64.
    size_t Occurrences() const {
        std::string narrow, wide, base64;
        for (const char character : masked_) {
            narrow += character;
            wide.append({character, kMask});
        }
        {
            const ZelBase::SecretText text = Text();
            base64 = ZelBase::Base64Encode(text.Text());
            std::transform(base64.begin(), base64.end(), base64.begin(),
                           [](char character) { return character ^ kMask; });
        }
        return Count(narrow) + Count(wide) + Count(base64);
    }

private:
    static constexpr char kMask = 0x55;

    static size_t Count(const std::string& masked) {
        size_t count = 0;
        MEMORY_BASIC_INFORMATION region = {};
        const char* place = nullptr;
        while (VirtualQuery(place, &region, sizeof region) == sizeof region) {
            const char* end = place + region.RegionSize;
            if (region.State == MEM_COMMIT && region.Protect == PAGE_READWRITE) {
                const auto same = [](char plain, char hidden) { return (plain ^ kMask) == hidden; };
                while ((place = std::search(place, end, masked.begin(), masked.end(), same)) !=
                       end) {
                    ++count;
                    ++place;
                }
            }
            place = end;
        }
        return count;
    }

    std::string masked_;
};

// Short texts live elsewhere than long ones.
TEST_F(MailHandlesTest, LeavesNoPasswordBehind) {
    for (const size_t length : {12u, 40u}) {
        const HiddenPassword password(length);
        ScriptedServer server({{"S:+OK\r\n", "C:USER*", "S:+OK\r\n", "SKIP", "S:+OK\r\n"},
                               {"S:220 hi\r\n", "C:EHLO*", "S:250 ok\r\n", "C:AUTH*", "S:334 u\r\n",
                                "C:*", "S:334 p\r\n", "SKIP", "S:535 no\r\n"}});
        RecordingSink sink;
        const auto pop = TestComponent::Get().Create(__uuidof(::PopCtl));
        const auto smtp = TestComponent::Get().Create(__uuidof(::SmtpCtl));
        const auto mail = TestComponent::Get().Create(__uuidof(::EmailData));
        Write(pop.Get(), L"PopServer", L"127.0.0.1");
        Write(smtp.Get(), L"SmtpServer", L"127.0.0.1");
        Write(smtp.Get(), L"EmailData", Variant::FromObject(AddReference(mail.Get())).Get());
        const auto run = [&](IDispatch* object, const wchar_t* method) {
            Write(object, L"Port", server.Port());
            Write(object, L"Login", L"me");
            Advise(object, &sink);
            const size_t before = sink.Count();
            Call(object, method);
            EXPECT_TRUE(sink.WaitFor(before + 1, kPatience));
        };
        EXPECT_EQ(password.Occurrences(), 0u) << length;
        password.WriteTo(QueryFor<IPopCtl>(pop.Get()).Get());
        password.WriteTo(QueryFor<ISmtpCtl>(smtp.Get()).Get());
        EXPECT_EQ(password.Occurrences(), 2u) << length; // the search finds it
        run(pop.Get(), L"Connect");
        EXPECT_NE(Read(pop.Get(), L"Connected").Number(), 0);
        run(smtp.Get(), L"SendMail");
        EXPECT_EQ(Read(smtp.Get(), L"StatusCode").Text(), L"SMTP_AUTH_ERROR");
        EXPECT_EQ(password.Occurrences(), 2u) << length; // still connected
        Write(pop.Get(), L"Password", L"another");
        Write(smtp.Get(), L"Password", L"");
        EXPECT_EQ(password.Occurrences(), 0u) << length;
        for (size_t event = 0; event < sink.Count(); ++event) {
            sink[event].arguments.clear();
        }
    }
}

} // namespace
} // namespace tervane::test
