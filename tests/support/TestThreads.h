#pragma once

// Threads, locks and conditions for tests, which the compiler's run-time library for the system's
// own threads lacks. Members are named and behave as the standard's, so that std::lock_guard and
// std::unique_lock take them.

#include <windows.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include <process.h>

namespace tervane::test {

// Joins its thread when it is destroyed.
class TestThread {
public:
    TestThread() = default;
    template <typename Body, typename... Arguments>
    explicit TestThread(Body body, Arguments... arguments) {
        auto work = std::make_unique<std::function<void()>>([=]() mutable { body(arguments...); });
        thread_ = reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, Run, work.get(), 0, nullptr));
        if (thread_) {
            work.release();
        }
    }
    TestThread(TestThread&& other) noexcept : thread_(std::exchange(other.thread_, nullptr)) {}
    TestThread& operator=(TestThread&& other) noexcept {
        join();
        thread_ = std::exchange(other.thread_, nullptr);
        return *this;
    }
    ~TestThread() { join(); }

    bool joinable() const noexcept { return thread_ != nullptr; }
    void join() noexcept {
        WaitForSingleObject(thread_, INFINITE);
        detach();
    }
    void detach() noexcept {
        if (joinable()) {
            CloseHandle(std::exchange(thread_, nullptr));
        }
    }

private:
    static unsigned __stdcall Run(void* work) noexcept {
        (*std::unique_ptr<std::function<void()>>(static_cast<std::function<void()>*>(work)))();
        return 0;
    }

    HANDLE thread_ = nullptr;
};

// Runs `body`, with a number from 0, on so many threads at once, and waits for them.
template <typename Body>
void OnThreads(int count, Body body) {
    std::vector<TestThread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back(body, number);
    }
}

// Its owner may lock it again.
class TestMutex {
public:
    TestMutex() noexcept { InitializeCriticalSection(&section_); }
    ~TestMutex() { DeleteCriticalSection(&section_); }
    TestMutex(const TestMutex&) = delete;
    TestMutex& operator=(const TestMutex&) = delete;

    void lock() noexcept { EnterCriticalSection(&section_); }
    void unlock() noexcept { LeaveCriticalSection(&section_); }
    CRITICAL_SECTION* Section() noexcept { return &section_; }

private:
    CRITICAL_SECTION section_;
};

class TestCondition {
public:
    void notify_all() noexcept { WakeAllConditionVariable(&variable_); }
    // False when the condition does not hold after that time.
    template <typename Condition>
    bool wait_for(std::unique_lock<TestMutex>& lock, std::chrono::milliseconds time,
                  Condition condition) {
        const DWORD begin = GetTickCount();
        while (!condition()) {
            const DWORD passed = GetTickCount() - begin;
            if (passed >= time.count()) {
                return false;
            }
            SleepConditionVariableCS(&variable_, lock.mutex()->Section(),
                                     static_cast<DWORD>(time.count()) - passed);
        }
        return true;
    }

private:
    CONDITION_VARIABLE variable_ = CONDITION_VARIABLE_INIT;
};

} // namespace tervane::test
