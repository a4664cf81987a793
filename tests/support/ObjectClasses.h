#pragma once

// Hands the classes to the component, as the library does when it is loaded; for programs that link
// both instead of loading the library.

#include "objects/Classes.h"

namespace tervane::test {

inline const bool kClassesAreInUse = (UseClasses(ObjectClasses()), true);

} // namespace tervane::test
