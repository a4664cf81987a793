// Memory that runs out: one operation of every class, the look-up client and the log, each with its
// first, second, third... allocation failing. Each attempt ends in success or in a failure that the
// interface documents, with the event that it promised, and leaves nothing behind.
//
// Environment: TERVANE_ALLOCATIONS is the last allocation that fails, 50 when it is not set.

#include "ZelBase/log/Logger.h"
#include "ZelBase/threads/Thread.h"
#include "ZelNet/SourceCode/sockets/InitializeSockets.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "memory/FailingAllocator.h"
#include "support/AdapterRegistry.h"
#include "support/Classes.h"
#include "support/LoopbackServer.h"
#include "support/ObjectClasses.h"
#include "support/ObjectTest.h"
#include "support/ProcessUsage.h"
#include "support/TestWindows.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace tervane::test {
namespace {

using Texts = std::vector<std::wstring>;

constexpr char kThisHost[] = "127.0.0.1";
constexpr std::size_t kLongestAnswer = 200;
constexpr wchar_t kLost[] = L" event lost";
constexpr wchar_t kCard[] = L"{1}";

// One call of a member, and what may come of it beside its usual answer and E_OUTOFMEMORY.
struct Operation {
    const wchar_t* type;
    std::wstring member; // with "=" behind it: putting the property
    std::vector<Argument> arguments = {};
    // Answers as `Attempt::Answer` words them; an "*" at the end stands for any rest.
    Texts failures = {};
    // Read afterwards, for the answer: LastError and the like.
    const wchar_t* status = nullptr;
    // Whether an event follows when the call says that it has begun: with S_OK, and a result, if
    // there is one, that is not 0.
    bool reports = false;
    std::function<void(IDispatch*)> prepare = {};
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << testing::PrintToString(operation.member);
}

// Counts events without allocating.
class CountingSink final : public RecordingSink {
public:
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        for (UINT i = parameters->cArgs; i > 0; --i) {
            const VARIANT& argument = parameters->rgvarg[i - 1];
            numbers = numbers * 100 + (argument.vt == VT_I2   ? argument.iVal != 0
                                       : argument.vt == VT_I4 ? argument.lVal
                                                              : 0);
        }
        ++events;
        return S_OK;
    }
    std::atomic<int> events = 0;
    std::atomic<LONG> numbers = 0;
};

// The machine that the operations work on: one card, one identity, and servers.
class World {
public:
    World() {
        AddNtCard(hives_, {kCard, L"0000", L"3Com EtherLink XL", L""});
        hives_.machine.Fill(kServices, L"Tcpip\\Linkage: Bind=[\\Device\\{1}]");
        user_.Fill(L"", LR"(
            Identities\{0D8E1A20-3C5B-4E5C-9A10-5B8C2D1E7F01}: Username=Main Identity
            Identities\{0D8E1A20-3C5B-4E5C-9A10-5B8C2D1E7F01}: Identity Ordinal=#1
            Software\Test: Name=value; Names=[a|b])");
    }

private:
    AdapterHives hives_;
    ScratchHive user_{RegistryHive::kCurrentUser};
};

struct Outcome {
    std::wstring answer;
    long allocations = 0;
};

std::wstring TextOfStatus(HRESULT status) {
    wchar_t text[20];
    swprintf(text, std::size(text), L"%lX", static_cast<unsigned long>(status));
    return text;
}

HRESULT CreateObject(const CLSID& clsid, ComPtr<IDispatch>& object) {
    ComPtr<IClassFactory> factory;
    const HRESULT found = ModuleState::Get()->ClassFactoryFor(
        clsid, IID_IClassFactory, reinterpret_cast<void**>(factory.Put()));
    return FAILED(found) ? found
                         : factory->CreateInstance(nullptr, IID_IDispatch,
                                                   reinterpret_cast<void**>(object.Put()));
}

