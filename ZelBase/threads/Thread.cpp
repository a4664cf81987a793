#include "ZelBase/threads/Thread.h"

#include "ZelBase/threads/WIN32_Thread.h"

#include <new>

namespace ZelBase {

std::unique_ptr<Thread> Thread::Create() {
    std::unique_ptr<Thread> thread(new (std::nothrow) WIN32_Thread);
    return thread && thread->IsValid() ? std::move(thread) : nullptr;
}

Thread::Thread() : logger_(Logger::Create()) {
    if (logger_ && logger_->IsValid()) {
        logger_->SetComponent("Thread");
        loggingEnabled_ = true;
    }
}

Thread::~Thread() = default;

} // namespace ZelBase
