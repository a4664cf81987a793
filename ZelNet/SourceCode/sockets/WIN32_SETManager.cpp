#include "ZelNet/SourceCode/sockets/WIN32_SETManager.h"

#include "ZelBase/log/ALogger.h"
#include "ZelNet/SourceCode/ComponentLogger.h"

#include <algorithm>

namespace ZelNet {
namespace {

using ZelBase::CriticalSectionLock;
using ZelBase::LogLevel;

// Never destroyed: the library may be unloaded with users left, which count for the process's life.
struct SocketLayer {
    ZelBase::CriticalSection lock;
    std::shared_ptr<WIN32_SETManager> manager ZELBASE_GUARDED_BY(lock);
    int users ZELBASE_GUARDED_BY(lock) = 0;
};

SocketLayer& Layer() {
    static SocketLayer& layer = *new SocketLayer;
    return layer;
}

} // namespace

std::shared_ptr<WIN32_SETManager> WIN32_SETManager::Current() {
    SocketLayer& layer = Layer();
    CriticalSectionLock guard(layer.lock);
    return layer.manager;
}

// The log is opened and the count logged without the lock: either may take a second when another
// process keeps the log locked, and a script's thread that counts must not have to wait for that.
bool WIN32_SETManager::AddUser() {
    const auto keepsLogOpen = ZelBase::Logger::Create();
    SocketLayer& layer = Layer();
    bool isStarted = true;
    int users = 0;
    {
        CriticalSectionLock guard(layer.lock);
        users = layer.users + 1;
        if (!layer.manager) {
            auto manager = std::make_shared<WIN32_SETManager>();
            isStarted = manager->Initialize();
            layer.manager = isStarted ? std::move(manager) : nullptr;
        }
        layer.users += isStarted ? 1 : 0;
    }
    ZelBase::Log("InitializeSockets", LogLevel::kTrace, "Count = %d", users);
    return isStarted;
}

void WIN32_SETManager::RemoveUser() {
    SocketLayer& layer = Layer();
    std::shared_ptr<WIN32_SETManager> last;
    int users = 0;
    {
        CriticalSectionLock guard(layer.lock);
        if (!layer.manager) {
            return;
        }
        users = --layer.users;
        if (users == 0) {
            last = std::move(layer.manager);
        }
    }
    ZelBase::Log("UninitializeSockets", LogLevel::kTrace, "Count = %d", users);
    // Without the lock, because it waits for threads whose callbacks may count users themselves.
    if (last) {
        last->Shutdown();
    }
}

WIN32_SETManager::WIN32_SETManager()
    : logger_(CreateLogger("WIN32_SETManager")),
      noneLive_(CreateEventA(nullptr, TRUE, TRUE, nullptr)) {}

bool WIN32_SETManager::Initialize() {
    if (!logger_ || !noneLive_) {
        return false;
    }
    WSADATA data;
    const int error = WSAStartup(MAKEWORD(2, 2), &data);
    if (error != 0) {
        logger_->Log("Initialize", LogLevel::kError,
                     "WSAStartup() called failed with error code %d.", error);
        return false;
    }
    winsockStarted_ = true;
    return true;
}

// Afterwards no thread is left, unless it is one of them that calls: that one ends when the
// callback that it is in is over.
void WIN32_SETManager::Shutdown() {
    {
        CriticalSectionLock guard(lock_);
        beingDestroyed_ = true;
        for (const auto& thread : threads_) {
            thread->Stop();
        }
        threads_.clear();
    }
    if (!IsOnAnyThread()) {
        WaitForSingleObject(noneLive_.Get(), INFINITE);
        WIN32_SocketEventThread::ReapEnded();
    }
    if (std::exchange(winsockStarted_, false)) {
        WSACleanup();
    }
}

bool WIN32_SETManager::IsOnAnyThread() {
    CriticalSectionLock guard(lock_);
    return std::any_of(live_.begin(), live_.end(),
                       [](const auto* thread) { return thread->IsCurrentThread(); });
}

bool WIN32_SETManager::Attach(const std::shared_ptr<WIN32_SocketEventThreadListener>& listener,
                              SOCKET socket, SocketPlace& place) {
    CriticalSectionLock guard(lock_);
    const auto offer = [&](const auto& thread) {
        return thread->AddSocket(listener, socket, place);
    };
    if (beingDestroyed_) {
        return false;
    }
    if (std::any_of(threads_.begin(), threads_.end(), offer)) {
        return true;
    }
    if (!AddThread()) {
        return false;
    }
    try {
        if (offer(threads_.back())) {
            return true;
        }
    } catch (const std::bad_alloc&) { // a new thread that serves nobody has to go all the same
    }
    threads_.back()->Stop();
    threads_.pop_back();
    return false;
}

bool WIN32_SETManager::AddThread() {
    // The lists' memory first: a thread that runs must not get lost.
    std::list<const WIN32_SocketEventThread*> live(1);
    std::list<std::shared_ptr<WIN32_SocketEventThread>> added(1);
    added.front() = WIN32_SocketEventThread::Create(shared_from_this());
    if (!added.front()) {
        return false;
    }
    live.front() = added.front().get();
    live_.splice(live_.end(), live);
    ResetEvent(noneLive_.Get());
    threads_.splice(threads_.end(), added);
    return true;
}

void WIN32_SETManager::ThreadHasEnded(const WIN32_SocketEventThread& thread) {
    CriticalSectionLock guard(lock_);
    live_.remove(&thread);
    if (live_.empty()) {
        SetEvent(noneLive_.Get());
    }
}

void WIN32_SETManager::ReleaseThread(WIN32_SocketEventThread& thread) {
    const bool byItself = thread.IsCurrentThread();
    std::shared_ptr<WIN32_SocketEventThread> unused;
    {
        CriticalSectionLock guard(lock_);
        const std::size_t count = thread.SocketCount();
        if (count != 0) {
            logger_->Log("ReleaseThread", LogLevel::kTrace,
                         "Thread: %0x being spared because it was reclaimed.", thread.LogName());
            return;
        }
        unused = Forget(thread);
        if (!unused) {
            return;
        }
        logger_->Log("ReleaseThread", LogLevel::kTrace,
                     byItself
                         ? "Marking thread for self-destruct.  ZelBase::Thread: %0x, Count: %d."
                         : "Deleting thread.  ZelBase::Thread: %0x, Count: %d.",
                     thread.LogName(), static_cast<int>(count));
    }
    unused->Stop();
    if (!byItself) {
        unused->Join();
    }
}

std::shared_ptr<WIN32_SocketEventThread>
WIN32_SETManager::Forget(const WIN32_SocketEventThread& thread) {
    CriticalSectionLock guard(lock_);
    const auto found = std::find_if(threads_.begin(), threads_.end(), [&](const auto& candidate) {
        return candidate.get() == &thread;
    });
    if (found == threads_.end()) {
        return nullptr;
    }
    auto forgotten = std::move(*found);
    threads_.erase(found);
    return forgotten;
}

} // namespace ZelNet
