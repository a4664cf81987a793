#include "memory/FailingAllocator.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>

#include <objbase.h>
#include <oleauto.h>

namespace tervane::test {
namespace {

constexpr long kNever = std::numeric_limits<long>::max();

std::atomic<bool> counting = false;
std::atomic<long> counted = 0;
std::atomic<long> failing = kNever;
std::atomic<long> live = 0;

constexpr DWORD kMostCalls = 16;
void* calls[kMostCalls];
USHORT callCount = 0;

bool ShallFail() noexcept {
    const bool fails = counting && ++counted == failing;
    if (fails) {
        callCount = RtlCaptureStackBackTrace(1, kMostCalls, calls, nullptr);
    }
    return fails;
}

// COM asks it before and tells it after each allocation; an answer of no bytes fails the request.
class MemorySpy final : public IMallocSpy {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IMallocSpy);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; } // lives as long as the program
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override { return ShallFail() ? 0 : size; }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override {
        live += block != nullptr;
        return block;
    }
    void* STDMETHODCALLTYPE PreFree(void* block, BOOL seen) override {
        live -= block && seen;
        return block;
    }
    void STDMETHODCALLTYPE PostFree(BOOL) override {}
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** same, BOOL) override {
        *same = block;
        return ShallFail() ? 0 : size;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL) override { return block; }
    void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL) override { return size; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void*, BOOL, int did) override { return did; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}
};

} // namespace

bool WatchComMemory() {
    static MemorySpy spy;
    static const bool watches = SUCCEEDED(CoRegisterMallocSpy(&spy)); // once for the process
    const auto stopKeeping = reinterpret_cast<void(WINAPI*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"oleaut32"), "SetOaNoCache")));
    if (stopKeeping) {
        stopKeeping();
    }
    // Wine looks for texts that are older than the spy in a list that the first new one makes.
    SysFreeString(SysAllocString(L"text"));
    return watches && stopKeeping;
}

void FailAllocation(long number) {
    counted = 0;
    failing = number == 0 ? kNever : number;
    counting = true;
}

long StopFailing() {
    counting = false;
    return counted;
}

std::string WhereFailed() {
    std::string text;
    for (USHORT i = 0; i < callCount; ++i) {
        char address[24];
        std::snprintf(address, sizeof address, " %p", calls[i]);
        text += address;
    }
    return text;
}

long LiveBlocks() {
    return live;
}

} // namespace tervane::test

void* operator new(std::size_t size) {
    void* block = tervane::test::ShallFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (!block) {
        throw std::bad_alloc();
    }
    ++tervane::test::live;
    return block;
}

void operator delete(void* block) noexcept {
    tervane::test::live -= block != nullptr;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
