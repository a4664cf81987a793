// RASMgr and PhoneBookEntry on dial-up networking that the tests own: every outcome of dialling,
// and what becomes of the object and the connection then.

#include "objects/dialup/RASMgr.h"
#include "objects/dialup/DialSession.h"
#include "objects/dialup/PhoneBook.h"
#include "objects/dialup/RasDialUp.h"
#include "support/ObjectClasses.h"
#include "support/ObjectTest.h"
#include "support/ScratchRegistry.h"
#include "tests/objects/dialup/FakeRas.h"

namespace tervane {
namespace {

using test::FakeRas;
using test::kPatience;

const std::shared_ptr<const DialUp>& TheDialUp() {
    static const std::shared_ptr<const DialUp> dialUp =
        std::make_shared<RasDialUp<WideRas>>(FakeRas::Api<WideRas>());
    return dialUp;
}

ComPtr<IDispatch> MakeManager() {
    test::UseBuiltTypeLibrary();
    FakeRas::Get().Reset();
    auto* object = new RASMgr(*FindClass(__uuidof(::RASMgr)), nullptr, TheDialUp());
    const ComPtr<IUnknown> owner(object->Inner());
    return QueryFor<IDispatch>(owner.Get());
}

class RASMgrTest : public test::ObjectTest {
protected:
    RASMgrTest() : ObjectTest(MakeManager()) {
        Add(L"Provider", L"stored", L"secret");
        Add(L"Other", L"", std::nullopt);
    }
    ~RASMgrTest() override {
        object_.Reset();
        ras_.Reset();
    }

    static void Add(const wchar_t* name, const wchar_t* user,
                    std::optional<std::wstring_view> password) {
        PhoneBookDraft draft;
        draft.name = name;
        draft.credentials.userName = user;
        if (password) {
            draft.newPassword.emplace(*password);
        }
        PhoneBook(TheDialUp()).Save(draft);
    }
    // Dials, as the first one of its object; the events must be these, and no more.
    void Dial(const std::vector<std::wstring>& events) {
        Answers({{L"Connect", {L"Provider"}, L"1"}});
        for (const std::wstring& event : events) {
            EXPECT_EQ(event, Event());
            EXPECT_NE(GetCurrentThreadId(), sink_[seen_ - 1].thread);
        }
        EXPECT_EQ(seen_, sink_.Count());
    }

