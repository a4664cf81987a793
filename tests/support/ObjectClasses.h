#pragma once

// Hands the classes to the component, as the library does when it is loaded; for programs that link
// both instead of loading the library.

#include "component/ModuleState.h"
#include "objects/Classes.h"
#include "support/TestComponent.h"

namespace tervane::test {

inline const bool kClassesAreInUse = (UseClasses(ObjectClasses()), true);

// Late-bound calls need a type library, and such a program has none: they use the built one.
inline void UseBuiltTypeLibrary() {
    if (!ModuleState::Get()) {
        ModuleState::Set(new ModuleState(TestComponent::Get().Module()));
    }
}

} // namespace tervane::test
