#pragma once

// The thread of one e-mail object. It carries out one task at a time and hands its completion to
// the object's own thread through the postback window.
//
// A task holds a reference to its object, so a script that drops its last reference while a mail is
// under way still gets the event, and the object goes when that has been fired. Nobody ever waits
// for the thread: what it needs is shared with it, and it holds the library until its end.

#include "component/PostbackWindow.h"
#include "platform/Automation.h"

#include <functional>
#include <memory>

namespace tervane {

struct MailTask {
    // Released last.
    ComPtr<IUnknown> object;
    // On the worker's thread. An exception ends the work only.
    std::function<void()> work;
    // On the object's thread, when the work has ended: fires the event.
    std::function<void()> complete;
};

class MailWorker {
public:
    // The window, whose owner calls TakeCompleted for code 0, must outlive this.
    explicit MailWorker(const PostbackWindow& window);
    // Ends the thread without waiting for it. Any thread, the worker's too.
    ~MailWorker();
    MailWorker(const MailWorker&) = delete;
    MailWorker& operator=(const MailWorker&) = delete;

    // Whether there is a thread; the first call starts it.
    bool Start();
    // Whether a task has been begun whose completion has not been taken.
    bool IsBusy() const;
    // Hands the task to the thread; false, and nothing done, when it is busy.
    bool Begin(MailTask task);
    // The task whose work has ended; an empty one when there is none. The worker is free again.
    MailTask TakeCompleted();

private:
    struct Shared;

    static void Run(Shared& shared) noexcept;
    static void HandOver(Shared& shared, MailTask task) noexcept;

    std::shared_ptr<Shared> shared_;
};

} // namespace tervane
