// Runs the built script_host.exe in a process and a console of its own and collects what it prints.

#include "ZelBase/Handles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tervane::test {
namespace {

namespace fs = std::filesystem;

// Far beyond what any script here takes, even on a loaded machine.
constexpr DWORD kHangMs = 180'000;
constexpr DWORD kInterrupted = 0xC000013A;
constexpr char kGone[] = "destroyed\n0 sinks left\n";
constexpr wchar_t kProgId[] = L"ScriptHostTest.EventSource";
constexpr wchar_t kClassKey[] = L"CLSID\\{A95E3D70-41B6-4D8C-9E02-6C3F8B7D2A14}";

struct HostResult {
    std::string out;
    std::string error;
    DWORD exitCode = 0;
    // False if the host had to be ended by force.
    bool ended = false;
};

fs::path OwnFolder() {
    wchar_t path[MAX_PATH];
    return fs::path(std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH))).parent_path();
}

void SetKey(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

ZelBase::UniqueFile OpenInheritable(const fs::path& path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return ZelBase::UniqueFile(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                           &inheritable, disposition, FILE_ATTRIBUTE_NORMAL,
                                           nullptr));
}

// The file's bytes with lines ended by "\n".
std::string ReadLines(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    std::erase(text, '\r');
    return text;
}

class HostRunner {
public:
    // Makes a folder for scripts and registers the event source, for the machine: Wine's COM does
    // not look up the user's classes.
    HostRunner() {
        fs::create_directory(folder_);
        const std::wstring server = std::wstring(kClassKey) + L"\\InprocServer32";
        SetKey(std::wstring(kProgId) + L"\\CLSID", nullptr, kClassKey + 6);
        SetKey(server, nullptr, OwnFolder() / L"event_source" / L"event_source.dll");
        SetKey(server, L"ThreadingModel", L"Apartment");
    }
    ~HostRunner() {
        std::error_code ignored;
        RegDeleteTreeW(HKEY_CLASSES_ROOT, kProgId);
        RegDeleteTreeW(HKEY_CLASSES_ROOT, kClassKey);
        fs::remove_all(folder_, ignored);
    }
    HostRunner(const HostRunner&) = delete;
    HostRunner& operator=(const HostRunner&) = delete;

    // Writes the bytes to a script file; the result is its path.
    std::wstring Write(const std::wstring& name, std::string_view bytes) const {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
        return folder_ / name;
    }
    // Runs `script_host.exe <commandLine>` with `input` as its standard input.
    HostResult Run(const std::wstring& commandLine, std::string_view input = {}) const {
        // New files each time: the last host's console may still hold the old ones.
        static unsigned runs = 0;
        const fs::path outPath = folder_ / (L"out" + std::to_wstring(++runs));
        const fs::path errorPath = folder_ / (L"error" + std::to_wstring(runs));
        const ZelBase::UniqueFile out = OpenInheritable(outPath, GENERIC_WRITE, CREATE_ALWAYS);
        const ZelBase::UniqueFile error = OpenInheritable(errorPath, GENERIC_WRITE, CREATE_ALWAYS);
        const ZelBase::UniqueFile in = OpenInheritable(Write(L"in" + std::to_wstring(runs), input),
                                                       GENERIC_READ, OPEN_EXISTING);
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = in.Get();
        start.hStdOutput = out.Get();
        start.hStdError = error.Get();
        PROCESS_INFORMATION process{};
        const fs::path host = OwnFolder().parent_path() / L"tools" / L"script_host.exe";
        std::wstring line = L"\"" + host.wstring() + L"\" " + commandLine;
        HostResult result;
        // With a console of its own, Ctrl+C hits the host alone.
        if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NEW_CONSOLE,
                            nullptr, folder_.c_str(), &start, &process)) {
            result.error = "cannot start the host";
            return result;
        }
        const ZelBase::UniqueHandle thread(process.hThread);
        const ZelBase::UniqueHandle running(process.hProcess);
        result.ended = WaitForSingleObject(running.Get(), kHangMs) == WAIT_OBJECT_0;
        if (!result.ended) {
            TerminateProcess(running.Get(), 0);
            WaitForSingleObject(running.Get(), kHangMs);
        }
        GetExitCodeProcess(running.Get(), &result.exitCode);
        result.out = ReadLines(outPath);
        result.error = ReadLines(errorPath);
        return result;
    }
    // Writes a script named "test" + extension and runs it.
    HostResult RunText(const std::wstring& extension, std::string_view bytes) const {
        return Run(L"\"" + Write(L"test" + extension, bytes) + L"\"");
    }

