#pragma once

// Finding and making the objects that scripts ask for by name.

#include "tools/script_host/NamedDispatch.h"

#include <optional>
#include <string>

namespace tervane::scripthost {

// A new object of the class. On failure `object` is null and the outcome says why.
CallOutcome CreateByProgId(const std::wstring& progId, ComPtr<IDispatch>& object);

// What GetObject finds: with a path or another name ("winmgmts:") that object, loaded by the class
// `progId` if that is given; with an empty path a new object of that class; without a path the one
// that runs.
CallOutcome BindByName(const std::optional<std::wstring>& path, const std::wstring& progId,
                       ComPtr<IDispatch>& object);

} // namespace tervane::scripthost
