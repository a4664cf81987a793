// Queries to the MIB-II agent: identifiers, an agent that plays every kind of misbehaviour, and the
// system's real one.

#include "ZelBase/threads/ModulePin.h"
#include "ZelNet/SourceCode/snmp/SnmpQuery.h"
#include "tests/support/TestThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <set>

namespace ZelNet {
namespace {

TEST(ObjectIdentifier, IsReadWholeOrNotAtAll) {
    using namespace std::string_literals;
    Oid oid("1.3.6.1.4294967295.0");
    EXPECT_EQ(oid.Components(), (std::vector<std::uint32_t>{1, 3, 6, 1, 4294967295u, 0}));
    EXPECT_EQ(oid.GetText(), "1.3.6.1.4294967295.0");
    std::string longest = "1";
    while (longest.size() < 255) {
        longest += ".1";
    }
    EXPECT_TRUE(Oid(longest).IsValid());
    for (const std::string& wrong : {""s, "."s, "1."s, ".1"s, "1..3"s, "1.3x"s, "1.-3"s, "1. 3"s,
                                     "+1"s, "1.4294967296"s, "1.3\0.6"s, longest + ".1"}) {
        EXPECT_FALSE(Oid(wrong).IsValid()) << wrong;
        EXPECT_FALSE(oid.SetText(wrong)) << wrong;
        EXPECT_FALSE(oid.IsValid()) << wrong; // nothing is left of the former one
    }
}

TEST(ObjectIdentifier, HasTheOrderOfAWalk) {
    const Oid root("1.3.6");
    EXPECT_TRUE(root < Oid("1.3.6.0"));
    EXPECT_TRUE(Oid("1.3.6.2") < Oid("1.3.6.10") && Oid("1.3.6.2.9") < Oid("1.3.7"));
    EXPECT_TRUE(root.IsUnder(root) && Oid("1.3.6.0").IsUnder(root));
    EXPECT_FALSE(Oid("1.3.60").IsUnder(root) || Oid("1.3").IsUnder(root));
    EXPECT_EQ(Oid("1.3.6.4.2").Below(root).size(), 2u);
    EXPECT_TRUE(Oid("2").Below(root).empty());
}

struct Value {
    BYTE type;
    std::int32_t number;
    std::string octets;
};

// What lets the test see whether everything was freed. It outlives the agent.
struct Memory {
    std::set<void*> blocks;
    int wrongFrees = 0;
    int queries = 0;
};

// Answers from a table, as a real agent does, but for what `mischief` changes.
class TableAgent final : public SnmpAgent {
public:
    using Mischief = std::function<bool(TableAgent&, SnmpVarBind&, AsnInteger32&)>;

    explicit TableAgent(Memory& memory, Mischief mischief = {})
        : memory_(memory), mischief_(std::move(mischief)) {}

    void* MemAlloc(UINT bytes) override {
        void* block = malloc(bytes);
        memory_.blocks.insert(block);
        return block;
    }
    void MemFree(void* block) override {
        memory_.wrongFrees += memory_.blocks.erase(block) == 0;
        free(block);
    }
    bool ExtensionInit(DWORD upTime, HANDLE* event, AsnObjectIdentifier* view) override {
        EXPECT_EQ(upTime, 0u);
        EXPECT_TRUE(event && view);
        return starts;
    }
    bool ExtensionQuery(BYTE request, SnmpVarBindList* bindings, AsnInteger32* errorStatus,
                        AsnInteger32*) override {
        ++memory_.queries;
        EXPECT_EQ(bindings->len, 1u);
        SnmpVarBind& binding = bindings->list[0];
        if (mischief_) {
            return mischief_(*this, binding, *errorStatus);
        }
        const Oid asked(binding.name);
        const auto found = request == SNMP_PDU_GET ? table.find(asked) : table.upper_bound(asked);
        if (found == table.end()) {
            *errorStatus = SNMP_ERRORSTATUS_NOSUCHNAME;
            return true;
        }
        Answer(binding, found->first, found->second);
        return true;
    }
    void Answer(SnmpVarBind& binding, const Oid& oid, const Value& value) {
        MemFree(binding.name.ids);
        oid.CopyTo(*this, binding.name);
        binding.value.asnType = value.type;
        if (value.octets.empty()) {
            binding.value.asnValue.number = value.number;
            return;
        }
        auto* stream = static_cast<BYTE*>(MemAlloc(static_cast<UINT>(value.octets.size())));
        memcpy(stream, value.octets.data(), value.octets.size());
        binding.value.asnValue.string = {stream, static_cast<UINT>(value.octets.size()), TRUE};
    }

