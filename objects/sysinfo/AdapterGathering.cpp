#include "objects/sysinfo/AdapterGathering.h"

#include "objects/sysinfo/LiveAdapterInfo.h"
#include "objects/sysinfo/StaticAdapterInfo.h"
#include "platform/adapters/LiveAdapterSources.h"
#include "platform/text/LetterCase.h"

#include <algorithm>
#include <iterator>

#include <objbase.h>

namespace tervane {
namespace {

using Stop = std::atomic<bool>;

template <typename Adapter, typename Create>
std::optional<std::vector<Variant>> MakeObjects(const std::vector<Adapter>& adapters,
                                                const IID& iid, const Stop& stop, Create create) {
    std::vector<Variant> objects;
    objects.reserve(adapters.size());
    for (const Adapter& adapter : adapters) {
        ComPtr<IDispatch> object;
        if (stop || FAILED(create(adapter, iid, reinterpret_cast<void**>(object.Put())))) {
            return std::nullopt;
        }
        objects.push_back(Variant::FromObject(std::move(object)));
    }
    return stop ? std::nullopt : std::optional(std::move(objects));
}

std::optional<std::vector<Variant>> GatherStatic(const IID& iid, const Stop& stop) {
    return MakeObjects(ListStaticAdapters(stop), iid, stop, &CreateStaticAdapterInfo);
}

std::optional<std::vector<Variant>> GatherLive(const IID& iid, const Stop& stop) {
    LiveAdapterSources sources = LiveAdapterSources::System();
    sources.installed = [&stop] { return ListStaticAdapters(stop); };
    const auto adapters = ListLiveAdapters(sources, stop);
    return adapters ? MakeObjects(*adapters, iid, stop, &CreateLiveAdapterInfo) : std::nullopt;
}

struct ReturnType {
    const IID* iid;
    std::optional<std::vector<Variant>> (*gather)(const IID& iid, const Stop& stop);
};

// In the order in which they are tried.
const ReturnType kReturnTypes[] = {
    {&IID_IStaticAdapterInfo, &GatherStatic},
    {&IID_ILiveAdapterInfo, &GatherLive},
    {&IID_IStaticAdapterInfo2, &GatherStatic},
    {&IID_ILiveAdapterInfo2, &GatherLive},
};

bool Names(std::wstring_view text, const IID& iid) {
    wchar_t braced[sizeof "{00000000-0000-0000-0000-000000000000}"];
    const int size = StringFromGUID2(iid, braced, static_cast<int>(std::size(braced)));
    const std::wstring_view name(braced + 1, static_cast<std::size_t>(size) - 3);
    return EqualsIgnoringAsciiCase(text, name);
}

} // namespace

const IID* FindAdapterInterface(std::wstring_view returnType) {
    const auto found = std::ranges::find_if(
        kReturnTypes, [&](const ReturnType& type) { return Names(returnType, *type.iid); });
    return found == std::end(kReturnTypes) ? nullptr : found->iid;
}

std::optional<std::vector<Variant>> GatherAdapters(const IID& iid, const std::atomic<bool>& stop) {
    const auto found = std::ranges::find(kReturnTypes, &iid, &ReturnType::iid);
    return found == std::end(kReturnTypes) ? std::nullopt : found->gather(iid, stop);
}

} // namespace tervane
