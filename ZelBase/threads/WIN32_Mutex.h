#pragma once

#include "ZelBase/Handles.h"
#include "ZelBase/threads/Mutex.h"

#include <atomic>

namespace ZelBase {

class WIN32_Mutex final : public Mutex {
public:
    static constexpr DWORD kNoOwner = 0xFFFFFFFF;

    WIN32_Mutex() noexcept;

    bool IsValid() const override;
    bool Lock(std::uint32_t timeoutMs, Thread* thread) override ZELBASE_TRY_ACQUIRE(true);
    void Lock(Thread* thread) override ZELBASE_ACQUIRE();
    void Unlock() override ZELBASE_RELEASE();

    // For diagnosis: the thread that got the mutex last without naming its Thread, kNoOwner when
    // the mutex was given back since.
    DWORD OwnerThreadId() const noexcept { return ownerThreadId_; }

private:
    void RequireValid() const;

    std::atomic<DWORD> ownerThreadId_ = kNoOwner;
    UniqueHandle mutex_;
};

} // namespace ZelBase