// Creates the object, calls the member while the allocation with that number fails, and waits for
// the event. The answer: status, result, numbers of the event, status property.
Outcome Attempt(const Operation& operation, long failing) {
    const World world;
    CountingSink sink;
    ComPtr<IDispatch> object;
    CreateObject(FactsOf(operation.type).clsid, object);
    if (operation.prepare) {
        operation.prepare(object.Get());
    }
    Advise(object.Get(), &sink);
    LateCall call(operation.member, operation.arguments);
    Variant result;
    const std::function<bool()> hasEnded = [&sink] { return sink.events != 0; };
    FailAllocation(failing);
    const HRESULT status = call.Run(object.Get(), result.Put());
    const bool begun = operation.reports && status == S_OK &&
                       (result.Type() == VT_EMPTY || result.Get().iVal != 0);
    const bool ended = !begun || PumpUntil(hasEnded, kPatience);
    Outcome outcome;
    outcome.allocations = StopFailing();
    outcome.answer = TextOfStatus(status) + L" " + Say(result.Get());
    if (operation.reports) {
        PumpUntil([] { return false; }, begun ? 0 : 1);
        outcome.answer +=
            !ended ? kLost
                   : L" " + std::to_wstring(sink.events) + L":" + std::to_wstring(sink.numbers);
    }
    if (operation.status) {
        outcome.answer += L" " + Say(Read(object.Get(), operation.status).value.Get());
    }
    return outcome;
}

bool IsAmong(const Texts& answers, const std::wstring& answer) {
    return std::ranges::any_of(answers, [&](const std::wstring& known) {
        return known.ends_with(L'*') ? answer.starts_with(known.substr(0, known.size() - 1))
                                     : answer == known;
    });
}

long LastAllocation() {
    const char* wanted = std::getenv("TERVANE_ALLOCATIONS");
    return wanted ? std::atol(wanted) : 50;
}

// For the members that look for one.
OwnWindow& Window() {
    static OwnWindow window(L"Memory that runs out", OwnWindow::Thread::kPumps);
    return window;
}

class ExhaustionTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(WatchComMemory());
        if (!ModuleState::Get()) {
            UseBuiltTypeLibrary();
            Window();
            WarmUp();
        }
    }

    // What the process makes once and keeps: the run-time's locks for exceptions, the log ring.
    static void WarmUp() {
        static const auto logger = ZelBase::Logger::Create();
        try {
            throw std::bad_alloc();
        } catch (const std::bad_alloc&) {
            logger->Log("Out of memory.");
        }
    }

    // Every allocation in turn; `attempt` tells what came of it and how many there were.
    static void Exhaust(const std::function<Outcome(long failing)>& attempt,
                        const Texts& failures) {
        attempt(0); // whatever is made once only
        const Outcome usual = attempt(0);
        EXPECT_FALSE(usual.answer.ends_with(kLost) || usual.answer == L"false")
            << testing::PrintToString(usual.answer);
        PumpUntil([] { return false; }, 500); // threads may still be ending
        long blocks = LiveBlocks();
        std::size_t handles = OpenHandleCount();
        const long last = std::min(LastAllocation(), usual.allocations);
        for (long failing = 1; failing <= last; ++failing) {
            wchar_t answer[kLongestAnswer] = {}; // not a block of the heap, those are counted
            attempt(failing).answer.copy(answer, kLongestAnswer - 1);
            const bool settled = Settle(blocks, handles);
            const long moreBlocks = LiveBlocks() - blocks;
            const auto moreHandles = static_cast<long>(OpenHandleCount() - handles);
            if (!settled || !IsKnown(answer, usual, failures)) {
                ADD_FAILURE() << "allocation " << failing << " answers "
                              << testing::PrintToString(std::wstring(answer)) << ", usually "
                              << testing::PrintToString(usual.answer) << ", leaves " << moreBlocks
                              << " blocks, " << moreHandles << " handles"
                              << (ModuleState::Get()->IsLocked() ? ", an object" : "")
                              << WhereFailed();
                blocks = LiveBlocks(); // the failure is kept, too
                handles = OpenHandleCount();
            }
        }
        std::printf("%ld of %ld allocations, usually %s\n", last, usual.allocations,
                    testing::PrintToString(usual.answer).c_str());
    }

    // Without memory for the call itself no event may come.
    static bool IsKnown(const std::wstring& answer, const Outcome& usual, const Texts& failures) {
        const bool isRefused =
            answer.starts_with(L"8007000E") && answer.find(L" 1:") == std::wstring::npos;
        return isRefused || answer == usual.answer || IsAmong(failures, answer);
    }

    // Waits until what an attempt has used is given back: threads may still be ending.
    static bool Settle(long blocks, std::size_t handles) {
        return PumpUntil(
            [&] {
                return !ModuleState::Get()->IsLocked() && LiveBlocks() <= blocks &&
                       OpenHandleCount() <= handles;
            },
            5000);
    }

    const Apartment apartment_;
};

