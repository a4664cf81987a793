// The program's allocator, in a file of its own: where the compiler sees through it, it takes the
// pairs of new and delete for mismatched.

#include "tests/zelnet/SocketTesting.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace ZelNet {
namespace {

std::atomic<std::size_t> refusedSize = 0;

} // namespace

void RefuseMemory(std::size_t size) {
    refusedSize = size;
}

} // namespace ZelNet

void* operator new(std::size_t size) {
    void* memory = size == 0 || size != ZelNet::refusedSize ? std::malloc(size + 1) : nullptr;
    return memory ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
