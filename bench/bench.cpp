// What the component costs beside the system's own ways of doing the same. Run by scripts/bench
// with the DLL registered; prints one line per comparison, ours first.

#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "bench/LiveAdapterBench.h"
#include "bench/LogBench.h"
#include "bench/MailBench.h"
#include "bench/ManyAdapters.h"
#include "bench/ManyWindows.h"
#include "bench/NetworkBench.h"
#include "bench/ServerLoad.h"
#include "bench/SnapshotBench.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

using tervane::Variant;

namespace {

constexpr const wchar_t* kKey = L"Software\\TervaneBench";
constexpr int kWindows = 500;

Variant Text(std::wstring_view text) {
    auto value = Variant::FromText(text);
    if (!value) {
        bench::Fail("copying a text", E_OUTOFMEMORY);
    }
    return std::move(*value);
}

// First, while neither library is loaded.
void CompareLoading() {
    bench::ServerLoad ours(L"Tervane.Registry2");
    bench::ServerLoad theirs(L"Scripting.Dictionary");
    bench::Compare(
        {"load, create the first object, unload : Dictionary", 0, 5},
        [&] {
            ours.Run();
            ours.CheckUnloaded();
        },
        [&] { theirs.Run(); });
}

void CompareCreation() {
    bench::LateBound keepLoaded(L"Tervane.Registry2");
    bench::LateBound keepOtherLoaded(L"Scripting.Dictionary");
    bench::Compare(
        {"create and release an object : Dictionary", 0, 100},
        [] { bench::LateBound object(L"Tervane.Registry2"); },
        [] { bench::LateBound object(L"Scripting.Dictionary"); });
}

void ComparePropertyRead() {
    bench::LateBound ours(L"Tervane.WindowMgr");
    bench::LateBound theirs(L"Scripting.Dictionary");
    bench::Compare(
        {"late-bound property read : Dictionary.Count", 1.0, 2000},
        [&] { ours.Get(L"LastErrorCode"); }, [&] { theirs.Get(L"Count"); });
    DISPID ourNumber = ours.NumberOf(L"LastErrorCode");
    DISPID theirNumber = theirs.NumberOf(L"Count");
    bench::Compare(
        {"  of this: the lookup of the name", 0, 2000}, [&] { ours.NumberOf(L"LastErrorCode"); },
        [&] { theirs.NumberOf(L"Count"); });
    bench::Compare(
        {"  of this: the call by number", 0, 2000}, [&] { ours.Get(ourNumber); },
        [&] { theirs.Get(theirNumber); });
}

void CompareRegistryRead() {
    constexpr wchar_t text[] = L"a text of ordinary length, as settings have";
    RegSetKeyValueW(HKEY_CURRENT_USER, kKey, L"Text", REG_SZ, text, sizeof(text));
    bench::LateBound ours(L"Tervane.Registry2");
    bench::LateBound theirs(L"WScript.Shell");
    Variant hive = Variant::FromLong(1);
    Variant key = Text(kKey);
    Variant name = Text(L"Text");
    Variant path = Text(std::wstring(L"HKCU\\") + kKey + L"\\Text");
    auto check = [&text](const Variant& value) {
        if (value.Text() != text) {
            bench::Fail("reading the registry", E_UNEXPECTED);
        }
    };
    bench::Compare(
        {"Registry2.GetValue : WScript.Shell.RegRead", 1.0, 200},
        [&] {
            check(ours.Call(L"GetValue", {&hive, &key, &name}));
        },
        [&] { check(theirs.Call(L"RegRead", {&path})); });
    RegDeleteKeyW(HKEY_CURRENT_USER, kKey);
}

void CompareWindowSearch() {
    constexpr LONG kInvisible = 2;
    bench::ManyWindows windows(kWindows);
    bench::LateBound ours(L"Tervane.WindowMgr");
    Variant pattern = Text(windows.LastTitle());
    Variant noChild = Text(L"");
    auto search = [&] {
        auto state = ours.Call(L"GetWindowState", {&pattern, &noChild}).As(VT_I4);
        if (!state || state->Get().lVal != kInvisible) {
            bench::Fail("finding the window by its pattern", E_UNEXPECTED);
        }
    };
    auto bareLoop = [&] {
        if (bench::FindByBareLoop(windows.LastTitle()) == nullptr) {
            bench::Fail("finding the window by the bare loop", E_UNEXPECTED);
        }
    };
    bench::Compare({"find the last of 500 windows by pattern : bare loop", 2.0, 3}, search,
                   bareLoop);
}

// Whether the arguments ask for one of the benchmarks of the network library, which has then been
// run: "log", "look-ups", or "line-socket" with two sizes in megabytes.
bool RunNetworkBench(int argumentCount, char** arguments) {
    const std::string_view name = argumentCount > 1 ? arguments[1] : "";
    if (name == "look-ups") {
        bench::CompareLookUps();
    } else if (name == "line-socket" && argumentCount == 4) {
        bench::CompareLineSocket({std::stoi(arguments[2]), std::stoi(arguments[3])});
    } else if (name == "log") {
        bench::CompareLogging();
    } else if (name == "count-line-socket") {
        bench::CountLineSocket();
    } else {
        return false;
    }
    return true;
}

// Whether the arguments ask for one of the benchmarks with mail servers, which has then been run.
bool RunMailBench(int argumentCount, char** arguments) {
    constexpr std::pair<std::string_view, void (*)(const bench::MailPorts&)> kBenches[] = {
        {"mail", bench::CompareMail},
        {"count-mail", bench::CountMail},
        {"mail-memory-send", bench::MeasureSendingMemory},
        {"mail-memory-fetch", bench::MeasureFetchingMemory}};
    if (argumentCount < 5) {
        return false;
    }
    const auto port = [arguments](int index) {
        return static_cast<std::uint16_t>(std::stoi(arguments[index]));
    };
    for (const auto& [name, run] : kBenches) {
        if (arguments[1] == name) {
            run({port(2), port(3), port(4)});
            return true;
        }
    }
    return false;
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (auto status = bench::ManyWindows::RunIfAsked(argumentCount, arguments)) {
        return *status;
    }
    if (RunNetworkBench(argumentCount, arguments)) {
        return 0;
    }
    HRESULT result = CoInitialize(nullptr);
    if (FAILED(result)) {
        bench::Fail("starting COM", result);
    }
    if (RunMailBench(argumentCount, arguments)) {
        return 0;
    }
    CompareLoading();
    CompareCreation();
    ComparePropertyRead();
    CompareRegistryRead();
    CompareWindowSearch();
    bench::CompareSnapshot();
    bench::CompareAdapterLists();
    bench::CompareLiveAdapters();
    bench::CompareLogging();
    bench::CompareLineSocket({});
    CoUninitialize();
    return 0;
}
