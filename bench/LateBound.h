#pragma once

// An object as a script sees it: created by its ProgID, every member looked up by name and invoked
// through IDispatch. Both sides of a comparison go through this one client.

#include "platform/ComValues.h"

#include <initializer_list>
#include <string_view>

namespace bench {

// Ends the program with a message: a benchmark without its objects has nothing to say.
[[noreturn]] void Fail(std::string_view what, HRESULT result);

// An argument; fails the program when memory is exhausted.
tervane::Variant Text(std::wstring_view text);

class LateBound {
public:
    // Creates the object in this apartment; fails the program if it cannot be had.
    explicit LateBound(const wchar_t* progId);
    // Another user of the same object.
    LateBound(const LateBound& other) : object_(tervane::AddReference(other.object_.Get())) {}
    LateBound& operator=(const LateBound&) = delete;

    // The number of a member, for clients that look names up once; fails the program for none.
    DISPID NumberOf(const wchar_t* member) const;
    tervane::Variant Get(const wchar_t* property) const { return Get(NumberOf(property)); }
    tervane::Variant Get(DISPID property) const;
    void Set(const wchar_t* property, const tervane::Variant& value) const;
    tervane::Variant Call(const wchar_t* method,
                          std::initializer_list<const tervane::Variant*> arguments) const;
    // The object, to be handed to another one.
    tervane::Variant AsValue() const;

private:
    tervane::Variant Invoke(DISPID member, WORD kind, DISPPARAMS& arguments) const;

    tervane::ComPtr<IDispatch> object_;
};

} // namespace bench