private:
    const fs::path folder_ = fs::temp_directory_path() / L"script_host_test";
};

// The object that fires, for scripts in JScript.
#define SOURCE "var s = WScript.CreateObject('ScriptHostTest.EventSource', 's_'); "

// One script and all that is to be seen of it from outside.
struct Case {
    const char* name;
    const wchar_t* extension;
    const char* script;
    const char* out;
    // Standard error; a leading '*' asks for this ending only, because the path stands before it.
    const char* error = kGone;
    DWORD exitCode = 0;
};

void PrintTo(const Case& row, std::ostream* stream) {
    *stream << row.name;
}

class ScriptHost : public testing::TestWithParam<Case> {
protected:
    static const HostRunner& Runner() {
        static HostRunner runner;
        return runner;
    }
};

TEST_P(ScriptHost, RunsAsItShould) {
    const Case& row = GetParam();
    HostResult result = Runner().RunText(row.extension, row.script);
    EXPECT_TRUE(result.ended);
    EXPECT_EQ(result.out, row.out);
    std::string expected = row.error;
    if (expected.starts_with('*')) {
        expected.erase(0, 1);
        result.error.erase(0, result.error.size() - std::min(result.error.size(), expected.size()));
    }
    EXPECT_EQ(result.error, expected);
    EXPECT_EQ(result.exitCode, row.exitCode);
}

