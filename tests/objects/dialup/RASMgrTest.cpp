// RASMgr and PhoneBookEntry on dial-up networking that the tests own: every outcome of dialling,
// and what becomes of the object and the connection then.

#include "objects/dialup/RASMgr.h"
#include "objects/dialup/DialSession.h"
#include "objects/dialup/PhoneBookEntry.h"
#include "objects/dialup/RasDialUp.h"
#include "support/ObjectClasses.h"
#include "support/ScratchRegistry.h"
#include "support/TestComponent.h"
#include "tests/objects/dialup/FakeRas.h"

#include <gtest/gtest.h>

#include <functional>

namespace tervane {
namespace {

using test::FakeRas;
using test::ReceivedEvent;
using test::RecordingSink;

constexpr DISPID kStateChange = 1;
constexpr DISPID kComplete = 2;

// A sink that does something when an event arrives, on the worker's thread.
class ActingSink final : public RecordingSink {
public:
    std::function<void(DISPID)> action;

private:
    HRESULT OnEvent(DISPID event) override {
        if (action) {
            action(event);
        }
        return S_OK;
    }
};

class RASMgrTest : public testing::Test {
protected:
    RASMgrTest() {
        ras_.Reset();
        Add(L"Provider", L"stored", L"secret");
        Add(L"Other", L"", std::nullopt);
        auto* object = new RASMgr(*FindClass(__uuidof(::RASMgr)), nullptr, dialUp_);
        const ComPtr<IUnknown> owner(object->Inner());
        manager_ = QueryFor<IRASMgr>(owner.Get());
        test::Advise(manager_.Get(), &sink_);
    }
    ~RASMgrTest() override {
        manager_.Reset();
        ras_.Reset();
    }

