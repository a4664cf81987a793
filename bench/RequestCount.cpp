#include "bench/RequestCount.h"

#include "ZelBase/Handles.h"

namespace bench {
namespace {

// What is still done when the end of the work has been told.
constexpr DWORD kAftermathMs = 1000;

} // namespace

// The only trace that a request for a name leaves is its entry, whether there is the name or not.
void MarkRequests(const std::string& what, size_t units) {
    Sleep(kAftermathMs);
    const std::string name = "TervaneBench|" + what + "|" + std::to_string(units) + "|";
    const ZelBase::UniqueHandle none(OpenMutexA(SYNCHRONIZE, FALSE, name.c_str()));
}

} // namespace bench
