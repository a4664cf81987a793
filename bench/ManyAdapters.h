#pragma once

// What listing the installed adapters, alone and with all other facts of the machine, costs each of
// them, however many there are.

namespace bench {

// Compares lists of 100 and of 1,000 adapters with as many lists of 10 as make the same number, for
// both families of Windows; then GeneralSysInfo on machines with so many.
void CompareAdapterLists();

} // namespace bench