const Case kCases[] = {
    {"echo_js", L".js",
     "WScript.Echo();\n"
     "WScript.Echo('one', 2, true, null, undefined, [1, 2], 1.5);\n"
     "WScript.StdOut.Write('no line end'); WScript.StdOut.WriteLine();\n"
     "WScript.StdErr.WriteLine('error');",
     "\none 2 -1 null  1,2 1.5\nno line end\n", "error\n", 0},
    {"quit_cannot_be_caught_js", L".js",
     "try { WScript.Quit(7); } catch (e) {} finally { WScript.Echo('no'); } WScript.Echo('no');",
     "", "", 7},
    {"quit_cannot_be_resumed_vbs", L".vbs",
     "On Error Resume Next\nWScript.Quit -2\nWScript.Echo \"no\"", "", "", 0xFFFFFFFE},
    {"compile_error_js", L".js", "WScript.Echo('no');\n  foo bar;", "",
     "*test.js(2, 7) Microsoft JScript compilation error: Syntax error\n", 1},
    {"runtime_error_js", L".js", "WScript.Echo('yes');\n\n  nope();\nWScript.Echo('no');", "yes\n",
     "*\\test.js(3, 3) Microsoft JScript runtime error: Object expected\n", 1},
    {"runtime_error_vbs", L".vbs", "WScript.Echo \"yes\"\n Err.Raise 1000, \"src\", \"why\"",
     "yes\n", "*\\test.vbs(2, 2) src: why\n", 1},
    {"errors_of_members_are_the_scripts_js", L".js",
     "function attempt(f) { try { f(); } catch (e) { WScript.Echo(e.description); } }\n"
     "attempt(function () { WScript.CreateObject('no.such.class'); });\n"
     "attempt(function () { WScript.Sleep(-1); });\n"
     "attempt(function () { WScript.Arguments(0); });\n"
     "attempt(function () { WScript.Quit('soon'); });\n"
     "attempt(function () { WScript.ConnectObject(new Object(), 'x_'); });\n"
     "attempt(function () { WScript.DisconnectObject(5); });",
     "Could not locate automation class named \"no.such.class\".\n"
     "A time in milliseconds is needed.\nSubscript out of range\n"
     "The exit code must be a number.\nCould not connect object: it describes no events.\n"
     "An object is needed.\n",
     "", 0},
    {"host_js", L".js",
     "WScript.Timeout = 60; WScript.Interactive = false;\n"
     "WScript.Echo('no'); WSH.StdOut.WriteLine(WScript.Timeout + ' ' + WScript.Interactive);\n"
     "WScript.Interactive = true; WScript.StdOut.WriteBlankLines(2);\n"
     "WScript.Echo(WScript.Version >= 5.6, WScript.Application === WScript,\n"
     "  WScript.FullName == WScript.Path + '\\\\script_host.exe');\n"
     "try { WScript.Timeout = 32768; } catch (e) { WScript.Echo(e.description); }",
     "60 false\n\n\n-1 -1 -1\nA time of at most 32767 seconds is needed.\n", "", 0},
    {"get_object_js", L".js",
     "function s_OnTick(number) { WScript.Echo('tick', number); }\n"
     "WScript.GetObject('', 'ScriptHostTest.EventSource', 's_').FireHere(1);\n"
     "WScript.Echo(WScript.GetObject('new:ScriptHostTest.EventSource').Advised);\n"
     "function attempt(a, b) {\n"
     "  try { WScript.GetObject(a, b); }\n"
     "  catch (e) { WScript.Echo(e.description.replace(/: .*/, '')); } }\n"
     "attempt('', 'no.such.class'); attempt('no such name');\n"
     "attempt('C:\\\\file', 'Scripting.Dictionary');",
     "tick 1\n0\nCould not locate automation class named \"no.such.class\".\n"
     "Could not get object named \"no such name\"\nCould not load object named \"C:\\file\"\n",
     "destroyed\ndestroyed\n0 sinks left\n", 0},
    {"object_with_a_site_vbs", L".vbs",
     "Set s = CreateObject(\"ScriptHostTest.EventSource\")\nWScript.Echo s.Advised\n", "0\n"},
    {"object_without_events_vbs", L".vbs",
     "On Error Resume Next\nSet d = WScript.CreateObject(\"Scripting.Dictionary\", \"d_\")\n"
     "WScript.Echo Err.Source, TypeName(d)",
     "WScript.CreateObject Empty\n", "", 0},
    // Events.
    {"arrive_in_order_with_numbers_for_flags_js", L".js",
     "var seen = [];\n"
     "function src_OnTick(number, last) { seen.push(number + ':' + last); }\n"
     "var source = WScript.CreateObject('ScriptHostTest.EventSource', 'src_');\n"
     "source.FireLater(3, 5);\n"
     "while (seen.length < 3) WScript.Sleep(10);\n"
     "WScript.Echo(seen.join(' '));",
     "1:0 2:0 3:-1\n"},
    {"find_handlers_in_any_case_vbs", L".vbs",
     "Dim done\n"
     "Sub source_ontick(number, last)\n"
     "  WScript.Echo number, last, VarType(last)\n  done = True\nEnd Sub\n"
     "Set source = WScript.CreateObject(\"ScriptHostTest.EventSource\")\n"
     "WScript.ConnectObject source, \"SOURCE_\"\n"
     "source.FireLater 1, 1\n"
     "Do Until done\n  WScript.Sleep 10\nLoop",
     "1 -1 2\n"},
    {"carry_texts_lists_and_objects_vbs", L".vbs",
     "Dim done\n"
     "Sub s_OnValues(text, list, object)\n"
     "  object.Add \"key\", text\n"
     "  WScript.Echo text, UBound(list), list(0), list(1), object.Item(\"key\")\n  done = True\n"
     "End Sub\n"
     "Set s = WScript.CreateObject(\"ScriptHostTest.EventSource\", \"s_\")\n"
     "s.FireValues\n"
     "Do Until done\n  WScript.Sleep 10\nLoop",
     "text 1 7 seven text\n"},
    {"on_the_scripts_thread_are_handled_at_once_js", L".js",
     "function s_OnTick(number, last) { WScript.Echo('tick', number); }\n" SOURCE
     "s.FireHere(5); WScript.Echo('after');",
     "tick 5\nafter\n"},
    {"without_handler_are_ignored_js", L".js", SOURCE "s.FireHere(5); WScript.Echo('after');",
     "after\n"},
    {"do_not_block_the_thread_that_fires_js", L".js",
     "var seen = 0;\n"
     "function s_OnTick(number, last) { ++seen; if (last) WScript.Echo(seen); }\n" SOURCE
     "s.FireLater(20000, 0); s.WaitForThreads(); WScript.Echo(seen);",
     "0\n20000\n"},
    {"that_have_arrived_are_handled_at_the_end_js", L".js",
     "function s_OnTick(number, last) { WScript.Echo('tick', number); }\n" SOURCE
     "s.FireLater(2, 0); s.WaitForThreads(); WScript.Echo('end');",
     "end\ntick 1\ntick 2\n"},
    // The destructor waits for its thread, which fires until then.
    {"stop_when_the_script_ends_js", L".js",
     "function s_OnTick() { WScript.Echo('no'); }\n" SOURCE
     "s.FireLater(10, 30); WScript.Echo('end');",
     "end\n"},
    {"meet_nobody_after_the_script_has_ended_js", L".js",
     "var seen = 0; function s_OnTick() { ++seen; }\n" SOURCE
     "s.FireForEver(); while (seen == 0) WScript.Sleep(1); WScript.Echo('end');",
     "end\n"},
    {"stop_when_disconnected_js", L".js",
     "var seen = 0;\n"
     "function s_OnTick(number) { ++seen; if (number == 2) WScript.DisconnectObject(s); }\n"
     "function t_OnTick(number) { WScript.Echo('t', number); }\n"
     "var s = new ActiveXObject('ScriptHostTest.EventSource');\n"
     "WScript.ConnectObject(s, 's_'); s.FireLater(5, 0); s.WaitForThreads();\n"
     "WScript.Sleep(0); WScript.Echo(seen, s.Advised);\n"
     "WScript.DisconnectObject(s);\n"
     "WScript.ConnectObject(s, 't_'); WScript.ConnectObject(s, 'x_'); s.FireHere(1);\n"
     "WScript.Echo(s.Advised); WScript.DisconnectObject(s); WScript.Echo(s.Advised);",
     "2 0\nt 1\n2\n0\n"},
    {"may_release_their_source_js", L".js",
     "function s_OnTick() { WScript.DisconnectObject(s); s = null; CollectGarbage();\n"
     "  WScript.StdErr.WriteLine('released'); }\n" SOURCE
     "s.FireLater(1, 1); while (s) WScript.Sleep(10); WScript.StdErr.WriteLine('end');",
     "", "destroyed\nreleased\nend\n0 sinks left\n", 0},
    {"interrupt_a_sleeping_handler_js", L".js",
     "var depth = 0, deepest = 0, seen = 0;\n"
     "function s_OnTick() {\n"
     "  if (++depth > deepest) deepest = depth;\n"
     "  WScript.Sleep(1); --depth; ++seen; }\n" SOURCE "s.FireLater(500, 0);\n"
     "while (seen < 500) WScript.Sleep(10); WScript.Echo(seen, deepest > 1, deepest < 20);",
     "500 -1 -1\n"},
    {"with_errors_end_the_script_js", L".js",
     "function s_OnTick(number) { if (number == 2)\n  nope(); }\n" SOURCE "s.FireLater(3, 1);\n"
     "try { while (true) WScript.Sleep(1000); } catch (e) { WScript.Echo('no'); }",
     "", "*\\test.js(2, 3) Microsoft JScript runtime error: Object expected\n0 sinks left\n", 1},
    {"may_quit_vbs", L".vbs",
     "Sub s_OnTick(number, last)\n  WScript.Quit 9\nEnd Sub\n"
     "Set s = WScript.CreateObject(\"ScriptHostTest.EventSource\", \"s_\")\n"
     "s.FireLater 1, 1\nWScript.Sleep 60000\nWScript.Echo \"no\"",
     "", "0 sinks left\n", 9},
    // Interruptions.
    // No sink left tells that the script was ended in good order.
    {"sleep_js", L".js",
     "var s = WScript.CreateObject('ScriptHostTest.EventSource', 's_'); s.PressCtrlC(100);\n"
     "try { WScript.Sleep(600000); } catch (e) {} WScript.Echo('no');",
     "", "0 sinks left\n", kInterrupted},
    {"calls_vbs", L".vbs",
     "Set s = WScript.CreateObject(\"ScriptHostTest.EventSource\", \"s_\") : s.PressCtrlC 100\n"
     "On Error Resume Next\nDo\n  x = WScript.ScriptName\nLoop",
     "", "0 sinks left\n", kInterrupted},
    {"busy_vbs", L".vbs",
     "Set s = WScript.CreateObject(\"ScriptHostTest.EventSource\") : s.PressCtrlC 100\n"
     "On Error Resume Next\nDo\n  x = x + 1\nLoop",
     "", "0 sinks left\n", kInterrupted},
    {"time_is_over_js", L".js",
     "var s = WScript.CreateObject('ScriptHostTest.EventSource', 's_'); WScript.Timeout = 1;\n"
     "try { WScript.Sleep(600000); } catch (e) {} WScript.Echo('no');",
     "", "*test.js Script error: the script ran out of its time.\n0 sinks left\n", 1},
};
INSTANTIATE_TEST_SUITE_P(Scripts, ScriptHost, testing::ValuesIn(kCases),
                         [](const auto& info) { return info.param.name; });

