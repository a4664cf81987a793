#include "objects/sysinfo/AdapterInfo.h"

#include "component/Answers.h"
#include "objects/Classes.h"
#include "objects/sysinfo/AdapterGathering.h"
#include "objects/sysinfo/AdapterRequests.h"

namespace tervane {
namespace {

constexpr DISPID kOnAdapterInfoComplete = 1;

// One for the whole process.
constinit RequestIds requestIds;

} // namespace

AdapterInfo::AdapterInfo(const ClassRow& row, IUnknown* outer)
    : Object(row, outer),
      requests_(std::make_shared<AdapterRequests>([this](long, bool) { window_->Post(0, 0, 0); })) {
}

HRESULT AdapterInfo::GetAdapterInfo(BSTR returnType, long wantedId, long* id) {
    return AnswerNumber(id, [&] { return StartRequest(TextOf(returnType), wantedId); });
}

long AdapterInfo::StartRequest(std::wstring_view returnType, long wantedId) {
    const IID* iid = FindAdapterInterface(returnType);
    if (!iid) {
        lastErrorCode_ = kUnknownReturnType;
        return 0;
    }
    const long id = requestIds.Choose(wantedId);
    bool started = false;
    try {
        if (!window_) {
            window_.emplace(static_cast<PostbackOwner&>(*this));
        }
        started = requests_->Start(
            id, [iid](const std::atomic<bool>& stop) { return GatherAdapters(*iid, stop); });
    } catch (const std::bad_alloc&) {
        started = false;
    }
    if (!started) {
        lastErrorCode_ = kNoResources;
        return 0;
    }
    return id;
}

HRESULT AdapterInfo::GetRequestedAdapterInfo(long id, VARIANT* adapters) {
    if (!adapters) {
        return E_POINTER;
    }
    VariantInit(adapters);
    return Guarded([&] {
        Variant copy;
        switch (requests_->Find(id, copy)) {
        case AdapterRequests::Found::kLocked:
            lastErrorCode_ = kLocked;
            break;
        case AdapterRequests::Found::kNoMemory:
            return E_OUTOFMEMORY;
        case AdapterRequests::Found::kNo:
        case AdapterRequests::Found::kYes:
            break;
        }
        *adapters = copy.Release();
        return S_OK;
    });
}

HRESULT AdapterInfo::get_LastErrorCode(long* code) {
    return AnswerNumber(code, [&] { return lastErrorCode_.load(); });
}

void AdapterInfo::OnPostback(unsigned, unsigned) {
    // A sink may drop the last other reference.
    const ComPtr<IUnknown> self = AddReference(Controlling());
    if (const auto outcome = requests_->TakeOutcome()) {
        Fire_OnAdapterInfoComplete(outcome->id, outcome->isGathered);
    }
}

HRESULT AdapterInfo::Fire_OnAdapterInfoComplete(long id, bool gathered) const {
    return FireEvent(*Sinks(), kOnAdapterInfoComplete, {static_cast<LONG>(id), gathered});
}

namespace create {

HRESULT AdapterInfo(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::AdapterInfo>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
