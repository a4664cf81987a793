// A password stays where it was given to, and goes with the next one.

#include "ZelBase/text/Base64.h"
#include "ZelBase/text/SecretText.h"
#include "support/Classes.h"
#include "support/ObjectTest.h"
#include "support/ScriptedServer.h"

#include <algorithm>
#include <cstring>

namespace tervane::test {
namespace {

// A password that stands nowhere in this program's memory but where it was given to.
class HiddenPassword {
public:
    // Made up, of letters; `length` of them.
    explicit HiddenPassword(std::size_t length) {
        for (std::size_t i = 0; i < length; ++i) {
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
    std::size_t Occurrences() const {
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

    static std::size_t Count(const std::string& masked) {
        std::size_t count = 0;
        MEMORY_BASIC_INFORMATION region = {};
        const char* place = nullptr;
        while (VirtualQuery(place, &region, sizeof region) == sizeof region) {
            const char* end = place + region.RegionSize;
            const auto next = [&](const char* from) {
                return static_cast<const char*>(
                    std::memchr(from, masked[0] ^ kMask, static_cast<std::size_t>(end - from)));
            };
            const auto same = [](char hidden, char plain) { return (plain ^ kMask) == hidden; };
            if (region.State == MEM_COMMIT && region.Protect == PAGE_READWRITE) {
                for (const char* at = next(place); at; at = next(at + 1)) {
                    count += static_cast<std::size_t>(end - at) >= masked.size() &&
                             std::equal(masked.begin(), masked.end(), at, same);
                }
            }
            place = end;
        }
        return count;
    }

    std::string masked_;
};

// Short texts live elsewhere than long ones.
TEST(MailPassword, IsNotLeftBehind) {
    const Apartment apartment;
    for (const std::size_t length : {12u, 40u}) {
        const HiddenPassword password(length);
        ScriptedServer popServer({{"S:+OK\r\n", "C:USER*", "S:+OK\r\n", "SKIP", "S:+OK\r\n"}});
        ScriptedServer smtpServer({{"S:220 hi\r\n", "C:EHLO*", "S:250 ok\r\n", "C:AUTH*",
                                    "S:334 u\r\n", "C:*", "S:334 p\r\n", "SKIP", "S:535 no\r\n"}});
        RecordingSink sink;
        const auto pop = New(L"PopCtl");
        const auto smtp = New(L"SmtpCtl");
        ExpectAnswers(pop.Get(), {{L"PopServer=", {L"127.0.0.1"}}});
        ExpectAnswers(smtp.Get(),
                      {{L"SmtpServer=", {L"127.0.0.1"}}, {L"EmailData=", {New(L"EmailData")}}});
        const auto run = [&](IDispatch* object, const ScriptedServer& server,
                             const wchar_t* method) {
            ExpectAnswers(object, {{L"Port=", {server.Port()}}, {L"Login=", {L"me"}}});
            Advise(object, &sink);
            const std::size_t before = sink.Count();
            Call(object, method);
            EXPECT_TRUE(sink.WaitFor(before + 1, kPatience));
        };
        EXPECT_EQ(0u, password.Occurrences()) << length;
        password.WriteTo(QueryFor<IPopCtl>(pop.Get()).Get());
        password.WriteTo(QueryFor<ISmtpCtl>(smtp.Get()).Get());
        EXPECT_EQ(2u, password.Occurrences()) << length; // the search finds it
        run(pop.Get(), popServer, L"Connect");
        EXPECT_EQ(L"1", Ask(pop.Get(), L"Connected"));
        run(smtp.Get(), smtpServer, L"SendMail");
        EXPECT_EQ(L"SMTP_AUTH_ERROR", Ask(smtp.Get(), L"StatusCode"));
        EXPECT_EQ(2u, password.Occurrences()) << length; // still connected
        ExpectAnswers(pop.Get(), {{L"Password=", {L"another"}}});
        ExpectAnswers(smtp.Get(), {{L"Password=", {L""}}});
        EXPECT_EQ(0u, password.Occurrences()) << length;
        sink.Forget();
    }
}

} // namespace
} // namespace tervane::test
