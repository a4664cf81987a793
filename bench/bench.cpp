// What the component costs beside the system's own ways of doing the same. Run by scripts/bench
// with the DLL registered; prints one row per comparison, ours first.
//
//   bench NAME            one of the benchmarks in the table at the end
//   bench NAME PORT PORT PORT
//                         one with the mail server and the timekeeper of mail_server.py

#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "bench/LiveAdapterBench.h"
#include "bench/LogBench.h"
#include "bench/MailBench.h"
#include "bench/ManyAdapters.h"
#include "bench/ManyWindows.h"
#include "bench/NetworkBench.h"
#include "bench/RegistryBench.h"
#include "bench/ServerLoad.h"
#include "bench/SnapshotBench.h"
#include "bench/WindowBench.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace {

// First, while neither library is loaded.
void CompareLoading() {
    bench::ServerLoad ours(L"Tervane.Registry2");
    bench::ServerLoad theirs(L"Scripting.Dictionary");
    bench::Compare(
        {"load, create the first object, unload : Scripting.Dictionary", 1.8, 5},
        [&] { ours.Run(); }, [&] { theirs.Run(); });
    // Once is enough: what keeps the library would keep it for good.
    ours.CheckUnloaded();
    theirs.CheckUnloaded();
}

void CompareCreation() {
    bench::LateBound keepLoaded(L"Tervane.Registry2");
    bench::LateBound keepOtherLoaded(L"Scripting.Dictionary");
    bench::Compare(
        {"create and release an object : Scripting.Dictionary", 0.95, 100},
        [] { bench::LateBound object(L"Tervane.Registry2"); },
        [] { bench::LateBound object(L"Scripting.Dictionary"); });
    const bench::ServerLoad ours(L"Tervane.Registry2");
    const bench::ServerLoad theirs(L"Scripting.Dictionary");
    bench::Compare(
        {"  of this: what the library does, without COM", -1, 1000}, [&] { ours.CreateLoaded(); },
        [&] { theirs.CreateLoaded(); });
}

void ComparePropertyRead() {
    bench::LateBound ours(L"Tervane.WindowMgr");
    bench::LateBound theirs(L"Scripting.Dictionary");
    bench::Compare(
        {"late-bound property read : Scripting.Dictionary.Count", 0.38, 2000},
        [&] { ours.Get(L"LastErrorCode"); }, [&] { theirs.Get(L"Count"); });
    DISPID ourNumber = ours.NumberOf(L"LastErrorCode");
    DISPID theirNumber = theirs.NumberOf(L"Count");
    bench::Compare(
        {"  of this: the lookup of the name", -1, 2000}, [&] { ours.NumberOf(L"LastErrorCode"); },
        [&] { theirs.NumberOf(L"Count"); });
    bench::Compare(
        {"  of this: the call by number", -1, 2000}, [&] { ours.Get(ourNumber); },
        [&] { theirs.Get(theirNumber); });
}

void CompareObjects() {
    CompareLoading();
    CompareCreation();
    ComparePropertyRead();
}

void CompareLineSocket() {
    bench::CompareLineSocket({});
}

constexpr std::pair<std::string_view, void (*)()> kBenches[] = {
    {"objects", CompareObjects},
    {"registry", bench::CompareRegistryRead},
    {"windows", bench::CompareWindowSearch},
    {"snapshot", bench::CompareSnapshot},
    {"installed-adapters", bench::CompareAdapterLists},
    {"live-adapters", bench::CompareLiveAdapters},
    {"log", bench::CompareLogging},
    {"line-socket", CompareLineSocket},
    {"look-ups", bench::CompareLookUps},
    {"count-registry", bench::CountRegistryRead},
    {"count-windows", bench::CountWindowSearch},
    {"count-line-socket", bench::CountLineSocket},
};

constexpr std::pair<std::string_view, void (*)(const bench::MailPorts&)> kMailBenches[] = {
    {"mail", bench::CompareMail},
    {"count-mail", bench::CountMail},
    {"mail-memory-send", bench::MeasureSendingMemory},
    {"mail-memory-fetch", bench::MeasureFetchingMemory},
};

int RunBench(std::string_view name) {
    for (const auto& [known, run] : kBenches) {
        if (known == name) {
            run();
            return 0;
        }
    }
    return 1;
}

int RunMailBench(std::string_view name, const bench::MailPorts& ports) {
    for (const auto& [known, run] : kMailBenches) {
        if (known == name) {
            run(ports);
            return 0;
        }
    }
    return 1;
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (auto status = bench::ManyWindows::RunIfAsked(argumentCount, arguments)) {
        return *status;
    }
    const HRESULT result = CoInitialize(nullptr);
    if (FAILED(result)) {
        bench::Fail("starting COM", result);
    }
    const auto port = [arguments](int index) {
        return static_cast<std::uint16_t>(std::stoi(arguments[index]));
    };
    int status = 1;
    if (argumentCount == 2) {
        status = RunBench(arguments[1]);
    } else if (argumentCount == 5) {
        status = RunMailBench(arguments[1], {port(2), port(3), port(4)});
    }
    CoUninitialize();
    return status;
}
