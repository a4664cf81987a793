#include "soak/RandomCalls.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

namespace tervane::test {
namespace {

constexpr std::size_t kMostObjects = 12;
constexpr DWORD kPatience = 120'000; // ms, for the last event
constexpr long kMostWaits = 100;     // identifiers of an object's waits, from 1

enum class Promise {
    kNever,
    kWhenCalled,   // every call that is answered with S_OK fires an event
    kWhenAnswered, // every call whose result is not 0
};

// The end of these objects ends what runs, without an event.
bool EndsSilently(const ClassFacts& type) {
    return type.clsid == __uuidof(::WindowMgr) || type.clsid == __uuidof(::AdapterInfo);
}

// The number of an event on the way to the one that is promised; 0: there is none.
DISPID ProgressOf(const ClassFacts& type) {
    return type.clsid == __uuidof(::RASMgr) ? 1 : 0;
}

Promise PromiseOf(std::wstring_view member) {
    constexpr std::wstring_view kCalled[] = {L"DNSLookup", L"TestTCPPort", L"Ping", L"ReleaseRenew",
                                             L"GetSystemInfo"};
    constexpr std::wstring_view kAnswered[] = {L"SendMail",       L"Connect",
                                               L"GetMailCount",   L"RetrieveMessage",
                                               L"DeleteMessage",  L"Disconnect",
                                               L"WaitOnWindow",   L"WaitForWindow",
                                               L"GetAdapterInfo", L"WaitForWindowToComeAndGo"};
    if (std::ranges::find(kCalled, member) != std::end(kCalled)) {
        return Promise::kWhenCalled;
    }
    return std::ranges::find(kAnswered, member) != std::end(kAnswered) ? Promise::kWhenAnswered
                                                                       : Promise::kNever;
}

} // namespace

bool RandomCalls::Run(DWORD milliseconds) {
    const Apartment apartment;
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < milliseconds) {
        Step();
        PumpUntil([] { return false; }, Below(20));
    }
    return Drain();
}

void RandomCalls::Step() {
    if (entries_.size() < kMostObjects && Below(4) == 0) {
        Make();
    } else if (!entries_.empty() && Below(12) == 0) {
        Drop(Below(static_cast<unsigned>(entries_.size())));
    } else if (Below(40) == 0) {
        DisturbPostbackWindows(); // with messages that nobody sent
    } else if (!entries_.empty()) {
        CallAnyMember(entries_[Below(static_cast<unsigned>(entries_.size()))]);
    }
}

void RandomCalls::Make() {
    const ClassFacts& type = kClasses[Below(std::size(kClasses))];
    Entry entry{&type, New(type.name), nullptr};
    // Enough for an operation to succeed; what comes later may change it.
    if (type.clsid == __uuidof(::SmtpCtl)) {
        PrepareSmtp(entry.object.Get(), server_);
    } else if (type.clsid == __uuidof(::PopCtl)) {
        PreparePop(entry.object.Get(), server_);
    }
    if (type.events && type.clsid != __uuidof(::ConfigureIE)) { // which fires none
        entry.sink = new CountingSink(EndsSilently(type), ProgressOf(type));
        Advise(entry.object.Get(), entry.sink);
    }
    entries_.push_back(std::move(entry));
}

void RandomCalls::CallAnyMember(Entry& entry) {
    ComPtr<ITypeInfo> info;
    TYPEATTR* attributes = nullptr;
    if (FAILED(entry.object->GetTypeInfo(0, 0, info.Put())) ||
        FAILED(info->GetTypeAttr(&attributes))) {
        return;
    }
    FUNCDESC* function = nullptr;
    if (SUCCEEDED(info->GetFuncDesc(Below(attributes->cFuncs), &function))) {
        // The members of IUnknown and IDispatch are listed as well, for languages that need them.
        if ((function->wFuncFlags & FUNCFLAG_FRESTRICTED) == 0) {
            Invoke(entry, *function, NameOf(info.Get(), function->memid));
        }
        info->ReleaseFuncDesc(function);
    }
    info->ReleaseTypeAttr(attributes);
}