    void Add(const wchar_t* name, const wchar_t* user, std::optional<std::wstring_view> password) {
        PhoneBookDraft draft;
        draft.name = name;
        draft.credentials.userName = user;
        if (password) {
            draft.newPassword.emplace(*password);
        }
        PhoneBook(dialUp_).Save(draft);
    }
    long Connect(const wchar_t* entry, const wchar_t* user = L"", const wchar_t* password = L"") {
        long id = -1;
        EXPECT_EQ(S_OK, manager_->Connect(MakeBstr(entry).Get(), MakeBstr(user).Get(),
                                          MakeBstr(password).Get(), &id));
        return id;
    }
    long Code() {
        long code = -1;
        manager_->get_LastErrorCode(&code);
        return code;
    }
    bool HangUp(const wchar_t* entry) {
        VARIANT_BOOL done = VARIANT_FALSE;
        manager_->HangUp(MakeBstr(entry).Get(), &done);
        return done == VARIANT_TRUE;
    }
    bool Abort(long id) {
        VARIANT_BOOL done = VARIANT_FALSE;
        manager_->AbortConnect(id, &done);
        return done == VARIANT_TRUE;
    }
    long State(const wchar_t* entry) {
        long state = -1;
        manager_->GetConnectionState(MakeBstr(entry).Get(), &state);
        return state;
    }
    std::vector<std::wstring> Texts(HRESULT (STDMETHODCALLTYPE IRASMgr::*property)(VARIANT*)) {
        test::CallResult result;
        result.status = (manager_.Get()->*property)(result.value.Put());
        return result.Texts();
    }
    // Waits for `states` state changes and the completion, and checks what that tells.
    void ExpectComplete(size_t states, long id, bool success, DWORD error) {
        ASSERT_TRUE(sink_.WaitFor(states + 1, 10'000));
        for (size_t i = 0; i < states; ++i) {
            EXPECT_EQ(kStateChange, sink_[i].id);
            EXPECT_EQ(id, sink_[i].arguments.at(0).Get().lVal);
        }
        ReceivedEvent& event = sink_[states];
        EXPECT_EQ(kComplete, event.id);
        ASSERT_EQ(3u, event.arguments.size());
        EXPECT_EQ(id, event.arguments[0].Get().lVal);
        EXPECT_EQ(VT_I2, event.arguments[1].Type());
        EXPECT_EQ(success ? -1 : 0, event.arguments[1].Get().iVal);
        EXPECT_EQ(static_cast<long>(error), event.arguments[2].Get().lVal);
        EXPECT_NE(GetCurrentThreadId(), event.thread);
    }

    FakeRas& ras_ = FakeRas::Get();
    const std::shared_ptr<const DialUp> dialUp_ =
        std::make_shared<RasDialUp<WideRas>>(FakeRas::Api<WideRas>());
    ActingSink sink_;
    ComPtr<IRASMgr> manager_;
};

TEST_F(RASMgrTest, TellsEachStateAndThenSuccess) {
    ras_.progress = {{RASCS_OpenPort, 0}, {RASCS_Authenticate, 0}, {RASCS_Connected, 0}};
    const long id = Connect(L"PROVIDER");
    EXPECT_GT(id, 0);
    ExpectComplete(3, id, true, 0);
    EXPECT_EQ(long{RASCS_Authenticate}, sink_[1].arguments[1].Get().lVal);
    EXPECT_EQ(L"stored", ras_.dialledUser);
    EXPECT_EQ(L"secret", ras_.dialledPassword);
    EXPECT_FALSE(ras_.hearsBroadcasts);
    EXPECT_EQ(0, ras_.hangUps);
    EXPECT_EQ(long{RASCS_Connected}, State(L"provider"));
    EXPECT_EQ(std::vector<std::wstring>{L"PROVIDER"}, Texts(&IRASMgr::get_ActiveConnections));
    EXPECT_FALSE(Abort(id)); // it is connecting no more

    EXPECT_TRUE(HangUp(L"provider"));
    EXPECT_EQ(1, ras_.hangUps);
    EXPECT_TRUE(ras_.connections.empty()); // really gone when HangUp returned
    EXPECT_EQ(long{RASCS_Disconnected}, State(L"Provider"));
    EXPECT_FALSE(HangUp(L"Provider"));
    EXPECT_EQ(ERROR_NO_CONNECTION, Code());
    EXPECT_NE(id, Connect(L"Provider", L"jane", L"hers"));
    ASSERT_TRUE(sink_.WaitFor(8, 10'000));
    EXPECT_EQ(L"jane", ras_.dialledUser);
    EXPECT_EQ(L"hers", ras_.dialledPassword);
}

TEST_F(RASMgrTest, TellsFailuresAndLeavesNoConnectionBehind) {
    EXPECT_EQ(0, Connect(L"Nobody"));
    EXPECT_EQ(ERROR_CANNOT_FIND_PHONEBOOK_ENTRY, Code());
    // Refused by the system although it could be dialled.
    ras_.dialError = ERROR_DEVICE_NOT_READY;
    long id = Connect(L"Provider");
    ExpectComplete(0, id, false, ERROR_DEVICE_NOT_READY);
    EXPECT_EQ(1, ras_.hangUps);
    EXPECT_TRUE(ras_.connections.empty());
}

TEST_F(RASMgrTest, TellsAnErrorOnTheWay) {
    ras_.progress = {{RASCS_OpenPort, 0}, {RASCS_Authenticate, ERROR_AUTHENTICATION_FAILURE}};
    const long id = Connect(L"Provider");
    ExpectComplete(2, id, false, ERROR_AUTHENTICATION_FAILURE);
    EXPECT_EQ(1, ras_.hangUps);
    EXPECT_TRUE(ras_.connections.empty());
}

TEST_F(RASMgrTest, TellsADisconnectionWithoutAnError) {
    ras_.progress = {{RASCS_Disconnected, 0}};
    const long id = Connect(L"Provider");
    ExpectComplete(1, id, false, ERROR_NO_CONNECTION);
}

TEST_F(RASMgrTest, NoticesWhenSomebodyElseHangsUp) {
    ras_.progress = {{RASCS_OpenPort, 0}};
    sink_.action = [this](DISPID event) {
        if (event == kStateChange) {
            ras_.Drop(L"Provider");
        }
    };
    const long id = Connect(L"Provider");
    ExpectComplete(1, id, false, ERROR_NO_CONNECTION);
}

TEST_F(RASMgrTest, CanBeAbortedAtAnyTime) {
    // Nothing happens at all, and the system cannot even tell the end.
    ras_.canNotify = false;
    long id = Connect(L"Provider");
    EXPECT_TRUE(Abort(id));
    ExpectComplete(0, id, false, ERROR_USER_DISCONNECTION);
    EXPECT_TRUE(ras_.connections.empty());
    EXPECT_FALSE(Abort(id));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, Code());
    EXPECT_FALSE(Abort(0));
    EXPECT_FALSE(Abort(-1));
}

TEST_F(RASMgrTest, HangsUpWhatItIsStillDialling) {
    ras_.progress = {{RASCS_OpenPort, 0}};
    // On the worker's own thread, in the midst of an event.
    bool done = false;
    sink_.action = [&](DISPID event) {
        done = done || (event == kStateChange && HangUp(L"provider"));
    };
    const long id = Connect(L"Provider");
    ExpectComplete(1, id, false, ERROR_USER_DISCONNECTION);
    EXPECT_TRUE(done);
    EXPECT_TRUE(ras_.connections.empty());
}

TEST_F(RASMgrTest, GivesUpOnAConnectionThatDoesNotGo) {
    const auto stuck = reinterpret_cast<HRASCONN>(7);
    ras_.connections[stuck].entry = L"Stuck";
    ras_.pollsUntilGone = 1'000'000;
    EXPECT_EQ(DWORD{ERROR_TIMEOUT}, HangUpAndWait(*dialUp_, stuck, 200));
    ras_.pollsUntilGone = 3;
    EXPECT_TRUE(HangUp(L"stuck"));
    EXPECT_EQ(0u, HangUpAndWait(*dialUp_, stuck, 200)); // gone already
}

TEST_F(RASMgrTest, LivesUntilItHasToldTheEnd) {
    ras_.progress = {{RASCS_OpenPort, 0}, {RASCS_Connected, 0}};
    sink_.action = [](DISPID) { Sleep(50); };
    const long first = Connect(L"Provider");
    manager_.Reset();
    ExpectComplete(2, first, true, 0);
    EXPECT_TRUE(test::PumpUntil([this] { return sink_.References() == 0; }, 10'000));
}

TEST_F(RASMgrTest, DialsSeveralEntriesAtOnce) {
    ras_.progress = {{RASCS_OpenPort, 0}, {RASCS_Connected, 0}};
    std::vector<long> ids;
    for (int i = 0; i < 20; ++i) {
        ids.push_back(Connect(i % 2 ? L"Provider" : L"Other"));
    }
    ASSERT_TRUE(sink_.WaitFor(60, 20'000));
    std::map<long, std::vector<DISPID>> events;
    for (size_t i = 0; i < 60; ++i) {
        events[sink_[i].arguments[0].Get().lVal].push_back(sink_[i].id);
    }
    for (const long id : ids) {
        EXPECT_EQ((std::vector<DISPID>{kStateChange, kStateChange, kComplete}), events[id]);
    }
    EXPECT_TRUE(HangUp(L"Provider"));
    EXPECT_EQ(10, ras_.hangUps);
    EXPECT_EQ(10u, ras_.connections.size());
}

TEST_F(RASMgrTest, ManagesEntriesAndDevices) {
    VARIANT_BOOL done = VARIANT_FALSE;
    test::CallResult found;
    manager_->FindEntries(MakeBstr(L"P.*").Get(), found.value.Put());
    EXPECT_EQ(std::vector<std::wstring>{L"Provider"}, found.Texts());
    manager_->FindEntries(MakeBstr(L"Prov").Get(), found.value.Put());
    EXPECT_TRUE(found.Texts().empty()); // a part does not match
    manager_->FindDevices(MakeBstr(L".*(Modem|cable).*").Get(), found.value.Put());
    EXPECT_EQ((std::vector<std::wstring>{L"Parallel cable", L"Modem 56K"}), found.Texts());
    EXPECT_EQ(0, Code());
    manager_->FindDevices(MakeBstr(L"(").Get(), found.value.Put());
    EXPECT_TRUE(found.Texts().empty());
    EXPECT_EQ(ERROR_INVALID_PARAMETER, Code());
    UniqueBstr type;
    manager_->GetDeviceType(MakeBstr(L"modem 56k").Get(), type.Put());
    EXPECT_EQ(L"modem", TextOf(type.Get()));
    manager_->GetDeviceType(MakeBstr(L"None").Get(), type.Put());
    EXPECT_EQ(L"", TextOf(type.Get()));
    EXPECT_EQ(ERROR_DEVICE_DOES_NOT_EXIST, Code());

    manager_->RenameEntry(MakeBstr(L"other").Get(), MakeBstr(L"Renamed").Get(), &done);
    EXPECT_EQ(VARIANT_TRUE, done);
    manager_->RenameEntry(MakeBstr(L"Renamed").Get(), MakeBstr(L"PROVIDER").Get(), &done);
    EXPECT_EQ(VARIANT_FALSE, done);
    EXPECT_EQ(ERROR_ALREADY_EXISTS, Code());
    manager_->DeleteEntry(MakeBstr(L"Renamed").Get(), &done);
    EXPECT_EQ(VARIANT_TRUE, done);
    manager_->DoesEntryExist(MakeBstr(L"Renamed").Get(), &done);
    EXPECT_EQ(VARIANT_FALSE, done);
    EXPECT_EQ(std::vector<std::wstring>{L"Provider"}, Texts(&IRASMgr::get_Entries));
}

TEST_F(RASMgrTest, KeepsTheDefaultConnection) {
    const test::ScratchHive user(RegistryHive::kCurrentUser);
    const auto get = [this] {
        UniqueBstr name;
        manager_->get_DefaultConnection(name.Put());
        return std::wstring(TextOf(name.Get()));
    };
    EXPECT_EQ(L"", get());
    EXPECT_EQ(S_OK, manager_->put_DefaultConnection(MakeBstr(L"Provider").Get()));
    EXPECT_EQ(L"Provider", get());
    EXPECT_EQ(S_OK, manager_->put_DefaultConnection(MakeBstr(L"Nobody").Get()));
    EXPECT_EQ(ERROR_CANNOT_FIND_PHONEBOOK_ENTRY, Code());
    EXPECT_EQ(L"Provider", get());
    EXPECT_EQ(S_OK, manager_->put_DefaultConnection(nullptr));
    EXPECT_EQ(L"", get());
    ras_.listError = ERROR_MOD_NOT_FOUND;
    EXPECT_EQ(L"", get());
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, Code());
}

TEST_F(RASMgrTest, HandsOutEntriesThatLoadChangeAndSave) {
    ComPtr<IDispatch> object;
    EXPECT_EQ(S_OK, manager_->GetEntry(MakeBstr(L"Nobody").Get(), object.Put()));
    EXPECT_FALSE(object);
    EXPECT_EQ(ERROR_CANNOT_FIND_PHONEBOOK_ENTRY, Code());
    EXPECT_EQ(S_OK, manager_->GetEntry(MakeBstr(L"Provider").Get(), object.Put()));
    const auto entry = QueryFor<IPhoneBookEntry>(object.Get());
    ASSERT_TRUE(entry);
    const auto code = [&] {
        long number = -1;
        entry->get_LastErrorCode(&number);
        return number;
    };
    VARIANT_BOOL flag = VARIANT_FALSE;
    entry->get_HasPassword(&flag);
    EXPECT_EQ(VARIANT_TRUE, flag);
    entry->put_PhoneNumber(MakeBstr(L"5550100").Get());
    entry->put_IpAddress(MakeBstr(L"10.1.2.3").Get());
    entry->put_UseAreaAndCountryCodes(VARIANT_TRUE);
    EXPECT_EQ(0, code());
    // What cannot be kept changes nothing.
    entry->put_IpAddress(MakeBstr(L"10.1.2").Get());
    EXPECT_EQ(ERROR_INVALID_PARAMETER, code());
    entry->put_AreaCode(MakeBstr(L"12345678901").Get());
    EXPECT_EQ(ERROR_INVALID_PARAMETER, code());
    entry->put_CountryCode(-1);
    EXPECT_EQ(ERROR_INVALID_PARAMETER, code());
    entry->put_Domain(MakeBstr(L"a\nb").Get());
    EXPECT_EQ(ERROR_INVALID_PARAMETER, code());
    entry->put_Password(nullptr);
    EXPECT_EQ(VARIANT_TRUE, (entry->Save(&flag), flag));
    EXPECT_EQ(std::nullopt, ras_.Find(L"Provider")->password);
    entry->put_Name(MakeBstr(L"Copy").Get());
    EXPECT_EQ(VARIANT_TRUE, (entry->Save(&flag), flag));
    EXPECT_EQ(3u, ras_.entries.size());

    EXPECT_EQ(VARIANT_FALSE, (entry->Load(MakeBstr(L"Nobody").Get(), &flag), flag));
    UniqueBstr text;
    entry->get_IpAddress(text.Put());
    EXPECT_EQ(L"10.1.2.3", TextOf(text.Get()));
    entry->get_LastError(text.Put());
    EXPECT_EQ(L"dial-up error 623", TextOf(text.Get()));
}

} // namespace
} // namespace tervane
