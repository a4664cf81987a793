#include "ZelBase/log/Logger.h"
#include "tests/support/TestThreads.h"
#include "tests/zelbase/ChildProcess.h"
#include "tests/zelbase/log/RingView.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <tuple>
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

std::string OwnId(const char* format) {
    char text[32];
    std::snprintf(text, sizeof text, format, GetCurrentProcessId());
    return text;
}

std::string Contents(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
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
    RingView().SetTimeOfNewest({6, 5, 4, 3, 1, 103, 0, 0, -1}); // 3 February 2003, 4:05:06
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
    EXPECT_EQ(columns[0], "2003-02-03 04:05:06");
    EXPECT_EQ(columns[1], OwnId("0x%lx"));
    EXPECT_EQ(columns[3], "ViewerOne");
    EXPECT_EQ(columns[4], "Operation");
    EXPECT_EQ(columns[5], "0");
    EXPECT_EQ(columns[6], "77");
    EXPECT_EQ(columns[7], "two\\x0d\\x0alines\\x09and \\x1b[31m\\x5c");
    EXPECT_EQ(Columns(lines[1])[7], "traced");
    EXPECT_EQ(Columns(lines[2])[7], "warned");
}

TEST(LogViewer, ShowsWhatIsAskedFor) {
    const auto logger = Logger::Create();
    logger->SetComponent("ViewerChoice");
    logger->Log("Read", LogLevel::kError, "failed");
    logger->Log("Write", LogLevel::kWarning, "Refused it");
    logger->Log("Write", LogLevel::kTrace, "done with it");
    const std::pair<std::string, std::vector<std::string>> kRows[] = {
        {"--level 1", {"failed", "Refused it"}},
        {"--function WRITE --level 1", {"Refused it"}},
        {"--function read --function write --count 2", {"failed", "Refused it"}},
        {"--text REFUSED --text faile", {"failed", "Refused it"}},
        {"--text it --function Read", {}},
        {"--process " + OwnId("%lu") + " --level 0", {"failed"}},
        {"--process 0xfffffff0 --process " + OwnId("0X%lX") + " --level 0", {"failed"}},
        {"--process 1", {}},
        {"--since 10m --level 0", {"failed"}},
        {"--since 2003-01-31 --level 0", {"failed"}},
        {"--since \"2105-12-31 23:59:59\"", {}},
    };
    for (const auto& [options, texts] : kRows) {
        auto viewer = StartViewer(options + " --component ViewerChoice");
        std::vector<std::string> shown;
        for (const std::string& line : AllLines(viewer)) {
            shown.push_back(Columns(line)[7]);
        }
        EXPECT_EQ(shown, texts) << options;
        EXPECT_EQ(viewer.Wait(), 0u) << options;
    }
}

// The file has in UTF-8 what the output has in the code page (Western Europe's, in the tests).
TEST(LogViewer, SavesWhatItShows) {
    const auto logger = Logger::Create();
    logger->SetComponent("ViewerSave");
    logger->Log("Operation", LogLevel::kTrace, 7u, "\xe4 \"and\" \\ \t");
    const std::string file = testing::TempDir() + "viewer_saved.txt";
    const std::string options = " --component ViewerSave --save \"" + file + "\"";
    auto text = StartViewer(options);
    const auto lines = AllLines(text);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(Columns(lines[0])[7], "\xe4 \"and\" \\x5c \\x09");
    EXPECT_EQ(text.Wait(), 0u);
    EXPECT_TRUE(Contents(file).ends_with("\t\xc3\xa4 \"and\" \\x5c \\x09\r\n"));
    auto json = StartViewer("--json" + options);
    const auto objects = AllLines(json);
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_NE(objects[0].find(",\"level\":3,\"value\":7,\"time\":\"20"), std::string::npos);
    EXPECT_NE(objects[0].find("\",\"process\":\"" + OwnId("0x%lx") + "\",\"thread\":\"0x"),
              std::string::npos);
    EXPECT_TRUE(objects[0].ends_with(",\"component\":\"ViewerSave\",\"function\":\"Operation\","
                                     "\"text\":\"\\u00e4 \\u0022and\\u0022 \\u005c \\u0009\"}"));
    json.Wait();
    EXPECT_EQ(Contents(file), objects[0] + "\r\n");
    EXPECT_EQ(StartViewer("--save Q:\\nowhere\\file").Wait(), 1u);
}

