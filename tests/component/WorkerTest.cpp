// Workers and the postback window: what runs on which thread, and in which order it ends.

#include "component/Worker.h"
#include "component/PostbackWindow.h"
#include "support/TestComponent.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

namespace tervane {
namespace {

// Notes when it is released for the last time.
class NotedObject final : public test::RecordingSink {
public:
    explicit NotedObject(std::function<void()> released) : released_(std::move(released)) {}
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = RecordingSink::Release();
        if (left == 0) {
            released_();
        }
        return left;
    }

private:
    std::function<void()> released_;
};

TEST(Worker, EndsInItsOrderEvenWhenTheWorkThrows) {
    const ZelBase::UniqueHandle ended(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::vector<std::string> steps;
    DWORD thread = 0;
    HRESULT apartment = E_FAIL;
    NotedObject object([&] { steps.push_back("object"); });
    WorkerRequest request;
    request.object = AddReference<IUnknown>(&object);
    std::shared_ptr<void> argument(nullptr, [&](void*) { steps.push_back("arguments"); });
    request.work = [&, argument]() {
        thread = GetCurrentThreadId();
        apartment = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        steps.push_back("work");
        throw std::runtime_error("no sink catches this");
    };
    request.enter = [&] { steps.push_back("enter"); };
    request.leave = [&] {
        steps.push_back("leave");
        SetEvent(ended.Get());
    };
    argument.reset();
    ASSERT_TRUE(StartWorker(std::move(request)));
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(ended.Get(), 10000));
    EXPECT_EQ((std::vector<std::string>{"enter", "work", "object", "arguments", "leave"}), steps);
    EXPECT_NE(GetCurrentThreadId(), thread);
    EXPECT_EQ(RPC_E_CHANGED_MODE, apartment); // it is in an apartment of its own already
}

class Owner final : public PostbackOwner {
public:
    struct Posted {
        unsigned code;
        unsigned wParam;
        DWORD thread;
    };
    void OnPostback(unsigned code, unsigned wParam) override {
        posted.push_back({code, wParam, GetCurrentThreadId()});
        if (code == 13) {
            throw std::runtime_error("must not reach the message loop");
        }
    }
    std::vector<Posted> posted;
};

TEST(PostbackWindow, DeliversOnTheThreadThatCreatedIt) {
    Owner owner;
    PostbackWindow window(owner);
    ASSERT_NE(nullptr, window.Handle());
    test::TestThread([&] {
        EXPECT_TRUE(window.Post(0, 0, 0));
        EXPECT_TRUE(window.Post(13, 99, 0));
        EXPECT_TRUE(window.Post(0x7FFF - WM_USER, 1, 2));
        PostMessageA(window.Handle(), 0x8000, 3, 0); // beyond the range: not the owner's
        PostMessageA(window.Handle(), WM_USER - 1, 4, 0);
        PostMessageA(window.Handle(), WM_CLOSE, 0, 0); // not the end of it
    }).join();
    EXPECT_TRUE(owner.posted.empty());
    ASSERT_TRUE(test::PumpUntil([&] { return owner.posted.size() >= 3; }, 5000));
    test::PumpUntil([] { return false; }, 100);
    ASSERT_EQ(3u, owner.posted.size());
    EXPECT_EQ(0u, owner.posted[0].code);
    EXPECT_EQ(99u, owner.posted[1].wParam);
    EXPECT_EQ(0x7FFFu - WM_USER, owner.posted[2].code);
    EXPECT_EQ(GetCurrentThreadId(), owner.posted[2].thread);
    EXPECT_TRUE(IsWindow(window.Handle()));
}

TEST(PostbackWindow, GoesWithItsThreadsMessagesWhenItIsDestroyedElsewhere) {
    Owner owner;
    auto window = std::make_unique<PostbackWindow>(owner);
    const HWND handle = window->Handle();
    EXPECT_TRUE(window->Post(0, 0, 0));
    test::TestThread([&] { window.reset(); }).join();
    EXPECT_TRUE(test::PumpUntil([&] { return !IsWindow(handle); }, 5000));
    EXPECT_TRUE(owner.posted.empty());
}

TEST(PostbackWindow, TakesTheNextFreeNumberAndNeverGivesItBack) {
    Owner owner;
    const auto numberOf = [](const std::string& name) {
        EXPECT_EQ(0u, name.find("ZELHIDDENWINDOW"));
        return std::stoul(name.substr(15));
    };
    auto first = std::make_unique<PostbackWindow>(owner);
    const unsigned long number = numberOf(first->ClassName());
    char title[40] = "";
    GetWindowTextA(first->Handle(), title, sizeof title);
    EXPECT_STREQ("PostbackWindow", title);
    const HWND handle = first->Handle();
    first.reset();
    EXPECT_FALSE(IsWindow(handle));
    const PostbackWindow second(owner);
    EXPECT_EQ(number + 1, numberOf(second.ClassName()));
}

// One whose thread has ended leaves a class that the next windows use.
TEST(PostbackWindow, UsesNoMoreThan64Classes) {
    Owner owner;
    std::set<std::string> names;
    for (int i = 0; i < 300; ++i) {
        std::unique_ptr<PostbackWindow> window;
        if (i % 3 == 0) {
            test::TestThread([&] { window = std::make_unique<PostbackWindow>(owner); }).join();
        } else {
            window = std::make_unique<PostbackWindow>(owner);
            ASSERT_TRUE(window->Post(1, 0, 0)) << i;
        }
        names.insert(window->ClassName());
    }
    EXPECT_GE(names.size(), 32u);
    EXPECT_LE(names.size(), 64u);
}

} // namespace
} // namespace tervane
