#include "bench/WindowBench.h"

#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "bench/ManyWindows.h"
#include "bench/RequestCount.h"

namespace bench {
namespace {

using tervane::Variant;

constexpr int kWindows = 500;
constexpr int kChildren = 20;
constexpr LONG kInvisible = 2;
constexpr LONG kNotFound = 3;

class Search {
public:
    Search(std::wstring_view topLevel, std::wstring_view child)
        : topLevel_(Text(topLevel)), child_(Text(child)) {}

    void Expect(LONG expected) const {
        const auto state = manager_.Call(L"GetWindowState", {&topLevel_, &child_}).As(VT_I4);
        if (!state || state->Get().lVal != expected) {
            Fail("finding the window by its pattern", E_UNEXPECTED);
        }
    }

private:
    LateBound manager_{L"Tervane.WindowMgr"};
    Variant topLevel_;
    Variant child_;
};

void ExpectFound(HWND window) {
    if (window == nullptr) {
        Fail("finding the window by the bare loop", E_UNEXPECTED);
    }
}

} // namespace

void CompareWindowSearch() {
    {
        const ManyWindows windows({kWindows});
        const Search search(windows.LastTitle(), L"");
        Compare(
            {"find the last of 500 windows by pattern : bare loop", 1.25, 3},
            [&] { search.Expect(kInvisible); },
            [&] { ExpectFound(FindByBareLoop(windows.LastTitle())); });
    }
    const ManyWindows windows({kWindows, kChildren});
    const Search search(L"Bench window number", windows.LastChildTitle());
    Compare(
        {"find one child among 500 x 20 windows : bare loop", 1.25, 1, 5},
        [&] { search.Expect(kInvisible); },
        [&] { ExpectFound(FindBelowByBareLoop(windows.LastChildTitle())); });
}

void CountWindowSearch() {
    const char* const kWhat = "a window without a title, in a search : bare loop";
    const ManyWindows windows({kWindows, 0, false});
    const Search search(L"no window has this title", L"");
    search.Expect(kNotFound);
    MarkRequests({kWhat, kWindows, 2.5});
    search.Expect(kNotFound);
    MarkRequests({.what = kWhat, .units = kWindows, .isTheirs = true});
    FindByBareLoop(L"no window has this title");
    MarkEndOfRequests();
}

} // namespace bench