    bool starts = true;
    std::map<Oid, Value> table;

private:
    Memory& memory_;
    Mischief mischief_;
};

class SnmpQueryTest : public testing::Test {
protected:
    ~SnmpQueryTest() override {
        query_.reset();
        EXPECT_TRUE(memory_.blocks.empty());
        EXPECT_EQ(memory_.wrongFrees, 0);
    }
    void Use(TableAgent::Mischief mischief = {}, const char* address = "127.0.0.1") {
        query_.reset();
        auto agent = std::make_unique<TableAgent>(memory_, std::move(mischief));
        agent->table = {{Oid("1.3.6.1.2.1"), {ASN_INTEGER, 7, ""}},
                        {Oid("1.3.6.1.2.2.1"), {ASN_IPADDRESS, 0, "\x0A\x01\x02\x03"}},
                        {Oid("1.3.6.1.2.2.2"), {ASN_IPADDRESS, 0, "\x0A\x01"}},
                        {Oid("1.3.6.1.2.2.10"), {ASN_OCTETSTRING, 0, "\x0A\x01\x02\x03"}},
                        {Oid("1.3.6.1.2.3"), {ASN_GAUGE32, 7, ""}}};
        query_ = std::make_unique<WIN32_SnmpQuery>(IpAddress(address),
                                                   SnmpSession::Open(std::move(agent)));
    }
    // The rows' names, and at last whether the walk came to its end.
    std::string Walk(const char* oid) {
        std::string names;
        const bool complete =
            query_->Walk(Oid(oid), [&](const VarBind& row) { names += row.oid.GetText() + " "; });
        return names + (complete ? "end" : "cut");
    }