    FakeRas& ras_ = FakeRas::Get();
};

TEST_F(RASMgrTest, ConnectsAndHangsUp) {
    ras_.progress = {{RASCS_OpenPort, 0}, {RASCS_Authenticate, 0}, {RASCS_Connected, 0}};
    Dial({L"1(1, 0, 0)", L"1(1, 5, 0)", L"1(1, 8192, 0)", L"2(1, -1s, 0)"});
    EXPECT_EQ(L"stored", ras_.dialledUser);
    EXPECT_EQ(L"secret", ras_.dialledPassword);
    EXPECT_FALSE(ras_.hearsBroadcasts);
    EXPECT_EQ(0, ras_.hangUps);
    Answers({{L"GetConnectionState", {L"provider"}, L"8192"},
             {L"ActiveConnections", {}, L"[Provider]"},
             {L"AbortConnect", {1}, L"false"}, // it is connecting no more
             {L"HangUp", {L"provider"}, L"true"}});
    EXPECT_EQ(1, ras_.hangUps);
    EXPECT_TRUE(ras_.connections.empty()); // really gone when HangUp returned
    Answers({{L"GetConnectionState", {L"Provider"}, L"8193"},
             {L"HangUp", {L"Provider"}, L"false"},
             {L"LastErrorCode", {}, L"668"}, // no connection
             {L"Connect", {L"PROVIDER", L"jane", L"hers"}, L"2"}});
    ASSERT_TRUE(sink_.WaitFor(8, kPatience));
    EXPECT_EQ(L"jane", ras_.dialledUser);
    EXPECT_EQ(L"hers", ras_.dialledPassword);
    Answers({{L"ActiveConnections", {}, L"[PROVIDER]"}});
}

TEST_F(RASMgrTest, TellsWhatFailsAndLeavesNoConnectionBehind) {
    Answers({{L"Connect", {L"Nobody"}, L"0"}, {L"LastErrorCode", {}, L"623"}});
    const struct {
        DWORD refusal;
        std::vector<test::Progress> progress;
        std::vector<std::wstring> events;
    } rows[] = {{ERROR_DEVICE_NOT_READY, {}, {L"2(1, 0s, 666)"}},
                {0,
                 {{RASCS_OpenPort, 0}, {RASCS_Authenticate, ERROR_AUTHENTICATION_FAILURE}},
                 {L"1(1, 0, 0)", L"1(1, 5, 691)", L"2(1, 0s, 691)"}},
                {0, {{RASCS_Disconnected, 0}}, {L"1(1, 8193, 0)", L"2(1, 0s, 668)"}}};
    for (const auto& row : rows) {
        object_ = MakeManager();
        test::Advise(object_.Get(), &sink_);
        Add(L"Provider", L"", L"");
        ras_.dialError = row.refusal;
        ras_.progress = row.progress;
        Dial(row.events);
        EXPECT_EQ(1, ras_.hangUps);
        EXPECT_TRUE(ras_.connections.empty());
    }
}

TEST_F(RASMgrTest, NoticesWhenSomebodyElseHangsUp) {
    ras_.progress = {{RASCS_OpenPort, 0}};
    sink_.onEvent = [this](DISPID) {
        ras_.Drop(L"Provider");
        return S_OK;
    };
    Dial({L"1(1, 0, 0)", L"2(1, 0s, 668)"});
}

TEST_F(RASMgrTest, CanBeAbortedAtAnyTime) {
    // Nothing happens at all, and the system cannot even tell the end.
    ras_.canNotify = false;
    Dial({});
    Answers({{L"AbortConnect", {1}, L"true"}});
    EXPECT_EQ(L"2(1, 0s, 631)", Event());
    EXPECT_TRUE(ras_.connections.empty());
    for (const int id : {1, 0, -1}) {
        Answers({{L"AbortConnect", {id}, L"false"}, {L"LastErrorCode", {}, L"87"}});
    }
}

TEST_F(RASMgrTest, HangsUpWhatItIsStillDialling) {
    ras_.progress = {{RASCS_OpenPort, 0}};
    // On the worker's own thread, in the midst of an event.
    sink_.onEvent = [this](DISPID event) {
        if (event == 1) {
            Answers({{L"HangUp", {L"provider"}, L"true"}});
        }
        return S_OK;
    };
    Dial({L"1(1, 0, 0)", L"2(1, 0s, 631)"});
    EXPECT_TRUE(ras_.connections.empty());
}

TEST_F(RASMgrTest, GivesUpOnAConnectionThatDoesNotGo) {
    const auto stuck = reinterpret_cast<HRASCONN>(7);
    ras_.connections[stuck].entry = L"Stuck";
    ras_.pollsUntilGone = 1'000'000;
    EXPECT_EQ(DWORD{ERROR_TIMEOUT}, HangUpAndWait(*TheDialUp(), stuck, 200));
    ras_.pollsUntilGone = 3;
    Answers({{L"HangUp", {L"stuck"}, L"true"}});
    EXPECT_EQ(0u, HangUpAndWait(*TheDialUp(), stuck, 200)); // gone already
}

TEST_F(RASMgrTest, LivesUntilItHasToldTheEnd) {
    ras_.progress = {{RASCS_OpenPort, 0}, {RASCS_Connected, 0}};
    sink_.onEvent = [](DISPID) {
        Sleep(50);
        return S_OK;
    };
    Answers({{L"Connect", {L"Provider"}, L"1"}});
    object_.Reset();
    for (const wchar_t* event : {L"1(1, 0, 0)", L"1(1, 8192, 0)", L"2(1, -1s, 0)"}) {
        EXPECT_EQ(event, Event());
    }
    EXPECT_TRUE(test::PumpUntil([this] { return sink_.References() == 0; }, kPatience));
}

TEST_F(RASMgrTest, DialsSeveralEntriesAtOnce) {
    ras_.progress = {{RASCS_OpenPort, 0}, {RASCS_Connected, 0}};
    for (int id = 1; id <= 20; ++id) {
        Answers({{L"Connect", {id % 2 ? L"Provider" : L"Other"}, std::to_wstring(id)}});
    }
    ASSERT_TRUE(sink_.WaitFor(60, kPatience));
    std::map<long, std::vector<DISPID>> events;
    for (std::size_t i = 0; i < 60; ++i) {
        events[sink_[i].arguments[0].Get().lVal].push_back(sink_[i].id);
    }
    for (long id = 1; id <= 20; ++id) {
        EXPECT_EQ((std::vector<DISPID>{1, 1, 2}), events[id]);
    }
    Answers({{L"HangUp", {L"Provider"}, L"true"}});
    EXPECT_EQ(10, ras_.hangUps);
    EXPECT_EQ(10u, ras_.connections.size());
}

TEST_F(RASMgrTest, ManagesEntriesAndDevices) {
    Answers({{L"FindEntries", {L"P.*"}, L"[Provider]"},
             {L"FindEntries", {L"Prov"}, L"[]"}, // a part does not match
             {L"FindDevices", {L".*(Modem|cable).*"}, L"[Parallel cable, Modem 56K]"},
             {L"LastErrorCode", {}, L"0"},
             {L"FindDevices", {L"("}, L"[]"},
             {L"LastErrorCode", {}, L"87"},
             {L"GetDeviceType", {L"modem 56k"}, L"modem"},
             {L"GetDeviceType", {L"None"}, L""},
             {L"LastErrorCode", {}, L"608"}, // no such device
             {L"RenameEntry", {L"other", L"Renamed"}, L"true"},
             {L"RenameEntry", {L"Renamed", L"PROVIDER"}, L"false"},
             {L"LastErrorCode", {}, L"183"}, // already exists
             {L"DeleteEntry", {L"Renamed"}, L"true"},
             {L"DoesEntryExist", {L"Renamed"}, L"false"},
             {L"Entries", {}, L"[Provider]"}});
}

TEST_F(RASMgrTest, KeepsTheDefaultConnection) {
    const test::ScratchHive user(RegistryHive::kCurrentUser);
    Answers({{L"DefaultConnection", {}, L""},
             {L"DefaultConnection=", {L"Provider"}},
             {L"DefaultConnection", {}, L"Provider"},
             {L"DefaultConnection=", {L"Nobody"}},
             {L"LastErrorCode", {}, L"623"},
             {L"DefaultConnection", {}, L"Provider"},
             {L"DefaultConnection=", {L""}},
             {L"DefaultConnection", {}, L""}});
    ras_.listError = ERROR_MOD_NOT_FOUND;
    Answers({{L"DefaultConnection", {}, L""}, {L"LastErrorCode", {}, L"126"}});
}

TEST_F(RASMgrTest, HandsOutEntriesThatLoadChangeAndSave) {
    Answers({{L"GetEntry", {L"Nobody"}, L"nothing"}, {L"LastErrorCode", {}, L"623"}});
    const test::CallResult found = test::Call(object_.Get(), L"GetEntry", {L"Provider"});
    ASSERT_EQ(VT_DISPATCH, found.value.Type());
    IDispatch* const entry = found.value.Get().pdispVal;
    test::ExpectAnswers(entry, {{L"HasPassword", {}, L"true"},
                                {L"PhoneNumber=", {L"5550100"}},
                                {L"IpAddress=", {L"10.1.2.3"}},
                                {L"UseAreaAndCountryCodes=", {true}},
                                {L"LastErrorCode", {}, L"0"}});
    // What cannot be kept changes nothing.
    const std::pair<const wchar_t*, test::Argument> refused[] = {{L"IpAddress=", L"10.1.2"},
                                                                 {L"AreaCode=", L"12345678901"},
                                                                 {L"CountryCode=", -1},
                                                                 {L"Domain=", L"a\nb"}};
    for (const auto& [property, value] : refused) {
        test::ExpectAnswers(entry, {{property, {value}}, {L"LastErrorCode", {}, L"87"}});
    }
    test::ExpectAnswers(entry, {{L"Password=", {L""}}, {L"Save", {}, L"true"}});
    EXPECT_EQ(std::nullopt, ras_.Find(L"Provider")->password);
    test::ExpectAnswers(entry, {{L"Name=", {L"Copy"}}, {L"Save", {}, L"true"}});
    EXPECT_EQ(3u, ras_.entries.size());
    test::ExpectAnswers(entry, {{L"Load", {L"Nobody"}, L"false"},
                                {L"IpAddress", {}, L"10.1.2.3"},
                                {L"PhoneNumber", {}, L"5550100"},
                                {L"LastError", {}, L"dial-up error 623"}});
}

} // namespace
} // namespace tervane
