#pragma once

// The arguments of one late-bound call, in the order in which the script wrote them (a DISPPARAMS
// holds them last first). What VBScript passes by reference is followed.

#include "platform/ComValues.h"

#include <optional>
#include <string>

namespace tervane::scripthost {

class CallArguments {
public:
    // `parameters` must outlive this object.
    explicit CallArguments(const DISPPARAMS& parameters) noexcept : parameters_(parameters) {}

    unsigned Count() const noexcept { return parameters_.cArgs; }
    // False for an argument that the script left out.
    bool Has(unsigned index) const noexcept;
    // As a script prints it: null is "null". nullopt if the value has no text form.
    std::optional<std::wstring> Text(unsigned index) const;
    // nullopt if the argument is missing or no number in the range of 32 bits.
    std::optional<LONG> Number(unsigned index) const noexcept;
    // Null if the argument is missing or no object.
    ComPtr<IDispatch> Object(unsigned index) const noexcept;

private:
    std::optional<Variant> Value(unsigned index) const noexcept;

    const DISPPARAMS& parameters_;
};

} // namespace tervane::scripthost