TEST(LogViewer, RefusesArgumentsThatMakeNoSense) {
    for (const char* arguments :
         {"tail", "--level", "--level x", "--level 256", "--count 0", "--size 3", "dump follow",
          "--process 0x", "--process x", "--text \"\"", "--save \"\"", "--since 5", "--since 25:00",
          "--since 2003-04-31", "--since \"2003-04-30 1\"", "--since -1h"}) {
        auto viewer = StartViewer(arguments);
        EXPECT_EQ(viewer.Wait(), 2u) << arguments;
    }
    auto help = StartViewer("--help");
    EXPECT_TRUE(help.ReadLine().value_or("").starts_with("Shows the records"));
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

class LogViewerConsole : public testing::Test {
protected:
    LogViewerConsole() {
        FreeConsole(); // under Wine that may be one without windows and keys
        AllocConsole();
        SetConsoleCtrlHandler(GoOn, TRUE);
    }
    ~LogViewerConsole() override {
        SetConsoleCtrlHandler(GoOn, FALSE);
        FreeConsole();
    }
    // For all processes of this console.
    static void PressCtrlC() { EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)); }

private:
    static BOOL WINAPI GoOn(DWORD) { return TRUE; }
};

// Nobody reads the viewer's output for a while: it stands still in the middle of its work, the
// writers do not, and afterwards it says how many records it has not seen.
TEST_F(LogViewerConsole, SaysHowManyRecordsItMissed) {
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
    std::string line;
    while (!(line = viewer.ReadLine().value_or("")).starts_with("log_viewer")) {
        ASSERT_NE(line, "");
        int missed = 0;
        const bool isGap = std::sscanf(line.c_str(), "--- %d records missed ---", &missed) == 1;
        missedInAll += missed;
        shown += isGap ? 0 : 1;
        if (!isGap && Columns(line)[7] == "last") {
            PressCtrlC();
        }
    }
    EXPECT_GT(missedInAll, 0);
    EXPECT_GT(shown, 198);
    EXPECT_GE(shown + missedInAll, kRecords); // more, when others write too
    EXPECT_EQ(line, "log_viewer: " + std::to_string(shown) + " records shown, " +
                        std::to_string(missedInAll) + " missed");
    EXPECT_EQ(viewer.Wait(), 0u);
}

TEST_F(LogViewerConsole, HasColours) {
    const auto logger = Logger::Create();
    logger->SetComponent("ViewerColours");
    logger->Log("", LogLevel::kTrace, "plain");
    logger->Log("", LogLevel::kError, "red \xe4");
    logger->Log("", LogLevel::kWarning, "yellow");
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    for (const auto& [options, error, warning] :
         {std::tuple("", 0xC, 0x6), std::tuple("--plain ", 0x7, 0x7)}) {
        const UniqueFile screen(CreateConsoleScreenBuffer(
            GENERIC_READ | GENERIC_WRITE, 0, &inheritable, CONSOLE_TEXTMODE_BUFFER, nullptr));
        SetConsoleTextAttribute(screen.Get(), 0x7);
        auto viewer = ChildProcess::Program(
            kViewer, std::string(options) + "--component ViewerColours", screen.Get());
        EXPECT_EQ(viewer.Wait(), 0u);
        CONSOLE_SCREEN_BUFFER_INFO info{};
        ASSERT_TRUE(GetConsoleScreenBufferInfo(screen.Get(), &info));
        std::wstring text(static_cast<size_t>(info.dwSize.X) * 8, L' ');
        std::vector<WORD> colours(text.size());
        DWORD got = 0;
        ReadConsoleOutputCharacterW(screen.Get(), text.data(), text.size(), {0, 0}, &got);
        ReadConsoleOutputAttribute(screen.Get(), colours.data(), colours.size(), {0, 0}, &got);
        for (const auto& [word, colour] :
             {std::pair(L"plain", 0x7), std::pair(L"red \u00e4", error),
              std::pair(L"yellow", warning)}) {
            const size_t place = text.find(word);
            ASSERT_NE(place, std::wstring::npos) << options << word;
            EXPECT_EQ(colours[place], colour) << options << word;
        }
        EXPECT_EQ(info.wAttributes, 0x7);
    }
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
