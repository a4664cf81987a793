#pragma once

// A mark that each thread carries or not. Not the compiler's thread-local storage, whose run-time
// support outlives the module. Any thread; where the system has no slot left, none is ever marked.

#include <windows.h>

namespace ZelBase {

class ThreadMark {
public:
    ThreadMark() noexcept : slot_(TlsAlloc()) {}
    ~ThreadMark() { TlsFree(slot_); }
    ThreadMark(const ThreadMark&) = delete;
    ThreadMark& operator=(const ThreadMark&) = delete;

    // Marks the calling thread, until it ends.
    void Set() noexcept { TlsSetValue(slot_, this); }
    // Whether the calling thread is marked.
    bool IsSet() const noexcept {
        return slot_ != TLS_OUT_OF_INDEXES && TlsGetValue(slot_) == this;
    }

private:
    const DWORD slot_;
};

} // namespace ZelBase