void RandomCalls::Invoke(Entry& entry, const FUNCDESC& function, const std::wstring& name) {
    std::vector<Argument> arguments;
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) == 0) {
            arguments.emplace_back(AnyValue(parameter.tdesc.vt, name));
        }
    }
    const Promise promise = entry.sink ? PromiseOf(name) : Promise::kNever;
    if (promise != Promise::kNever) {
        entry.sink->Promise(); // before the call: the event may be faster than its return
    }
    const CallResult result = test::Invoke(entry.object.Get(), name.c_str(),
                                           static_cast<WORD>(function.invkind), arguments);
    ++calls_;
    const bool kept =
        result.status == S_OK && (promise == Promise::kWhenCalled ||
                                  result.value.As(VT_I4).value_or(Variant()).Get().lVal != 0);
    if (promise != Promise::kNever && !kept) {
        entry.sink->TakeBack();
    }
}

Argument RandomCalls::AnyValue(VARTYPE type, const std::wstring& member) {
    constexpr std::array kTexts = {L"",
                                   L"127.0.0.1",
                                   L"localhost",
                                   L"a.example",
                                   L"Software\\Soak",
                                   L"Name",
                                   L".*",
                                   L"(",
                                   L"a@b.example",
                                   L"Soak: one",
                                   L"76D636E1-1924-46F8-9F21-4771A07EA0E3",
                                   L"http://a.example/"};
    constexpr std::array kNumbers = {-1L, 0L, 1L, 2L, 3L, 5L};
    const wchar_t* text = kTexts[Below(kTexts.size())];
    const long number = kNumbers[Below(kNumbers.size())];
    switch (type) {
    case VT_BSTR:
        return text;
    case VT_BOOL:
        return Below(2) == 0;
    case VT_VARIANT:
        return Below(2) ? Argument(number) : Argument(text);
    case VT_DISPATCH:
    case VT_PTR: // a message, which is the only object that is ever asked for
        return New(L"EmailData");
    default:
        return member == L"Timeout" ? static_cast<long>(Below(5)) : number;
    }
}

// The object may be busy: it lives until its last event, and in half of the cases that event
// releases the last reference.
void RandomCalls::Drop(std::size_t index) {
    Entry entry = std::move(entries_[index]);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
    if (!entry.sink) {
        return;
    }
    if (!EndsSilently(*entry.type) && entry.sink->IsOwed() && Below(2) == 0) {
        entry.sink->ReleaseInEvent(AddReference(entry.object.Get()).Release());
    }
    entry.object.Reset();
    if (EndsSilently(*entry.type)) {
        entry.sink->Release();
    } else {
        dropped_.push_back(std::move(entry)); // its event needs this thread
    }
}

// A wait without a time-out ends only so.
void RandomCalls::EndWaits(Entry& entry) {
    for (long id = 1; entry.type->clsid == __uuidof(::WindowMgr) && id <= kMostWaits; ++id) {
        Call(entry.object.Get(), L"AbortWait", {id});
    }
}

bool RandomCalls::Drain() {
    for (Entry& entry : entries_) {
        EndWaits(entry);
    }
    const auto isOwed = [](const Entry& entry) { return entry.sink && entry.sink->IsOwed(); };
    const bool all = PumpUntil(
        [&] {
            return std::ranges::none_of(entries_, isOwed) && std::ranges::none_of(dropped_, isOwed);
        },
        kPatience);
    for (const auto* list : {&entries_, &dropped_}) {
        for (const Entry& entry : *list) {
            if (isOwed(entry)) {
                std::printf("%ls: an event stays out\n", entry.type->name);
            }
        }
    }
    while (!entries_.empty()) {
        Drop(entries_.size() - 1);
    }
    for (const Entry& entry : std::exchange(dropped_, {})) {
        entry.sink->Release();
    }
    return all;
}

} // namespace tervane::test
