// The test program, and the second processes that its tests start: `--child ROLE ...`.

#include "ZelBase/Handles.h"
#include "ZelBase/Logger.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace {

// Writes `count` records whose text is long and tells whether it is whole.
int WriteRecords(const char* component, int count) {
    const auto logger = ZelBase::Logger::Create();
    logger->SetComponent(component);
    for (int i = 0; i < count; ++i) {
        const std::string filler(400, static_cast<char>('a' + i % 26));
        logger->Log("WriteRecords", ZelBase::LogLevel::kTrace, static_cast<std::uint32_t>(i),
                    "%d %s %d", i, filler.c_str(), i);
    }
    return 0;
}

// Ends while it has the ring's mutex, as a process does that crashes in the middle of a record.
int DieWithMutex() {
    ZelBase::UniqueHandle mutex(
        OpenMutexA(SYNCHRONIZE, FALSE, "Global\\ZelKit::WIN32_Logger::Mutex2"));
    const DWORD result = WaitForSingleObject(mutex.Get(), 10000);
    TerminateProcess(GetCurrentProcess(), result == WAIT_OBJECT_0 ? 7 : 1);
    return 1;
}

// Tells by its exit code what the ring is called here: 1 within the session, 2 across sessions.
int NameRing() {
    const auto logger = ZelBase::Logger::Create();
    const ZelBase::UniqueHandle local(
        OpenMutexA(SYNCHRONIZE, FALSE, "ZelKit::WIN32_Logger::Mutex2"));
    return !logger->IsValid() ? 9 : local ? 1 : 2;
}

int RunChild(int argc, char** argv) {
    if (argc == 5 && !std::strcmp(argv[2], "write")) {
        return WriteRecords(argv[3], std::atoi(argv[4]));
    }
    if (argc == 3 && !std::strcmp(argv[2], "die-with-mutex")) {
        return DieWithMutex();
    }
    if (argc == 3 && !std::strcmp(argv[2], "name-ring")) {
        return NameRing();
    }
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 2 && !std::strcmp(argv[1], "--child")) {
        return RunChild(argc, argv);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
