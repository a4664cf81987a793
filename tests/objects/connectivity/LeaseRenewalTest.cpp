// Release and renew on made-up machines: no network has a DHCP server that would give and take
// leases as these tests want it, Wine cannot do it, and the 9x devices are long gone.

#include "objects/connectivity/LeaseRenewal.h"
#include "platform/adapters/LiveAdapterSources.h"
#include "support/FakeIpHelper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace tervane {
namespace {

using test::FakeAdapter;
using test::FakeIpHelper;

const std::string kFirstCard("\x00\x10\x5A\x00\x00\x01", 6);
const std::string kSecondCard("\x00\x10\x5A\x00\x00\x02", 6);

FakeAdapter Card(const char* id, DWORD index, const std::string& hardware, bool dhcp = true,
                 UINT type = MIB_IF_TYPE_ETHERNET) {
    return {.id = id,
            .type = type,
            .hardware = hardware,
            .address = "10.0.0.2",
            .dhcp = dhcp,
            .index = index};
}

class LeaseRenewalTest : public testing::Test, public DhcpClientLibrary {
protected:
    LeaseRenewalTest() {
        ipHelper_->onRelease = [this](DWORD index) { Happen("release " + std::to_string(index)); };
        ipHelper_->onRenew = [this](DWORD index) { Happen("renew " + std::to_string(index)); };
    }

    // Runs the repair on a machine of that family; its steps are in log_.
    int Run(PlatformFamily family = PlatformFamily::kXp) {
        log_.clear();
        LiveAdapterSources sources;
        sources.ipHelper = ipHelper_;
        sources.managementInformation = [] { return nullptr; };
        sources.installed = [] { return std::vector<StaticAdapter>(); };
        LeaseServices services;
        services.family = family;
        services.liveAdapters = [sources] { return ListLiveAdapters(sources); };
        services.installedAdapters = [this] { return installed_; };
        services.ipHelper = ipHelper_;
        services.dhcpClient = std::shared_ptr<const DhcpClientLibrary>(
            std::shared_ptr<const DhcpClientLibrary>(), this);
        services.openVirtualDevice = [this] { return openDevice_(); };
        services.wait = [this](DWORD milliseconds) {
            Happen("wait " + std::to_string(milliseconds));
        };
        return LeaseRenewal(services).Run();
    }
    void ReleaseParameters(const std::wstring& name) const override {
        const_cast<LeaseRenewalTest*>(this)->Happen("client releases " +
                                                    std::string(name.begin(), name.end()));
    }
    void AcquireParameters(const std::wstring& name) const override {
        const_cast<LeaseRenewalTest*>(this)->Happen("client acquires " +
                                                    std::string(name.begin(), name.end()));
    }
    void Happen(const std::string& step) {
        log_ += step + ", ";
        if (onStep_) {
            onStep_(step);
        }
    }

