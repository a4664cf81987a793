#include "ZelBase/log/Logger.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TestThreads.h"
#include "tests/zelbase/log/RingView.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <tuple>
#include <vector>

namespace ZelBase::test {
namespace {

using tervane::test::ChildProcess;
using Lines = std::vector<std::string>;

constexpr wchar_t kViewer[] = L"..\\tools\\log_viewer.exe";

ChildProcess StartViewer(const std::string& arguments) {
    return ChildProcess::Program(kViewer, std::wstring(arguments.begin(), arguments.end()));
}

// Starts following and comes back when records from now on will be seen.
ChildProcess StartFollowing(const std::string& options) {
    ChildProcess viewer = StartViewer("follow " + options);
    EXPECT_NE(viewer.ReadLine().value_or("").find("following"), std::string::npos)
        << "build log_viewer first";
    return viewer;
}

// What the viewer shows with these options, without what it says besides.
Lines Shown(const std::string& options) {
    ChildProcess viewer = StartViewer(options);
    Lines lines;
    while (const auto line = viewer.ReadLine()) {
        if (!line->starts_with("log_viewer: ")) {
            lines.push_back(*line);
        }
    }
    EXPECT_EQ(viewer.Wait(), 0u) << options;
    return lines;
}

Lines Columns(const std::string& line) {
    Lines columns;
    std::istringstream stream(line);
    for (std::string column; std::getline(stream, column, '\t');) {
        columns.push_back(column);
    }
    columns.resize(8);
    return columns;
}

std::unique_ptr<Logger> LoggerOf(const char* component) {
    auto logger = Logger::Create();
    logger->SetComponent(component);
    return logger;
}

std::string OwnId(const char* format) {
    char text[32];
    std::snprintf(text, sizeof text, format, GetCurrentProcessId());
    return text;
}

TEST(LogViewer, ShowsWhatIsAskedForOneLineEach) {
    const auto logger = LoggerOf("ViewerOne");
    logger->Log("Operation", LogLevel::kError, 77u, "two\r\nlines\tand \x1b[31m\\");
    RingView().SetTimeOfNewest({6, 5, 4, 3, 1, 103, 0, 0, -1}); // 3 February 2003, 4:05:06
    logger->Log("Write", LogLevel::kWarning, "Refused it");
    logger->SetComponent("ViewerTwo");
    logger->Log("Write", LogLevel::kTrace, "done with it");
    logger->SetComponent("ViewerThree");
    logger->Log("Write", LogLevel::kError, "not asked for");
    const std::string first = "two\\x0d\\x0alines\\x09and \\x1b[31m\\x5c";
    const std::pair<std::string, Lines> rows[] = {
        {"dump", {first, "Refused it", "done with it"}},
        {"--level 1", {first, "Refused it"}},
        {"--level 0", {first}},
        {"--function WRITE --level 1", {"Refused it"}},
        {"--function operation --function write --count 2", {first, "Refused it"}},
        {"--text REFUSED --text LINE", {first, "Refused it"}},
        {"--text it --function Operation", {}},
        {"--process " + OwnId("%lu") + " --level 0", {first}},
        {"--process 0xfffffff0 --process " + OwnId("0X%lX") + " --level 0", {first}},
        {"--process 1", {}},
        {"--since 10m --level 1", {"Refused it"}},
        {"--since 2003-01-31 --level 0", {first}},
        {"--since \"2003-02-03 04:05:07\" --level 0", {}},
    };
    for (const auto& [options, texts] : rows) {
        Lines shown;
        for (const auto& line : Shown(options + " --component viewerone --component VIEWERTWO")) {
            shown.push_back(Columns(line)[7]);
            if (shown.back() == first) {
                EXPECT_TRUE(line.starts_with("2003-02-03 04:05:06\t" + OwnId("0x%lx") + "\t0x"));
                EXPECT_NE(line.find("\tViewerOne\tOperation\t0\t77\t"), std::string::npos) << line;
            }
        }
        EXPECT_EQ(shown, texts) << options;
    }
}

// The file has in UTF-8 what the output has in the code page (Western Europe's, in the tests).
TEST(LogViewer, SavesWhatItShows) {
    const auto logger = LoggerOf("ViewerSave");
    logger->Log("Operation", LogLevel::kTrace, 7u, "\xe4 \"and\" \\ \t");
    const std::string file = testing::TempDir() + "viewer_saved.txt";
    const std::string options = " --component ViewerSave --save \"" + file + "\"";
    const auto contents = [&file] {
        std::ifstream stream(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    };
    const Lines lines = Shown(options);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(Columns(lines[0])[7], "\xe4 \"and\" \\x5c \\x09");
    EXPECT_TRUE(contents().ends_with("\t\xc3\xa4 \"and\" \\x5c \\x09\r\n"));
    const Lines objects = Shown("--json" + options);
    ASSERT_EQ(objects.size(), 1u);
    for (const std::string& part :
         {std::string(",\"level\":3,\"value\":7,\"time\":\"20"),
          "\",\"process\":\"" + OwnId("0x%lx") + "\",\"thread\":\"0x",
          std::string(",\"component\":\"ViewerSave\",\"function\":\"Operation\","
                      "\"text\":\"\\u00e4 \\u0022and\\u0022 \\u005c \\u0009\"}")}) {
        EXPECT_NE(objects[0].find(part), std::string::npos) << objects[0];
    }
    EXPECT_EQ(contents(), objects[0] + "\r\n");
    EXPECT_EQ(StartViewer("--save Q:\\nowhere\\file").Wait(), 1u);
}

TEST(LogViewer, RefusesArgumentsThatMakeNoSense) {
    for (const char* arguments :
         {"tail", "--level", "--level x", "--level 256", "--count 0", "--size 3", "dump follow",
          "--process 0x", "--process x", "--text \"\"", "--save \"\"", "--since 5", "--since 25:00",
          "--since 2003-04-31", "--since \"2003-04-30 1\"", "--since -1h"}) {
        EXPECT_EQ(StartViewer(arguments).Wait(), 2u) << arguments;
    }
    EXPECT_TRUE(Shown("--help")[0].starts_with("Shows the records"));
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

private:
    static BOOL WINAPI GoOn(DWORD) { return TRUE; }
};

// What the viewer shows is whole and in order although four processes write at once, and together
// with what it says it missed it is all that the ring has counted. While nobody reads its output it
// stands still, but the writers do not.
TEST_F(LogViewerConsole, FollowsSeveralProcesses) {
    const auto logger = LoggerOf("Writer end");
    RingView ring;
    auto viewer = StartFollowing("--level 255");
    const std::uint32_t countedBefore = ring.Header(8);
    std::vector<ChildProcess> writers;
    for (const char* name : {"WriterA", "WriterB", "WriterC", "WriterD"}) {
        writers.push_back(ChildProcess::Self("write " + std::string(name) + " 600"));
    }
    std::uint32_t counted = 0;
    tervane::test::TestThread end([&] {
        for (ChildProcess& writer : writers) {
            EXPECT_EQ(writer.Wait(), 0u);
        }
        logger->Log("end");
        counted = ring.Header(8) - countedBefore;
    });
    std::uint32_t shown = 0;
    std::uint32_t missed = 0;
    std::map<std::string, int> last;
    std::string line;
    while (!(line = viewer.ReadLine().value_or("")).starts_with("log_viewer")) {
        ASSERT_NE(line, "");
        if (std::uint32_t gap; std::sscanf(line.c_str(), "--- %u records missed ---", &gap) == 1) {
            missed += gap;
            continue;
        }
        if (++shown == 100) {
            end.join();
        }
        const Lines columns = Columns(line);
        if (columns[3] == "Writer end") { // for all processes of this console
            EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
        } else if (columns[3].size() == 7 && columns[3].starts_with("Writer")) {
            const int number = std::atoi(columns[6].c_str());
            const std::string n = std::to_string(number);
            const std::string filler(400, static_cast<char>('a' + number % 26));
            ASSERT_EQ(columns[7], n + " " + filler + " " + n);
            const auto [place, isFirst] = last.try_emplace(columns[3], -1);
            ASSERT_GT(number, place->second) << columns[3];
            place->second = number;
        }
    }
    EXPECT_GT(shown, 198u);
    EXPECT_GT(missed, 0u);
    EXPECT_EQ(shown + missed, counted);
    EXPECT_EQ(line, "log_viewer: " + std::to_string(shown) + " records shown, " +
                        std::to_string(missed) + " missed");
    EXPECT_EQ(viewer.Wait(), 0u);
}

TEST_F(LogViewerConsole, HasColours) {
    const auto logger = LoggerOf("ViewerColours");
    logger->Log("", LogLevel::kTrace, "plain");
    logger->Log("", LogLevel::kError, "red \xe4");
    logger->Log("", LogLevel::kWarning, "yellow");
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    for (const auto& [options, error, warning] :
         {std::tuple(L"", 0xC, 0x6), std::tuple(L"--plain ", 0x7, 0x7)}) {
        const UniqueFile screen(CreateConsoleScreenBuffer(
            GENERIC_READ | GENERIC_WRITE, 0, &inheritable, CONSOLE_TEXTMODE_BUFFER, nullptr));
        SetConsoleTextAttribute(screen.Get(), 0x7);
        auto viewer = ChildProcess::Program(
            kViewer, std::wstring(options) + L"--component ViewerColours", screen.Get());
        EXPECT_EQ(viewer.Wait(), 0u);
        CONSOLE_SCREEN_BUFFER_INFO info{};
        ASSERT_TRUE(GetConsoleScreenBufferInfo(screen.Get(), &info));
        std::wstring text(static_cast<std::size_t>(info.dwSize.X) * 8, L' ');
        std::vector<WORD> colours(text.size());
        DWORD got = 0;
        ReadConsoleOutputCharacterW(screen.Get(), text.data(), text.size(), {0, 0}, &got);
        ReadConsoleOutputAttribute(screen.Get(), colours.data(), colours.size(), {0, 0}, &got);
        for (const auto& [word, colour] :
             {std::pair(L"plain", 0x7), std::pair(L"red \u00e4", error),
              std::pair(L"yellow", warning)}) {
            const std::size_t place = text.find(word);
            ASSERT_NE(place, std::wstring::npos) << options << word;
            EXPECT_EQ(colours[place], colour) << options << word;
        }
        EXPECT_EQ(info.wAttributes, 0x7);
    }
}

// A writer that is killed in the middle of its record, and a damaged counter, neither end the
// following nor make up losses.
TEST(LogViewer, GoesOnWhenWritersDie) {
    const auto logger = LoggerOf("ViewerGoesOn");
    auto viewer = StartFollowing("");
    const auto next = [&viewer] {
        while (const auto line = viewer.ReadLine()) {
            if (Columns(*line)[3] == "ViewerGoesOn") {
                return Columns(*line)[7];
            }
            unsigned missed = 0;
            std::sscanf(line->c_str(), "--- %u records missed ---", &missed);
            EXPECT_LT(missed, 100000u); // others may write, too
        }
        return std::string("nothing");
    };
    for (int i = 0; i < 3; ++i) {
        logger->Log("written");
        EXPECT_EQ(next(), "written");
        EXPECT_EQ(ChildProcess::Self("die-with-mutex").Wait(), 7u);
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
        text = next();
    }
    EXPECT_EQ(text, "after the damage");
}

} // namespace
} // namespace ZelBase::test
