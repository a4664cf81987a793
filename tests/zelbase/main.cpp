// The test program, and the second processes that its tests start: `ROLE ...`.

#include "ZelBase/Handles.h"
#include "ZelBase/log/ALogger.h"
#include "ZelBase/log/Logger.h"
#include "ZelBase/threads/ModulePin.h"
#include "tests/zelbase/log/RingView.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using Arguments = std::vector<std::string>;

// Writes records whose text is long and tells whether it is whole: "write COMPONENT COUNT".
int WriteRecords(const Arguments& arguments) {
    const auto logger = ZelBase::Logger::Create();
    logger->SetComponent(arguments[1].c_str());
    for (int i = 0; i < std::stoi(arguments[2]); ++i) {
        const std::string filler(400, static_cast<char>('a' + i % 26));
        logger->Log("WriteRecords", ZelBase::LogLevel::kTrace, static_cast<std::uint32_t>(i),
                    "%d %s %d", i, filler.c_str(), i);
    }
    return 0;
}

// Ends while it has the ring's mutex, as a process does that crashes in the middle of a record.
int DieWithMutex(const Arguments&) {
    ZelBase::UniqueHandle mutex(
        OpenMutexA(SYNCHRONIZE, FALSE, "Global\\ZelKit::WIN32_Logger::Mutex2"));
    const DWORD result = WaitForSingleObject(mutex.Get(), 10000);
    TerminateProcess(GetCurrentProcess(), result == WAIT_OBJECT_0 ? 7 : 1);
    return 1;
}

// Which ring a record of ours comes to: 1 the session's, 2 the machine's, 3 our own.
int RingOf(ZelBase::Logger& logger) {
    logger.SetComponent("RingOf");
    logger.Log("written");
    for (const auto& [prefix, ring] : {std::pair("", 1), std::pair("Global\\", 2)}) {
        ZelBase::test::RingView view(prefix);
        if (view.IsOpen() && !view.RecordsOf("RingOf").empty()) {
            return ring;
        }
    }
    return logger.IsValid() ? 3 : 9;
}

int NameRing(const Arguments&) {
    return RingOf(*ZelBase::Logger::Create());
}

// In a process of its own, because it keeps the log open.
int LogByDefault(const Arguments&) {
    ZelBase::Log("Operation", ZelBase::LogLevel::kTrace, "free %d%%%%", 50);
    for (const auto& record : ZelBase::test::RingView().RecordsOf("DEBUG")) {
        std::printf("%u %s\n", record.level, record.text.c_str());
    }
    return 0;
}

// Opens the log on a thread of the library's ("own") or on one that is not, and says how many
// milliseconds that took and which ring it got; one of the library's then logs until the ring is
// the machine's.
int MeetLockedRing(const Arguments& arguments) {
    const bool onOwnThread = arguments[1] == "own";
    std::unique_ptr<ZelBase::Logger> logger;
    const DWORD start = GetTickCount();
    const auto open = [&] { logger = ZelBase::Logger::Create(); };
    if (onOwnThread) {
        const auto thread = ZelBase::ModulePin::StartThread(open);
        WaitForSingleObject(thread.Get(), INFINITE);
    } else {
        open();
    }
    std::printf("%lu\n", GetTickCount() - start);
    int ring = RingOf(*logger);
    std::printf("ring %d\n", ring);
    std::fflush(stdout);
    for (int i = 0; onOwnThread && i < 300 && ring == 3; ++i) {
        Sleep(100);
        ring = RingOf(*logger);
    }
    return ring;
}

} // namespace

int main(int argc, char** argv) {
    const std::map<std::string, int (*)(const Arguments&)> roles = {
        {"write", WriteRecords},
        {"die-with-mutex", DieWithMutex},
        {"name-ring", NameRing},
        {"log-by-default", LogByDefault},
        {"meet-locked-ring", MeetLockedRing}};
    const auto role = roles.find(argc > 1 ? argv[1] : "");
    if (role != roles.end()) {
        return role->second(Arguments(argv + 1, argv + argc));
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
