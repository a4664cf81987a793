#pragma once

// The thread of one e-mail object. It carries out one task at a time and hands its completion to
// the object's own thread through a postback window.
//
// A task holds a reference to its object, so a script that drops its last reference while a mail is
// under way still gets the event, and the object goes when that has been fired. If the object's
// thread ends before that, the task is dropped, and the worker ends. Nobody ever waits for the
// worker: what it needs is shared with it, and it holds the library until its end.

#include "component/PostbackWindow.h"
#include "platform/ComValues.h"

#include <functional>
#include <memory>
#include <optional>

namespace tervane {

struct MailTask {
    // Released last.
    ComPtr<IUnknown> object;
    // On the worker's thread. An exception ends the work only.
    std::function<void()> work;
    // On the object's thread, when the work has ended: fires the event.
    std::function<void()> complete;
    // Instead of that on the worker's thread, when the object's is gone: closes what is open.
    std::function<void()> abandon;
};

class MailWorker final : private PostbackOwner {
public:
    MailWorker();
    // Ends the thread without waiting for it. Any thread, the worker's too.
    ~MailWorker();
    MailWorker(const MailWorker&) = delete;
    MailWorker& operator=(const MailWorker&) = delete;

    // Whether there is a thread; the first call starts it and makes the window, on the object's
    // thread. Not sooner: many an object is only asked for its settings, and windows are few.
    bool Start();
    // What the worker does when the object's thread has ended, even if no task is under way: closes
    // what stays open between tasks. It must not need the object. Replaces the one before.
    void CloseWhenLeft(std::function<void()> close);
    // Whether a task has been begun whose completion has not been taken.
    bool IsBusy() const;
    // Hands the task to the thread; false, and nothing done, when it is busy.
    bool Begin(MailTask task);

private:
    struct Shared;

    static void Run(Shared& shared, HANDLE objectThread) noexcept;
    static std::optional<MailTask> TakeWaiting(Shared& shared, bool& ending);
    static void HandOver(Shared& shared, MailTask task) noexcept;
    static void Leave(Shared& shared) noexcept;
    static void Abandon(Shared& shared) noexcept;
    void OnPostback(unsigned code, unsigned wParam) override;

    std::shared_ptr<Shared> shared_;
    std::optional<PostbackWindow> window_;
};

} // namespace tervane