class ScriptHostFiles : public ScriptHost {};

TEST_F(ScriptHostFiles, PassArguments) {
    std::wstring path = Runner().Write(L"arguments.js", R"(
var a = WScript.Arguments, text = [];
for (var e = new Enumerator(a); !e.atEnd(); e.moveNext()) text.push(e.item());
WScript.Echo(a.length, a.Count(), a(1), WScript.Arguments(2), a.Item(0), text.join('|'));
WScript.Echo(WScript.ScriptName, WScript.ScriptFullName.length > 12, WScript.Interactive);)");
    HostResult result = Runner().Run(L"//nologo " + path + L" one \"two words\" \x20AC");
    EXPECT_EQ(result.out, "3 3 two words \xE2\x82\xAC one one|two words|\xE2\x82\xAC\n"
                          "arguments.js -1 -1\n");
    path =
        Runner().Write(L"arguments.vbs", "For Each a In WScript.Arguments\nWScript.Echo a\nNext");
    EXPECT_EQ(Runner().Run(path + L" one two").out, "one\ntwo\n");
    path = Runner().Write(L"named.vbs", R"(
Set n = WScript.Arguments.Named : Set u = WScript.Arguments.Unnamed
For Each name In n
  line = line & name & "=" & VarType(n(name)) & ":" & n.Item(name) & "|"
Next
WScript.Echo line, n.Count, n.Exists("PATH"), n.Exists("none"), VarType(n("none"))
WScript.Echo u.Count, u(0), WScript.Arguments.Unnamed(1), WScript.Arguments.Named("On"))");
    EXPECT_EQ(Runner().Run(path + L" a /Path:\"C:\\x y\" /on+ /off- /v /e: b /path:2").out,
              "Path=8:C:\\x y|on=11:True|off=11:False|v=0:|e=8:| 5 -1 0 0\n2 a b -1\n");
}

