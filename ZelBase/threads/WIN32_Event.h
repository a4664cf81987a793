#pragma once

#include "ZelBase/Handles.h"
#include "ZelBase/threads/Event.h"

namespace ZelBase {

class WIN32_Event final : public Event {
public:
    WIN32_Event() noexcept;

    void Reset() override;
    void Set() override;
    bool IsValid() const override;
    void Wait(Thread* thread) override;
    bool Wait(std::uint32_t timeoutMs, Thread* thread) override;
    void SetTimeout(std::uint32_t timeoutMs) override;

private:
    void RequireValid() const;

    UniqueHandle event_;
};

} // namespace ZelBase
