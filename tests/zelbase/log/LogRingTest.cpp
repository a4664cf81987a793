// Which ring a process writes into. Nobody may have the log open when these tests begin, so those
// of all obstacles leave the logging to second processes.

#include "ZelBase/log/LogRing.h"
#include "ZelBase/log/Logger.h"
#include "tests/support/HandleCount.h"
#include "tests/zelbase/ChildProcess.h"
#include "tests/zelbase/log/RingView.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ZelBase::test {
namespace {

// What the second process answers, see main.cpp.
constexpr DWORD kSession = 1;
constexpr DWORD kMachine = 2;
constexpr DWORD kOwn = 3;

const std::string kEvent = "ZelKit::WIN32_Logger::Event2";
const std::string kMutex = "ZelKit::WIN32_Logger::Mutex2";
const std::string kSection = "ZelKit::WIN32_Logger::Mapping2";
const std::string kGlobal = "Global\\";

HANDLE MakeEvent(const std::string& name) {
    return CreateEventA(nullptr, TRUE, FALSE, name.c_str());
}

HANDLE MakeMutex(const std::string& name) {
    return CreateMutexA(nullptr, FALSE, name.c_str());
}

HANDLE MakeSmall(const std::string& name) {
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str());
}

HANDLE MakeReserved(const std::string& name) {
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE | SEC_RESERVE, 0,
                              RingView::kSize, name.c_str());
}

// As it should be, but nobody is let in.
HANDLE MakeForbidden(const std::string& name) {
    ACL nobody;
    InitializeAcl(&nobody, sizeof nobody, ACL_REVISION);
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    return CreateFileMappingA(INVALID_HANDLE_VALUE, &attributes, PAGE_READWRITE, 0, RingView::kSize,
                              name.c_str());
}

class RingChoice : public testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(RingView().IsOpen()) << "somebody has the log open"; }
};

TEST_F(RingChoice, IsTheNextWhereOneIsNotWhatItShouldBe) {
    const struct {
        const char* what;
        HANDLE (*make)(const std::string& name);
        std::vector<std::string> names;
        DWORD ring;
    } rows[] = {
        {"nothing", MakeEvent, {}, kMachine},
        {"no section", MakeEvent, {kGlobal + kSection}, kSession},
        {"no mutex", MakeEvent, {kGlobal + kMutex}, kSession},
        {"no event", MakeMutex, {kGlobal + kEvent}, kSession},
        {"small", MakeSmall, {kGlobal + kSection}, kSession},
        {"reserved", MakeReserved, {kGlobal + kSection}, kSession},
        {"forbidden", MakeForbidden, {kGlobal + kSection}, kSession},
        {"both small", MakeSmall, {kGlobal + kSection, kSection}, kOwn},
        {"no mutexes", MakeEvent, {kGlobal + kMutex, kMutex}, kOwn},
    };
    // What the viewer says then, in the order of the numbers above.
    const char* const shown[] = {"", "showing the log of this session",
                                 "showing the machine-wide log", "neither"};
    for (const auto& row : rows) {
        std::vector<UniqueHandle> obstacles;
        for (const std::string& name : row.names) {
            obstacles.emplace_back(row.make(name));
            ASSERT_TRUE(obstacles.back()) << row.what;
        }
        EXPECT_EQ(ChildProcess::Self("name-ring").Wait(), row.ring) << row.what;
        auto viewer = ChildProcess::Program("..\\tools\\log_viewer.exe", "dump");
        EXPECT_NE(viewer.ReadLine().value_or("").find(shown[row.ring]), std::string::npos)
            << row.what;
    }
}

TEST_F(RingChoice, IsOneForAllLoggers) {
    Logger::Create();
    const auto before = tervane::test::OpenHandleCount();
    auto first = Logger::Create();
    const auto withOne = tervane::test::OpenHandleCount();
    EXPECT_GT(withOne, before);
    {
        std::vector<std::unique_ptr<Logger>> others(100);
        std::generate(others.begin(), others.end(), &Logger::Create);
        EXPECT_EQ(tervane::test::OpenHandleCount(), withOne);
        first.reset();
        EXPECT_TRUE(RingView().IsOpen());
    }
    EXPECT_FALSE(RingView().IsOpen());
    EXPECT_EQ(tervane::test::OpenHandleCount(), before);
}

// An administrator's viewer could make a machine-wide ring, which is not that of those who could
// not and are running already.
TEST_F(RingChoice, OfAViewerIsTheOneThatIsThere) {
    std::unique_ptr<LogRing> session;
    ASSERT_EQ(LogRing::Open(LogRing::Place::kSession, 0, session), LogRing::Result::kOpened);
    auto viewer = ChildProcess::Program("..\\tools\\log_viewer.exe", "dump");
    EXPECT_NE(viewer.ReadLine().value_or("").find("the log of this session"), std::string::npos);
}

// Somebody has the mutex and keeps it: threads of the host do not wait at all, others a second at
// most, and all go on with a ring of their own until the shared one is to be had.
TEST_F(RingChoice, IsTheProcesssOwnWhileTheSharedOneIsLocked) {
    const UniqueHandle mutex(CreateMutexA(nullptr, TRUE, (kGlobal + kMutex).c_str()));
    auto host = ChildProcess::Self("meet-locked-ring host");
    EXPECT_LT(std::atoi(host.ReadLine().value_or("").c_str()), 900);
    EXPECT_EQ(host.ReadLine(), "ring 3");
    auto own = ChildProcess::Self("meet-locked-ring own");
    EXPECT_GE(std::atoi(own.ReadLine().value_or("").c_str()), 950);
    EXPECT_EQ(own.ReadLine(), "ring 3");
    ReleaseMutex(mutex.Get());
    EXPECT_EQ(own.Wait(), kMachine);
}

} // namespace
} // namespace ZelBase::test