TEST_F(ScriptHostFiles, ReadStandardInput) {
    const std::wstring path = Runner().Write(L"input.js", R"(
var i = WScript.StdIn, text = [];
text.push(i.Read(2), i.Line + ':' + i.Column, i.AtEndOfLine, i.ReadLine(), i.Line);
i.Skip(1); i.SkipLine();
text.push(i.ReadLine(), i.AtEndOfStream, i.ReadAll(), i.AtEndOfStream, i.AtEndOfLine);
try { i.ReadLine(); } catch (e) { text.push(e.number & 0xFFFF, e.description); }
WScript.Echo(text.join('|'));)");
    // What is no UTF-8 is of the code page.
    for (const std::string letter : {"\xC3\xA4", "\xE4"}) {
        EXPECT_EQ("a\xC3\xA4|1:3|false|c|2|x|false|\nend|true|true|62|Input past end of file\n",
                  Runner().Run(path, "\xEF\xBB\xBF\x61" + letter + "c\r\nskip\nx\n\nend").out);
    }
    // Characters that two pieces of 4,096 bytes share.
    const std::wstring count =
        Runner().Write(L"count.vbs", "WScript.Echo Len(WScript.StdIn.ReadAll)");
    std::string euros;
    for (int i = 0; i < 3000; ++i) {
        euros += "\xE2\x82\xAC";
    }
    EXPECT_EQ(Runner().Run(count, euros).out, "3000\n");
}

