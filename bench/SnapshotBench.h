#pragma once

namespace bench {

// Making a GeneralSysInfo and reading a figure, which gathers all of them, against the bare calls
// of the system that give the same figures.
void CompareSnapshot();

} // namespace bench
