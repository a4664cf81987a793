// The classes of this room whose members are not built yet.

#include "component/Creators.h"
#include "component/PendingObject.h"

namespace tervane::create {

HRESULT AdapterInfo(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreatePendingEventControl(row, outer, iid, out);
}

} // namespace tervane::create
