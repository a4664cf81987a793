// soak MINUTES [SEED]: six apartments at a time work with random calls, round after round, until
// the time is over. Between the rounds nothing runs, and what the process then uses is written
// down. Ends with 0 when nothing has grown and no event was lost.

#include "soak/RandomCalls.h"
#include "support/ProcessUsage.h"
#include "support/TestThreads.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tervane::test {
namespace {

constexpr unsigned kApartments = 6;
constexpr DWORD kRound = 15'000; // ms of calls in a round
constexpr DWORD kRest = 30'000;  // ms for objects and threads to go

// What this process uses of the system.
struct Usage {
    std::size_t handles;
    std::size_t threads;
    std::size_t privateKb;
    std::size_t tlsSlots; // all below the lowest free one
};

Usage UsageNow() {
    return {OpenHandleCount(), ThreadCount(), CommittedMemory() / 1024, LowestFreeTlsSlot()};
}

std::size_t MedianOf(std::vector<Usage> part, std::size_t Usage::*figure) {
    const auto middle = part.begin() + static_cast<std::ptrdiff_t>(part.size() / 2);
    std::nth_element(part.begin(), middle, part.end(),
                     [figure](const Usage& a, const Usage& b) { return a.*figure < b.*figure; });
    return (*middle).*figure;
}

// Compares the medians of the second and the last quarter of the rounds, so that neither what is
// made once nor a single peak counts. What has grown, "" when nothing has; too few rounds prove
// nothing.
std::string GrowthOf(const std::vector<Usage>& all) {
    constexpr std::size_t kFewestRounds = 8;
    struct Figure {
        const char* name;
        std::size_t Usage::*value;
        std::size_t tolerance;
    };
    constexpr Figure kFigures[] = {{"handles", &Usage::handles, 8},
                                   {"threads", &Usage::threads, 2},
                                   {"private KB", &Usage::privateKb, 2048},
                                   {"TLS slots", &Usage::tlsSlots, 0}};
    const auto quarter = static_cast<std::ptrdiff_t>(all.size() / 4);
    std::string grown;
    for (const Figure& figure : kFigures) {
        if (all.size() < kFewestRounds) {
            break;
        }
        const std::size_t before =
            MedianOf({all.begin() + quarter, all.begin() + 2 * quarter}, figure.value);
        const std::size_t after = MedianOf({all.end() - quarter, all.end()}, figure.value);
        if (after > before + figure.tolerance) {
            grown += std::string(figure.name) + " " + std::to_string(before) + " -> " +
                     std::to_string(after) + "; ";
        }
    }
    return grown;
}

struct Script {
    RandomCalls calls;
    bool succeeded = false;
};

// What is wrong; null when all is well.
const char* RunRound(unsigned seed, const LoopbackServer& server, long& calls) {
    std::vector<Script> scripts;
    for (unsigned i = 0; i < kApartments; ++i) {
        scripts.push_back({RandomCalls(seed + i, server)});
    }
    // Should one hang, scripts/soak ends this program.
    OnThreads(kApartments, [&scripts](int number) {
        scripts[number].succeeded = scripts[number].calls.Run(kRound);
    });
    for (const Script& script : scripts) {
        calls += script.calls.Calls();
        if (!script.succeeded) {
            return "events stay out";
        }
    }
    const bool gone = PumpUntil(
        [&] { return CountingSink::living == 0 && TestComponent::Get().CanUnloadNow() == S_OK; },
        kRest);
    return !gone ? "objects stay alive" : CountingSink::lost != 0 ? "events were lost" : nullptr;
}

int Soak(int minutes, unsigned seed) {
    LoopbackServer server("127.0.0.31");
    // Stays: with each unloading the dial-up networking of the tests would leave something behind.
    LoadLibraryA("rasapi32.dll");
    std::vector<Usage> series;
    const ULONGLONG start = GetTickCount64();
    long calls = 0;
    for (unsigned round = 0; GetTickCount64() - start < minutes * 60'000ULL; ++round) {
        const char* problem = RunRound(seed + round * kApartments, server, calls);
        const Usage usage = UsageNow();
        series.push_back(usage);
        std::printf("%5u s, seed %u: %zu handles, %zu threads, %zu KB, %zu TLS slots; %ld calls, "
                    "%ld events%s%s\n",
                    static_cast<unsigned>((GetTickCount64() - start) / 1000),
                    seed + round * kApartments, usage.handles, usage.threads, usage.privateKb,
                    usage.tlsSlots, calls, CountingSink::received.load(), problem ? ": " : "",
                    problem ? problem : "");
        std::fflush(stdout);
        if (problem) {
            return 1;
        }
    }
    const std::string growth = GrowthOf(series);
    std::printf("%s\n", growth.empty() ? "flat" : ("grown: " + growth).c_str());
    return growth.empty() ? 0 : 1;
}

} // namespace
} // namespace tervane::test

int main(int count, char** arguments) {
    const int minutes = count > 1 ? std::atoi(arguments[1]) : 0;
    if (minutes <= 0) {
        std::puts("usage: soak MINUTES [SEED]");
        return 2;
    }
    return tervane::test::Soak(minutes, count > 2 ? std::atoi(arguments[2]) : 1);
}