    std::shared_ptr<FakeIpHelper> ipHelper_ = std::make_shared<FakeIpHelper>();
    std::vector<StaticAdapter> installed_;
    std::function<std::unique_ptr<VirtualDhcpDevice>()> openDevice_ = [] { return nullptr; };
    std::function<void(const std::string&)> onStep_;
    std::string log_;
};

// What the list of adapters says of the one in hand.
struct Seen {
    const char* address; // null: it is gone
    bool dhcp = true;
};

void Show(std::vector<FakeAdapter>& adapters, const Seen& seen) {
    if (!seen.address) {
        adapters.clear();
    } else if (!adapters.empty()) {
        adapters[0].address = seen.address;
        adapters[0].dhcp = seen.dhcp;
    }
}

TEST_F(LeaseRenewalTest, JudgesReleaseAndRenewalByTheAddress) {
    const struct {
        Seen released;
        Seen renewed = {""};
        int count = -1; // it was not released
    } rows[] = {
        {{"10.0.0.2"}},
        {{"10.9.9.9"}},
        {{"169.25.4.1"}},
        {{"10.0.0.2", false}},
        {{"0.0.0.0", false}},
        {{nullptr}, {nullptr}, 1},
        {{""}, {"10.0.0.5"}, 1},
        {{"169.254.7.7"}, {"169.255.7.7"}, 1},
        {{"0.0.0.0"}, {nullptr}, 1},
        {{"0.0.0.0"}, {"169.254.7.7"}, 0},
        {{"0.0.0.0"}, {"0.0.0.0"}, 0},
        {{"0.0.0.0"}, {""}, 0},
        {{"0.0.0.0"}, {"10.0.0.5", false}, 0},
    };
    for (const auto& row : rows) {
        ipHelper_->adapters = {Card("{1}", 7, kFirstCard)};
        onStep_ = [&](const std::string& step) {
            if (step == "release 7") {
                Show(ipHelper_->adapters, row.released);
            } else if (step == "renew 7") {
                Show(ipHelper_->adapters, row.renewed);
            }
        };
        EXPECT_EQ(std::max(row.count, 0), Run()) << &row - rows;
        EXPECT_TRUE(log_.starts_with("release 7, wait 1000, ")) << log_;
        EXPECT_EQ(row.count >= 0, log_.find("wait 200") != std::string::npos) << &row - rows;
    }
}

TEST_F(LeaseRenewalTest, TakesOneEligibleAdapterAfterTheOther) {
    ipHelper_->adapters = {Card("{1}", 1, kFirstCard, false), Card("{2}", 2, kFirstCard),
                           Card("{3}", 3, "DEST\x01\x02"), Card("{4}", 4, kSecondCard),
                           Card("{5}", 5, kSecondCard, true, 23)};
    onStep_ = [&](const std::string& step) {
        FakeAdapter& adapter = ipHelper_->adapters[step.ends_with('2') ? 1 : 3];
        if (step.starts_with("release")) {
            adapter.address = "0.0.0.0";
        } else if (step.starts_with("renew")) {
            adapter.address = "10.0.0.9";
        }
    };
    EXPECT_EQ(Run(), 2);
    EXPECT_EQ(log_, "release 2, wait 1000, wait 200, renew 2, wait 3500, "
                    "release 4, wait 1000, wait 200, renew 4, wait 3500, ");
}

TEST_F(LeaseRenewalTest, WaitsForNothingWithoutAnAdapter) {
    EXPECT_EQ(Run(), 0);
    ipHelper_->adapters = {Card("{1}", 1, kFirstCard, false)};
    EXPECT_EQ(Run(), 0);
    ipHelper_->adaptersError = ERROR_GEN_FAILURE; // and there are no tables
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(log_, "");
}

// Whether an adapter has an address cannot be told without a list.
TEST_F(LeaseRenewalTest, CountsNothingThatItCannotSee) {
    ipHelper_->adapters = {Card("{1}", 1, kFirstCard)};
    onStep_ = [&](const std::string& step) {
        ipHelper_->adapters[0].address = "0.0.0.0";
        if (step == "renew 1") {
            ipHelper_->adaptersError = ERROR_GEN_FAILURE;
        }
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(log_.ends_with("renew 1, wait 3500, "));
}

TEST_F(LeaseRenewalTest, AsksTheDhcpClientWhereTheIpHelperCannot) {
    for (const wchar_t* cookie : {L"{a}", L"{b}", L"{c}"}) {
        StaticAdapter& adapter = installed_.emplace_back();
        adapter.cookie = cookie;
        adapter.hardwareAddress = cookie[1] == L'b' ? L"00-10-5a-00-00-02" : L"00-10-5A-00-00-01";
    }
    installed_[2].hardwareAddress = kNoHardwareAddress;
    onStep_ = [&](const std::string& step) {
        if (step.starts_with("client")) {
            ipHelper_->adapters[0].address =
                step.starts_with("client releases") ? "0.0.0.0" : "10.0.0.3";
        }
    };
    const std::string steps = "client releases {b}, wait 1000, wait 200, client acquires {b}, "
                              "wait 3500, ";
    ipHelper_->adapters = {Card("{b}", 2, kSecondCard)};
    ipHelper_->hasLeaseFunctions = false;
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(log_, steps);
    ipHelper_->hasLeaseFunctions = true;
    ipHelper_->interfacesError = ERROR_NOT_SUPPORTED;
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(log_, steps);
    ipHelper_->interfacesError = ERROR_NO_DATA; // an empty list is a list
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(log_, "wait 1000, ");
    // Without an address nobody can be told apart from others without one.
    ipHelper_->adapters = {Card("{b}", 2, "")};
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(log_, "");
}

// A device with a table of adapters, in which each has its lease state.
class FakeDevice final : public VirtualDhcpDevice {
public:
    using Happen = std::function<void(const std::string&)>;

    FakeDevice(std::vector<std::string> entries, DWORD count, Happen happen)
        : entries_(std::move(entries)), count_(count), happen_(std::move(happen)) {}

    bool Control(Order order, std::span<unsigned char> in, std::span<unsigned char> out) override {
        if (order == Order::kReadTable) {
            EXPECT_EQ(out.size(), 1444u);
            std::memcpy(out.data(), &count_, sizeof count_);
            for (std::size_t i = 0; i < entries_.size(); ++i) {
                std::ranges::copy(entries_[i], out.begin() + 4 + i * kEntrySize);
            }
            return !entries_.empty();
        }
        EXPECT_EQ(in.size(), 1008u);
        const std::string entry(in.begin(), in.begin() + 16);
        happen_((order == Order::kRelease ? "device releases " : "device renews ") +
                entry.substr(0, entry.find('\0')));
        return false; // nobody looks
    }

private:
    std::vector<std::string> entries_;
    DWORD count_;
    Happen happen_;
};

TEST_F(LeaseRenewalTest, UsesTheVirtualDeviceOfThe9xFamily) {
    const std::vector<std::string> entries = {std::string("one\0\0\0\0\0", 8) + kFirstCard,
                                              std::string("two\0", 4) + kSecondCard};
    DWORD count = 2;
    openDevice_ = [&] {
        return std::make_unique<FakeDevice>(entries, count,
                                            [this](const std::string& step) { Happen(step); });
    };
    onStep_ = [&](const std::string& step) {
        if (step.starts_with("device")) {
            ipHelper_->adapters[0].address =
                step.starts_with("device releases") ? "0.0.0.0" : "10.0.0.3";
        }
    };
    for (const auto family :
         {PlatformFamily::kWindows95, PlatformFamily::kWindows98, PlatformFamily::kWindowsMe}) {
        ipHelper_->adapters = {Card("0001", 2, kSecondCard)};
        EXPECT_EQ(Run(family), 1);
        EXPECT_EQ(log_, "device releases two, wait 1000, wait 200, device releases two, wait 200, "
                        "device renews two, wait 3500, ");
    }
    count = 0xFFFFFFFF; // more than there is room for
    EXPECT_EQ(Run(PlatformFamily::kWindows98), 1);
    count = 1; // the adapter is not among them
    EXPECT_EQ(Run(PlatformFamily::kWindows98), 0);
    EXPECT_EQ(log_, "wait 1000, ");
    openDevice_ = [] { return nullptr; };
    EXPECT_EQ(Run(PlatformFamily::kWindows98), 0);
    EXPECT_EQ(log_, "wait 1000, ");
}

} // namespace
} // namespace tervane
