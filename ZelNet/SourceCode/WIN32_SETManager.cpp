#include "ZelNet/SourceCode/WIN32_SETManager.h"

#include "ZelBase/ADefaultLogger.h"
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

bool WIN32_SETManager::AddUser() {
    SocketLayer& layer = Layer();
    CriticalSectionLock guard(layer.lock);
    ZelBase::Log("InitializeSockets", LogLevel::kTrace, "Count = %d", layer.users + 1);
    if (!layer.manager) {
        auto manager = std::make_shared<WIN32_SETManager>();
        if (!manager->Initialize()) {
            return false;
        }
        layer.manager = std::move(manager);
    }
    ++layer.users;
    return true;
}

void WIN32_SETManager::RemoveUser() {
    SocketLayer& layer = Layer();
    std::shared_ptr<WIN32_SETManager> last;
    {
        CriticalSectionLock guard(layer.lock);
        if (!layer.manager) {
            return;
        }
        --layer.users;
        ZelBase::Log("UninitializeSockets", LogLevel::kTrace, "Count = %d", layer.users);
        if (layer.users == 0) {
            last = std::move(layer.manager);
        }
    }
    // Without the lock, because it waits for threads whose callbacks may count users themselves.
    if (last) {
        last->Shutdown();
    }
}

WIN32_SETManager::WIN32_SETManager() : logger_(CreateLogger("WIN32_SETManager")) {}

bool WIN32_SETManager::Initialize() {
    if (!logger_) {
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

void WIN32_SETManager::Shutdown() {
    std::list<std::shared_ptr<WIN32_SocketEventThread>> threads;
    {
        CriticalSectionLock guard(lock_);
        beingDestroyed_ = true;
        threads.swap(threads_);
    }
    for (const auto& thread : threads) {
        thread->Stop();
    }
    for (const auto& thread : threads) {
        // The calling thread ends when the callback that it is in is over.
        if (!thread->IsCurrentThread()) {
            thread->Join();
        }
    }
    threads.clear();
    WIN32_SocketEventThread::ReapEnded();
    if (std::exchange(winsockStarted_, false)) {
        WSACleanup();
    }
}

bool WIN32_SETManager::Attach(const std::shared_ptr<WIN32_SocketEventThreadListener>& listener,
                              SOCKET socket, SocketPlace& place) {
    CriticalSectionLock guard(lock_);
    if (beingDestroyed_) {
        return false;
    }
    if (std::any_of(threads_.begin(), threads_.end(), [&](const auto& thread) {
            return thread->AddSocket(listener, socket, place);
        })) {
        return true;
    }
    // The list's memory first: a thread that runs must not get lost.
    auto& thread = threads_.emplace_back();
    thread = WIN32_SocketEventThread::Create(shared_from_this());
    if (thread && thread->AddSocket(listener, socket, place)) {
        return true;
    }
    if (thread) {
        thread->Stop();
    }
    threads_.pop_back();
    return false;
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
