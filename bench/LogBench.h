#pragma once

namespace bench {

// Writing trace records, from one thread and from four, against what the ring cannot do without:
// locking a shared mutex and copying a record.
void CompareLogging();

} // namespace bench