TEST_F(ScriptHostFiles, MayBeSilentAndLimited) {
    const std::wstring path = Runner().Write(
        L"silent.js", "WScript.Echo('no'); WScript.StdOut.WriteLine('yes'); nope();");
    const HostResult silent = Runner().Run(L"//b " + path);
    EXPECT_EQ(silent.out + silent.error, "yes\n");
    EXPECT_EQ(silent.exitCode, 1u);
    const HostResult limited = Runner().Run(L"//t:1 " + Runner().Write(L"busy.js", "for (;;) {}"));
    EXPECT_TRUE(limited.error.ends_with("the script ran out of its time.\n"));
    EXPECT_EQ(limited.exitCode, 1u);
}

TEST_F(ScriptHostFiles, ComeInManyEncodings) {
    using namespace std::string_literals;
    const std::pair<std::string, const char*> kFiles[] = {
        {"WScript.Echo('\xC3\xA4\xE2\x82\xAC');"s, "\xC3\xA4\xE2\x82\xAC\n"},
        {"\xEF\xBB\xBFWScript.Echo('\xC3\xA4');"s, "\xC3\xA4\n"},
        {"WScript.Echo('\xE4');"s, "\xC3\xA4\n"}, // the code page of Western Europe
        {"\xFF\xFE"s + "W\0S\0c\0r\0i\0p\0t\0.\0E\0c\0h\0o\0(\0'\0\xE4\0'\0)\0"s, "\xC3\xA4\n"},
        {"\xFE\xFF"s + "\0W\0S\0c\0r\0i\0p\0t\0.\0E\0c\0h\0o\0(\0'\x20\xAC\0'\0)"s,
         "\xE2\x82\xAC\n"},
        {""s, ""},
    };
    for (const auto& [bytes, out] : kFiles) {
        HostResult result = Runner().RunText(L".js", bytes);
        EXPECT_EQ(result.out, out) << bytes;
        EXPECT_EQ(result.error, "");
    }
    for (const std::string& bytes :
         {"WScript.Echo(1);\0no();"s, "\xFF\xFEW\0S"s, "\xEF\xBB\xBF\xFF"s}) {
        HostResult result = Runner().RunText(L".js", bytes);
        EXPECT_TRUE(result.error.ends_with("test.js\": it is no text file.\n")) << result.error;
        EXPECT_EQ(result.exitCode, 1u);
    }
}

TEST_F(ScriptHostFiles, AreTakenByTheEngineThatIsNamed) {
    std::wstring path = Runner().Write(L"script.txt", "WScript.Echo typename(1)");
    EXPECT_EQ(Runner().Run(L"//e:vbscript " + path).out, "Integer\n");
    const std::pair<std::wstring, const char*> kRefusals[] = {
        {path, "No script engine is known for \"script.txt\"; name one with //E:.\n"},
        {L"//E:No.Engine " + path, "Cannot start script engine \"No.Engine\": Error 0x800401F3\n"},
        {L"//E:Scripting.Dictionary " + path,
         "Cannot start script engine \"Scripting.Dictionary\": Error 0x80004002\n"},
        {L"missing.js", "Cannot read script \"missing.js\": File not found.\n"},
    };
    for (const auto& [commandLine, error] : kRefusals) {
        HostResult result = Runner().Run(commandLine);
        EXPECT_EQ(result.error, error);
        EXPECT_EQ(result.exitCode, 1u);
    }
}

TEST_F(ScriptHostFiles, NeedAProperCommandLine) {
    for (const wchar_t* commandLine :
         {L"", L"//Frobnicate a.js", L"//E: a.js", L"//T:x a.js", L"//T:32768 a.js"}) {
        HostResult result = Runner().Run(commandLine);
        EXPECT_NE(result.error.find("Usage: script_host"), std::string::npos);
        EXPECT_EQ(result.exitCode, 2u);
    }
    HostResult help = Runner().Run(L"//?");
    EXPECT_TRUE(help.out.starts_with("Usage: script_host")) << help.out;
    EXPECT_EQ(help.exitCode, 0u);
}

} // namespace
} // namespace tervane::test
