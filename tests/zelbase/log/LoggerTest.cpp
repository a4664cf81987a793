// What a process logs, and into which ring.

#include "ZelBase/log/Logger.h"
#include "ZelBase/log/ALogger.h"
#include "ZelBase/log/LogRing.h"
#include "ZelBase/threads/ModulePin.h"
#include "tests/support/OtherWindows.h"
#include "tests/support/ProcessUsage.h"
#include "tests/zelbase/log/RingView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <ctime>

namespace ZelBase::test {
namespace {

using tervane::test::ChildProcess;

// A logger whose component no other test and no other process uses at the time.
class LoggerTest : public testing::Test {
protected:
    LoggerTest() : logger_(Logger::Create()) {
        component_ = "LoggerTest";
        component_ += testing::UnitTest::GetInstance()->current_test_info()->name();
        logger_->SetComponent(component_.c_str());
        view_.emplace();
    }
    RingRecord Newest(const std::string& component) {
        const auto records = view_->RecordsOf(component);
        return records.empty() ? RingRecord() : records.back();
    }
    RingRecord Newest() { return Newest(component_); }

    std::string component_;
    std::unique_ptr<Logger> logger_;
    std::optional<RingView> view_;
};

TEST_F(LoggerTest, RecordsCarryTheirTagsOrTheDefaults) {
    constexpr auto kWarning = LogLevel::kWarning;
    const struct {
        void (*log)(Logger&);
        const char* function;
        unsigned level;
        std::uint32_t value;
        const char* text;
    } rows[] = {
        {[](Logger& l) { l.Log(kWarning, 5u, "a %d", 1); }, "Default", 1, 5, "a 1"},
        {[](Logger& l) { l.Log(kWarning, "b %s", "x"); }, "Default", 1, 9, "b x"},
        {[](Logger& l) { l.Log(6u, "c"); }, "Default", 3, 6, "c"},
        {[](Logger& l) { l.Log("d %d", 4); }, "Default", 3, 9, "d 4"},
        {[](Logger& l) { l.Log("Own", "e %d", 5); }, "Own", 3, 9, "e 5"},
        {[](Logger& l) { l.Log("Own", kWarning, 7u, "f"); }, "Own", 1, 7, "f"},
        {[](Logger& l) { l.Log("Own", kWarning, "g %%"); }, "Own", 1, 9, "g %"},
        {[](Logger& l) { l.Log("Own", 8u, "h"); }, "Own", 3, 8, "h"},
    };
    SetLastError(12345);
    logger_->Log("first");
    EXPECT_EQ(GetLastError(), 12345u);
    EXPECT_EQ(Newest().function, "GENERAL");
    EXPECT_EQ(Newest().level + Newest().value, 0u);
    logger_->SetFunction("Default");
    logger_->SetLevel(LogLevel::kTrace);
    logger_->SetValue(9);
    for (const auto& row : rows) {
        row.log(*logger_);
        const RingRecord record = Newest();
        EXPECT_EQ(record.text, row.text);
        EXPECT_EQ(record.function, row.function) << row.text;
        EXPECT_EQ(record.level, row.level) << row.text;
        EXPECT_EQ(record.value, row.value) << row.text;
        EXPECT_LE(std::abs(static_cast<long long>(record.time) - std::time(nullptr)), 2);
    }
    char thread[32];
    std::snprintf(thread, sizeof thread, "0x%lx", GetCurrentThreadId());
    EXPECT_EQ(Newest().thread, thread);
}

TEST_F(LoggerTest, CutsWhatDoesNotFitAndLeavesNothingOfOlderRecords) {
    logger_->Log(std::string(80, 'F').c_str(), LogLevel::kError, "%s",
                 std::string(600, 'T').c_str());
    EXPECT_EQ(Newest().text, std::string(511, 'T'));
    EXPECT_EQ(Newest().function, std::string(63, 'F'));
    logger_->Log("Function", "%s", std::string(2000, 'U').c_str());
    EXPECT_EQ(Newest().text, std::string(511, 'U'));
    logger_->SetComponent(std::string(100, 'C').c_str());
    logger_->Log("x");
    EXPECT_EQ(Newest(std::string(63, 'C')).text, "x");

    logger_->SetComponent(component_.c_str());
    for (std::uint32_t i = 0; i < 2 * RingView::kSlots; ++i) {
        logger_->Log("s"); // over all the long ones
    }
    view_->Lock();
    const unsigned char* slot = view_->Slot((view_->Header(4) + RingView::kSlots - 1) % 199);
    const std::string bytes(reinterpret_cast<const char*>(slot), RingView::kRecordSize);
    view_->Unlock();
    EXPECT_EQ(bytes.find_first_not_of('\0', 202), std::string::npos);
    EXPECT_EQ(bytes.substr(64, 64), std::string("GENERAL") + std::string(57, '\0'));
}

TEST_F(LoggerTest, SharesOneRingWhoseLastSlotStaysEmpty) {
    EXPECT_EQ(view_->Header(0), RingView::kSize);
    EXPECT_EQ(view_->Header(12), RingView::kSlots);
    logger_->Log("kept");
    const std::uint32_t slot = view_->Header(4);
    const std::uint32_t counter = view_->Header(8);
    const auto second = Logger::Create();
    EXPECT_EQ(Newest().text, "kept");
    for (int i = 0; i < 450; ++i) {
        second->Log("turn %d", i);
    }
    EXPECT_EQ(view_->Header(8) - counter, 450u);
    EXPECT_EQ(view_->Header(4), (slot + 450) % RingView::kSlots);
    EXPECT_EQ(view_->Slot(RingView::kSlots)[0] + view_->Slot(RingView::kSlots)[201], 0);
}

TEST_F(LoggerTest, SurvivesADamagedHeader) {
    for (const std::uint32_t damage : {199u, 200u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        view_->Header(4) = damage;
        view_->Header(12) = 0;
        logger_->Log("damage %lu", static_cast<unsigned long>(damage));
        EXPECT_LT(view_->Header(4), RingView::kSlots);
        view_->Header(12) = RingView::kSlots;
        EXPECT_EQ(Newest().text, "damage " + std::to_string(damage));
    }
}

TEST_F(LoggerTest, GoesOnAfterAProcessDiedWithTheMutex) {
    ASSERT_EQ(ChildProcess::Self("die-with-mutex").Wait(), 7u);
    logger_->Log("after death");
    EXPECT_EQ(Newest().text, "after death");
    ASSERT_EQ(ChildProcess::Self("die-with-mutex").Wait(), 7u);
    const auto logger = Logger::Create(); // meets it, too
    logger->SetComponent(component_.c_str());
    logger->Log("opened after death");
    EXPECT_EQ(Newest().text, "opened after death");
}

// Only the first of many records is waited for, and by a thread of the host hardly at all.
TEST_F(LoggerTest, DropsRecordsWhileTheRingStaysLocked) {
    const LPTHREAD_START_ROUTINE logMany = [](void* logger) WINAPI -> DWORD {
        for (int i = 0; i < 20; ++i) {
            static_cast<Logger*>(logger)->Log("dropped");
        }
        return 0;
    };
    for (const bool isOwn : {true, false}) {
        view_->Lock();
        const DWORD start = GetTickCount();
        const UniqueHandle writer =
            isOwn ? ModulePin::StartThread(logMany, logger_.get())
                  : UniqueHandle(CreateThread(nullptr, 0, logMany, logger_.get(), 0, nullptr));
        ASSERT_EQ(WaitForSingleObject(writer.Get(), 60000), WAIT_OBJECT_0);
        const DWORD took = GetTickCount() - start;
        EXPECT_TRUE(isOwn ? took >= 950 && took < 5000 : took < 900) << took;
        view_->Unlock();
        EXPECT_EQ(view_->RecordsOf(component_).size(), isOwn ? 0u : 1u);
        logger_->Log("not dropped");
        EXPECT_EQ(Newest().text, "not dropped");
    }
}

TEST(Logger, SharesOneRingAcrossSessionsFromWindows2000On) {
    TERVANE_ONLY_ON_WINE();
    for (const auto& [version, ring] : {std::pair("win98", 1u), {"nt40", 1u}, {"win2k", 2u}}) {
        EXPECT_EQ(ChildProcess::SelfOn(version, "name-ring").Wait(), ring) << version;
    }
}

TEST_F(LoggerTest, WakesThoseWhoWaitForRecords) {
    const UniqueHandle event(
        OpenEventA(SYNCHRONIZE, FALSE, "Global\\ZelKit::WIN32_Logger::Event2"));
    ASSERT_TRUE(event);
    std::atomic<bool> isWoken = false;
    const UniqueHandle waiting = ModulePin::StartThread(
        [&] { isWoken = WaitForSingleObject(event.Get(), 20000) == WAIT_OBJECT_0; });
    for (int i = 0; i < 1000 && !isWoken; ++i) {
        logger_->Log("wake up");
        Sleep(5);
    }
    WaitForSingleObject(waiting.Get(), INFINITE);
    EXPECT_TRUE(isWoken);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT)); // only then
}

TEST_F(LoggerTest, DefaultLoggerFormatsTwiceAndReadsNothingThatNobodyGave) {
    ADefaultLogger own;
    ASSERT_TRUE(own.IsValid());
    const auto newest = [this] { return Newest("DEBUG"); };
    own.Log("Operation", LogLevel::kWarning, "%d%%%% of %s", 50, "all");
    EXPECT_EQ(newest().text, "50% of all");
    EXPECT_EQ(newest().function, "Operation");
    EXPECT_EQ(newest().level, 1u);
    EXPECT_EQ(ChildProcess::Self("log-by-default").ReadLine(), "3 free 50%");
    // What a server might have sent, on the way into the log.
    own.Log("Operation", LogLevel::kTrace, "[%s]", "%s%S%ls");
    EXPECT_EQ(newest().text, "[]");
    std::string hostile;
    while (hostile.size() < 505) {
        hostile += "%n%*.*f%s";
    }
    own.Log("Operation", LogLevel::kTrace, "%s", hostile.c_str());
    own.Log("Operation", LogLevel::kTrace, "%s", "%2000000000d%s");
    own.Log("Operation", LogLevel::kTrace, "after");
    EXPECT_EQ(newest().text, "after");
    EXPECT_FALSE(ALogger(nullptr).IsValid());
    ALogger(nullptr).Log("Operation", LogLevel::kTrace, "nowhere");
}

enum Ring : DWORD { kSession = 1, kMachine, kOwn }; // as the second process answers, see main.cpp

const std::string kEvent = "ZelKit::WIN32_Logger::Event2";
const std::string kMutex = "ZelKit::WIN32_Logger::Mutex2";
const std::string kSection = "ZelKit::WIN32_Logger::Mapping2";
const std::string kGlobal = "Global\\";

using Maker = HANDLE (*)(const char* name);
const Maker kMakeEvent = [](const char* name) { return CreateEventA(nullptr, TRUE, FALSE, name); };
const Maker kMakeMutex = [](const char* name) { return CreateMutexA(nullptr, FALSE, name); };

template <DWORD protection, DWORD size = RingView::kSize>
HANDLE MakeSection(const char* name) {
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, protection, 0, size, name);
}