class ClassExhaustionTest : public ExhaustionTest,
                            public testing::WithParamInterface<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Classes, ClassExhaustionTest,
                         testing::Range(std::size_t{0}, ObjectClasses().size()));

TEST_P(ClassExhaustionTest, IsCreatedOrNot) {
    const ClassRow& row = ObjectClasses()[GetParam()];
    Exhaust(
        [&](long failing) {
            CountingSink sink;
            ComPtr<IDispatch> object;
            FailAllocation(failing);
            const HRESULT created = CreateObject(*row.clsid, object);
            const DWORD cookie = object ? Advise(object.Get(), &sink) : 0;
            Outcome outcome;
            outcome.allocations = StopFailing();
            outcome.answer = TextOfStatus(created) + (cookie ? L" advised" : L"");
            return outcome;
        },
        {L"0"}); // created, but the sink refused
}

class MemberExhaustionTest : public ExhaustionTest,
                             public testing::WithParamInterface<Operation> {};

LoopbackServer& Server() {
    static LoopbackServer server;
    return server;
}

void PrepareSmtp(IDispatch* smtp) {
    ComPtr<IDispatch> mail;
    CreateObject(__uuidof(::EmailData), mail);
    PrepareSmtp(smtp, Server(), mail);
}

void PreparePop(IDispatch* pop) {
    PreparePop(pop, Server());
}

void ConnectPop(IDispatch* pop) {
    PreparePop(pop);
    CountingSink sink; // the object takes no other call before its event
    const DWORD cookie = Advise(pop, &sink);
    Call(pop, L"Connect");
    PumpUntil([&sink] { return sink.events != 0; }, kPatience);
    Unadvise(pop, cookie);
}

// Refused at once, with the reason in the status; or begun, and ended with a failure.
const Texts kMailFailures = {L"0 false 0:0 *", L"0 true 1:0 *", L"0 other true 1:0 *"};
const Texts kRefused = {L"0 false*"};
const Texts kTestFailed = {L"0 empty 1:0"};
const Texts kDialFailures = {L"0 0 0:0 *", L"0 1 1:100*"};
const Texts kWaitFailures = {L"0 0 0:0 1", L"0 1 1:101 0"};
const Texts kListFailures = {L"0 0 0:0 1", L"0 5 1:500 0"};

const wchar_t* const kAll = L"76D636E1-1924-46F8-9F21-4771A07EA0E3"; // installed adapters
constexpr wchar_t kTester[] = L"ConnectivityTester";
constexpr wchar_t kLastCode[] = L"LastErrorCode";
constexpr wchar_t kTitle[] = L"Memory.*";
const auto kPort = [] { return Server().Port(LoopbackServer::kSmtp); };

