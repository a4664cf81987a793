#include "ZelBase/Logger.h"
#include "tests/support/TestThreads.h"
#include "tests/zelbase/ChildProcess.h"
#include "tests/zelbase/RingView.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <vector>

namespace ZelBase::test {
namespace {

constexpr char kViewer[] = "..\\tools\\log_viewer.exe";

ChildProcess StartViewer(const std::string& arguments) {
    return ChildProcess::Program(kViewer, arguments);
}

// Starts following and comes back when records from now on will be seen.
ChildProcess StartFollowing(const std::string& options) {
    ChildProcess viewer = StartViewer("follow " + options);
    EXPECT_TRUE(viewer.HasStarted()) << "build log_viewer first";
    EXPECT_NE(viewer.ReadLine().value_or("").find("following"), std::string::npos);
    return viewer;
}

std::vector<std::string> Columns(const std::string& line) {
    std::vector<std::string> columns;
    std::istringstream stream(line);
    for (std::string column; std::getline(stream, column, '\t');) {
        columns.push_back(column);
    }
    columns.resize(8);
    return columns;
}

std::vector<std::string> AllLines(ChildProcess& child) {
    std::vector<std::string> lines;
    while (const auto line = child.ReadLine()) {
        if (!line->starts_with("log_viewer: ")) { // what it says besides
            lines.push_back(*line);
        }
    }
    return lines;
}

TEST(LogViewer, DumpsWhatIsAskedForOneLineEach) {
    const auto logger = Logger::Create();
    logger->SetComponent("ViewerOne");
    logger->Log("Operation", LogLevel::kError, 77u, "two\r\nlines\tand \x1b[31m\\");
    logger->Log("Operation", LogLevel::kTrace, "traced");
    logger->SetComponent("ViewerTwo");
    logger->Log("Operation", LogLevel::kWarning, "warned");
    logger->SetComponent("ViewerThree");
    logger->Log("Operation", LogLevel::kError, "not asked for");

    auto all = StartViewer("dump --component viewerone --component VIEWERTWO");
    const auto lines = AllLines(all);
    EXPECT_EQ(all.Wait(), 0u);
    ASSERT_EQ(lines.size(), 3u);
    const auto columns = Columns(lines[0]);
    char process[32];
    std::snprintf(process, sizeof process, "0x%lx", GetCurrentProcessId());
    EXPECT_EQ(columns[0].size(), std::string("2003-01-31 23:59:59").size());
    EXPECT_EQ(columns[1], process);
    EXPECT_EQ(columns[3], "ViewerOne");
    EXPECT_EQ(columns[4], "Operation");
    EXPECT_EQ(columns[5], "0");
    EXPECT_EQ(columns[6], "77");
    EXPECT_EQ(columns[7], "two\\x0d\\x0alines\\x09and \\x1b[31m\\x5c");
    EXPECT_EQ(Columns(lines[1])[7], "traced");
    EXPECT_EQ(Columns(lines[2])[7], "warned");

    auto grave = StartViewer("--level 1 --component ViewerOne --component ViewerTwo");
    EXPECT_EQ(AllLines(grave).size(), 2u);
    auto first = StartViewer("dump --count 1 --component ViewerTwo --component ViewerOne");
    EXPECT_EQ(AllLines(first), std::vector<std::string>{lines[0]});
}

TEST(LogViewer, RefusesArgumentsThatMakeNoSense) {
    for (const char* arguments :
         {"tail", "--level", "--level x", "--level 256", "--count 0", "--size 3", "dump follow"}) {
        auto viewer = StartViewer(arguments);
        EXPECT_EQ(viewer.Wait(), 2u) << arguments;
    }
}

// What the viewer shows is whole and in order although four processes write at once, and together
// with what it says it missed it is all that the ring has counted.
TEST(LogViewer, FollowsSeveralProcesses) {
    const auto logger = Logger::Create();
    logger->SetComponent("Writer end");
    RingView ring;
    auto viewer = StartFollowing("--level 255");
    const std::uint32_t countedBefore = ring.Header(8);
    std::vector<ChildProcess> writers;
    for (const char* name : {"WriterA", "WriterB", "WriterC", "WriterD"}) {
        writers.push_back(ChildProcess::Self("write " + std::string(name) + " 500"));
    }
    std::uint32_t counted = 0;
    tervane::test::TestThread end([&] {
        for (ChildProcess& writer : writers) {
            EXPECT_EQ(writer.Wait(), 0u);
        }
        logger->Log("end");
        counted = ring.Header(8) - countedBefore;
    });
    std::uint32_t seen = 0;
    std::map<std::string, int> last;
    for (std::string component; component != "Writer end";) {
        const auto line = viewer.ReadLine();
        ASSERT_TRUE(line);
        std::uint32_t missed = 0;
        if (std::sscanf(line->c_str(), "--- %u records missed ---", &missed) == 1) {
            seen += missed;
            continue;
        }
        ++seen;
        const auto columns = Columns(*line);
        component = columns[3];
        if (component.size() == 7 && component.starts_with("Writer")) {
            const int number = std::atoi(columns[6].c_str());
            const std::string n = std::to_string(number);
            const std::string filler(400, static_cast<char>('a' + number % 26));
            ASSERT_EQ(columns[7], n + " " + filler + " " + n);
            const auto [place, isFirst] = last.try_emplace(component, -1);
            ASSERT_GT(number, place->second) << component;
            place->second = number;
        }
    }
    end.join();
    EXPECT_EQ(seen, counted);
    EXPECT_GE(counted, 1000u);
}

// Nobody reads the viewer's output for a while: it stands still in the middle of its work, the
// writers do not, and afterwards it says how many records it has not seen.
TEST(LogViewer, SaysHowManyRecordsItMissed) {
    const auto logger = Logger::Create();
    logger->SetComponent("ViewerMissed");
    const std::string filler(200, 'x');
    auto viewer = StartFollowing("");
    constexpr int kRecords = 1500;
    for (int i = 0; i < kRecords; ++i) {
        logger->Log("Flood", LogLevel::kTrace, static_cast<std::uint32_t>(i), "%s", filler.c_str());
    }
    logger->Log("Flood", LogLevel::kTrace, "last");
    int shown = 0;
    int missedInAll = 0;
    for (std::string text; text != "last";) {
        const auto line = viewer.ReadLine();
        ASSERT_TRUE(line);
        int missed = 0;
        if (std::sscanf(line->c_str(), "--- %d records missed ---", &missed) == 1) {
            missedInAll += missed;
        } else {
            text = Columns(*line)[7];
            ++shown;
        }
    }
    EXPECT_GT(missedInAll, 0);
    EXPECT_GT(shown, 198);
    EXPECT_GE(shown + missedInAll, kRecords); // more, when others write too
}

// The next line that shows a record of that component.
std::string NextOf(ChildProcess& viewer, const std::string& component) {
    while (const auto line = viewer.ReadLine()) {
        if (Columns(*line)[3] == component) {
            return Columns(*line)[7];
        }
        unsigned missed = 0;
        std::sscanf(line->c_str(), "--- %u records missed ---", &missed);
        EXPECT_LT(missed, 100000u); // others may write, too
    }
    return "nothing";
}

// A writer that is killed in the middle of its record, and a damaged counter, neither end the
// following nor make up losses.
TEST(LogViewer, GoesOnWhenWritersDie) {
    const auto logger = Logger::Create();
    logger->SetComponent("ViewerGoesOn");
    auto viewer = StartFollowing("");
    logger->Log("before");
    EXPECT_EQ(NextOf(viewer, "ViewerGoesOn"), "before");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ChildProcess::Self("die-with-mutex").Wait(), 7u);
        logger->Log("after a death");
        EXPECT_EQ(NextOf(viewer, "ViewerGoesOn"), "after a death");
    }
    RingView ring;
    ring.Lock();
    ring.Header(8) -= 1000;
    ring.Unlock();
    std::string text;
    for (int i = 0; i < 100 && text != "after the damage"; ++i) {
        // What is written before the viewer has noticed cannot be told from what it knows.
        logger->Log("unnoticed");
        Sleep(20);
        logger->Log("after the damage");
        text = NextOf(viewer, "ViewerGoesOn");
    }
    EXPECT_EQ(text, "after the damage");
}

} // namespace
} // namespace ZelBase::test