    Memory memory_;
    std::unique_ptr<WIN32_SnmpQuery> query_;
};

TEST_F(SnmpQueryTest, GivesOnlyValuesOfTheTypeAskedFor) {
    Use();
    std::int32_t number = 1;
    EXPECT_TRUE(query_->GetInteger(Oid("1.3.6.1.2.1"), number));
    IpAddress address;
    EXPECT_TRUE(query_->GetIpAddress(Oid("1.3.6.1.2.2.1"), address));
    for (const char* other : {"1.3.6.1.2.1", "1.3.6.1.2.2.2", "1.3.6.1.2.2.10", "1.3.6.1.2"}) {
        EXPECT_FALSE(query_->GetIpAddress(Oid(other), address)) << other;
    }
    for (const char* other : {"1.3.6.1.2.2.1", "1.3.6.1.2.3", "1.3.6.1.9"}) {
        EXPECT_FALSE(query_->GetInteger(Oid(other), number)) << other;
    }
    EXPECT_EQ(number, 7);
    EXPECT_EQ(address.GetText(), "10.1.2.3");
}

TEST_F(SnmpQueryTest, RefusesOtherAgentsAndOtherTreesWithoutAsking) {
    std::int32_t number = 0;
    for (const auto& [agent, oid] : {std::pair("127.0.0.2", "1.3.6.1.2.1"),
                                     {"nonsense", "1.3.6.1.2.1"},
                                     {"127.0.0.1", "1.3.6"},
                                     {"127.0.0.1", "1.3.6.10.2"},
                                     {"127.0.0.1", "1.3.7.1"},
                                     {"127.0.0.1", "1.3.6.1."},
                                     {"127.0.0.1", ""}}) {
        Use({}, agent);
        EXPECT_FALSE(query_->GetInteger(Oid(oid), number)) << agent << oid;
        EXPECT_EQ(Walk(oid), "cut") << agent << oid;
    }
    EXPECT_EQ(memory_.queries, 0);
}

TEST_F(SnmpQueryTest, WalksATreeToItsEnd) {
    Use();
    EXPECT_EQ(Walk("1.3.6.1.2.2"), "1.3.6.1.2.2.1 1.3.6.1.2.2.2 1.3.6.1.2.2.10 end");
    EXPECT_EQ(Walk("1.3.6.1.2.2.1"), "1.3.6.1.2.2.1 end"); // one variable
    EXPECT_EQ(Walk("1.3.6.1.1"), "end");
    EXPECT_EQ(Walk("1.3.6.1.2.3"), "1.3.6.1.2.3 cut"); // nothing comes after it
}

TEST_F(SnmpQueryTest, EndsWhateverTheAgentAnswers) {
    const Oid row("1.3.6.1.2.2.5");
    std::uint32_t count = 0;
    const struct {
        const char* what;
        TableAgent::Mischief mischief;
        std::string walk = "cut";
    } cases[] = {
        {"fails", [](auto&, auto&, auto&) { return false; }},
        {"leaves everything as it was", [](auto&, auto&, auto&) { return true; }},
        {"goes in circles",
         [&](TableAgent& agent, SnmpVarBind& binding, auto&) {
             agent.Answer(binding, row.Row(++count % 2), {ASN_INTEGER, 1, ""});
             return true;
         },
         "1.3.6.1.2.2.5.0 1.3.6.1.2.2.5.1 cut"},
        {"gives no name",
         [](TableAgent& agent, SnmpVarBind& binding, auto&) {
             agent.MemFree(binding.name.ids);
             binding.name = {};
             return true;
         }},
        {"claims too long a name",
         [](auto&, SnmpVarBind& binding, auto&) { return binding.name.idLength = 0xFFFFFFFF; }},
        {"claims a text of gigabytes",
         [&](TableAgent& agent, SnmpVarBind& binding, auto&) {
             agent.Answer(binding, row, {ASN_OCTETSTRING, 0, "x"});
             return binding.value.asnValue.string.length = 0xFFFFFFFF;
         }},
        {"answers an error with a value",
         [&](TableAgent& agent, SnmpVarBind& binding, AsnInteger32& errorStatus) {
             agent.Answer(binding, row, {ASN_OCTETSTRING, 0, "x"});
             return errorStatus = SNMP_ERRORSTATUS_GENERR;
         }},
    };
    for (const auto& [what, mischief, walk] : cases) {
        Use(mischief);
        EXPECT_EQ(Walk("1.3.6.1.2.2"), walk) << what;
    }
    // Rows without end.
    Use([&](TableAgent& agent, SnmpVarBind& binding, auto&) {
        agent.Answer(binding, row.Row(++count), {ASN_INTEGER, 1, ""});
        return true;
    });
    int rows = 0;
    EXPECT_FALSE(query_->Walk(row, [&](const VarBind&) { ++rows; }));
    EXPECT_EQ(rows, WIN32_SnmpQuery::kMostRows);
}

// As AdapterInfo kills, at its end, a thread that does not come back.
TEST_F(SnmpQueryTest, AnswersOthersWhenAThreadWasKilledInTheAgent) {
    std::atomic<bool> stuck = false;
    Use([&](TableAgent& agent, SnmpVarBind& binding, auto&) {
        if (!stuck) {
            agent.MemFree(binding.name.ids);
            stuck = true;
            Sleep(INFINITE);
        }
        agent.Answer(binding, Oid("1.3.6.1.2.1"), {ASN_INTEGER, 7, ""});
        return true;
    });
    std::atomic<std::int32_t> answer = 0;
    const auto ask = [this, &answer] {
        std::int32_t number = 0;
        query_->GetInteger(Oid("1.3.6.1.2.1"), number);
        answer = number;
    };
    const auto first = ZelBase::ModulePin::StartThread(ask);
    while (!stuck) {
        Sleep(1);
    }
    const auto second = ZelBase::ModulePin::StartThread(ask);
    EXPECT_EQ(WaitForSingleObject(second.Get(), 100), DWORD{WAIT_TIMEOUT}); // waits for its turn
    TerminateThread(first.Get(), 1);
    EXPECT_EQ(WaitForSingleObject(second.Get(), 10000), WAIT_OBJECT_0);
    EXPECT_EQ(answer, 7);
    TerminateThread(second.Get(), 1); // should it still wait
}

TEST_F(SnmpQueryTest, FailsWithoutAnAgent) {
    std::int32_t number = 0;
    auto stubborn = std::make_unique<TableAgent>(memory_);
    stubborn->starts = false;
    for (auto session : {SnmpSession::Open(nullptr), SnmpSession::Open(std::move(stubborn))}) {
        EXPECT_FALSE(session);
        query_ = std::make_unique<WIN32_SnmpQuery>(LoopbackAddress(), session);
        EXPECT_FALSE(query_->GetInteger(Oid("1.3.6.1.2.1"), number));
        EXPECT_EQ(Walk("1.3.6.1.2.1"), "cut");
    }
    EXPECT_EQ(memory_.queries, 0);
}

std::map<std::string, std::string> NamesOfInterfaces() {
    std::map<std::string, std::string> names;
    EXPECT_TRUE(SnmpQuery::Create()->Walk(Oid("1.3.6.1.2.1.2.2.1.2"), [&](const VarBind& row) {
        names[row.oid.GetText()] = row.Octets().value_or("?");
    }));
    return names;
}

// The system's own, loaded anew by each round unless another thread has it just then.
TEST(RealAgent, IsSharedByManyThreads) {
    if (!SnmpAgent::Load()) {
        GTEST_SKIP() << "the system has no MIB-II agent";
    }
    const auto expected = NamesOfInterfaces();
    {
        const auto query = SnmpQuery::Create();
        std::int32_t interfaces = 0;
        EXPECT_TRUE(query->GetInteger(Oid("1.3.6.1.2.1.2.1.0"), interfaces)); // ifNumber
        EXPECT_EQ(static_cast<std::size_t>(interfaces), expected.size());
        IpAddress mask;
        EXPECT_TRUE(query->GetIpAddress(Oid("1.3.6.1.2.1.4.20.1.3.127.0.0.1"), mask));
        EXPECT_EQ(mask.GetText(), "255.0.0.0");
    }
    std::atomic<int> alike = 0;
    tervane::test::OnThreads(8, [&](int) {
        for (int round = 0; round < 20; ++round) {
            alike += NamesOfInterfaces() == expected;
        }
    });
    EXPECT_EQ(alike, 8 * 20);
    EXPECT_EQ(GetModuleHandleA("INETMIB1.DLL"), nullptr); // gone with its last user
}

} // namespace
} // namespace ZelNet
