#pragma once

// GoogleTest's own notification stands on std::mutex, which this compiler lacks. It needs one only
// for its tests of itself; this one stands in wherever its headers are included.

#include <atomic>

namespace testing::internal {

class Notification {
public:
    void Notify() { notified_ = true; }
    void WaitForNotification() {
        while (!notified_) {
        }
    }

private:
    std::atomic<bool> notified_ = false;
};

} // namespace testing::internal