// As it should be, but nobody is let in.
HANDLE MakeForbidden(const char* name) {
    ACL nobody;
    InitializeAcl(&nobody, sizeof nobody, ACL_REVISION);
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    return CreateFileMappingA(INVALID_HANDLE_VALUE, &attributes, PAGE_READWRITE, 0, RingView::kSize,
                              name);
}

// Nobody may have the log open when these tests begin, so those of all obstacles leave the logging
// to second processes.
class RingChoice : public testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(RingView().IsOpen()) << "somebody has the log open"; }
};

TEST_F(RingChoice, IsTheNextWhereOneIsNotWhatItShouldBe) {
    constexpr Maker kSmall = MakeSection<PAGE_READWRITE, 4096>;
    const struct {
        Maker make;
        std::vector<std::string> names;
        DWORD ring;
    } rows[] = {
        {kMakeEvent, {}, kMachine},
        {kMakeEvent, {kGlobal + kSection}, kSession},
        {kMakeEvent, {kGlobal + kMutex}, kSession},
        {kMakeMutex, {kGlobal + kEvent}, kSession},
        {kSmall, {kGlobal + kSection}, kSession},
        {MakeSection<PAGE_READWRITE | SEC_RESERVE>, {kGlobal + kSection}, kSession},
        {MakeForbidden, {kGlobal + kSection}, kSession},
        {kSmall, {kGlobal + kSection, kSection}, kOwn},
        {kMakeEvent, {kGlobal + kMutex, kMutex}, kOwn},
    };
    // What the viewer says then, in the order of the numbers above.
    const char* const shown[] = {"", "showing the log of this session",
                                 "showing the machine-wide log", "neither"};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        std::vector<UniqueHandle> obstacles;
        for (const std::string& name : row.names) {
            obstacles.emplace_back(row.make(name.c_str()));
            ASSERT_TRUE(obstacles.back());
        }
        EXPECT_EQ(ChildProcess::Self("name-ring").Wait(), row.ring);
        auto viewer = ChildProcess::Program(L"..\\tools\\log_viewer.exe", L"dump");
        EXPECT_NE(viewer.ReadLine().value_or("").find(shown[row.ring]), std::string::npos);
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
    auto viewer = ChildProcess::Program(L"..\\tools\\log_viewer.exe", L"dump");
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
