#pragma once

// What listing the installed adapters costs each of them, however many there are.

namespace bench {

// Compares lists of 100 and of 1,000 adapters with as many lists of 10 as make the same number, for
// both families of Windows.
void CompareAdapterLists();

} // namespace bench