const Operation kOperations[] = {
    {L"ConfigureOutlookExpress", L"AddMailAccount", {L"A", L"p", L"s", L"a"}, kRefused, kLastCode},
    {L"GeneralSysInfo", L"GetSystemInfo", {}, {}, nullptr, true},
    {L"GeneralSysInfo", L"NumStaticAdapters"},
    {L"SmtpCtl", L"SendMail", {}, kMailFailures, L"StatusCode", true, PrepareSmtp},
    {L"PopCtl", L"Connect", {}, kMailFailures, L"LastError", true, PreparePop},
    {L"PopCtl", L"GetMailCount", {}, kMailFailures, L"LastError", true, ConnectPop},
    {L"PopCtl", L"RetrieveMessage", {1}, kMailFailures, L"LastError", true, ConnectPop},
    {L"EmailData", L"SetHeaderByName", {L"Subject", L"text"}},
    {L"EmailData", L"TextMessage=", {L"text"}},
    {kTester, L"DNSLookup", {L"localhost", 0}, kTestFailed, nullptr, true},
    {kTester, L"TestTCPPort", {L"127.0.0.1", kPort(), 1000}, kTestFailed, nullptr, true},
    {kTester, L"Ping", {L"127.0.0.1", 2000, 1}, kTestFailed, nullptr, true},
    {L"DHCP", L"ReleaseRenew", {}, kTestFailed, nullptr, true},
    {L"ConfigureIE", L"AddFavorite", {L"Name", L"http://a.example/"}, {L"1 *"}},
    {L"ConfigureIE", L"HomePage=", {L"http://a.example/"}, {L"1 *"}},
    {L"StaticAdapterInfo", L"StaticNameServers"},
    {L"LiveAdapterInfo", L"Name"},
    {L"DriveInfo", L"Type"},
    {L"PhoneBookEntry", L"Load", {L"Provider"}, kRefused, kLastCode},
    {L"RASMgr", L"FindEntries", {L".*"}, {L"0 [] *"}, kLastCode},
    {L"RASMgr", L"Connect", {L"Provider", L"me", L"x"}, kDialFailures, kLastCode, true},
    {L"DHCPConfiguration", L"EnableIPToUseDhcp", {kCard, true}, kRefused, L"LastError"},
    {L"WindowMgr", L"WaitForWindow", {kTitle, L"", 1, true, 50}, kWaitFailures, kLastCode, true},
    // A text is lost when the type library's way of calling copies it, or an array with it.
    {L"WindowMgr", L"GetMatchingWindowTitleText", {kTitle}, {L"0 "}},
    {L"Registry2", L"GetMatchingSubKeys", {1, L"Software", L"Name", L"v.*"}, {L"0 []"}},
    {L"DisableFileAndPrintSharing", L"IsSharingEnabled", {}, kRefused, kLastCode},
    {L"Registry2", L"GetValue", {1, L"Software\\Test", L"Name"}},
    {L"Registry2", L"GetValue", {1, L"Software\\Test", L"Names"}, {L"0 [*"}},
    {L"Registry2", L"SetValue", {1, L"Software\\Test", L"Names", Texts{L"c", L"d"}}, kRefused},
    {L"Registry2", L"SetValue", {1, L"Software\\Test", L"Name", L"text"}, kRefused},
    {L"AdapterInfo", L"GetAdapterInfo", {kAll, 5}, kListFailures, kLastCode, true},
};

INSTANTIATE_TEST_SUITE_P(Members, MemberExhaustionTest, testing::ValuesIn(kOperations),
                         [](const auto& info) {
                             std::string name = std::to_string(info.index);
                             for (const wchar_t letter : info.param.member) {
                                 name.append(letter != L'=', static_cast<char>(letter));
                             }
                             return name;
                         });

TEST_P(MemberExhaustionTest, EndsWell) {
    Exhaust([](long failing) { return Attempt(GetParam(), failing); }, GetParam().failures);
}

// The libraries: their calls may throw, their callbacks and threads must not.
Outcome AttemptCall(long failing, const std::function<bool()>& call) {
    Outcome outcome;
    FailAllocation(failing);
    bool succeeded = false;
    try {
        succeeded = call();
    } catch (const std::bad_alloc&) {
        succeeded = false;
    }
    outcome.allocations = StopFailing();
    outcome.answer = succeeded ? L"true" : L"false";
    return outcome;
}

TEST_F(ExhaustionTest, LookUpSucceedsOrFails) {
    std::optional<LoopbackServer> server; // another one of these tests may have the port
    const auto hasPort = [&server] { return server.emplace(kThisHost).HasNameServer(); };
    if (!PumpUntil(hasPort, kPatience)) {
        GTEST_SKIP() << "port 53 of the loopback is not to be had";
    }
    ZelNet::InitializeSockets();
    const std::string name = "a.example";
    Exhaust(
        [&](long failing) {
            return AttemptCall(failing, [&] {
                std::vector<ZelNet::IpAddress> addresses;
                const auto network = ZelNet::NetworkInfo::Create();
                return network && network->DNSLookup(kThisHost, name, 5000, addresses) &&
                       addresses.size() == 1;
            });
        },
        {L"false"});
    ZelNet::UninitializeSockets();
}

TEST_F(ExhaustionTest, LogAndThreadSucceedOrFail) {
    Exhaust(
        [](long failing) {
            return AttemptCall(failing, [] {
                const auto logger = ZelBase::Logger::Create();
                const auto thread = ZelBase::Thread::Create();
                if (!logger || !thread) {
                    return false;
                }
                logger->Log("text %d", 1);
                thread->SetThreadFunction([](ZelBase::Thread* self, std::uint32_t) {
                    std::string event;
                    self->WaitForEvent(event);
                    return 7u;
                });
                const bool started = thread->Execute() && thread->SignalEvent("name");
                return thread->Terminate(false) && started && logger->IsValid();
            });
        },
        {L"false"});
}

} // namespace
} // namespace tervane::test
