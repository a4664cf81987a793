#include "tests/zelnet/SocketTesting.h"

#include "ZelBase/Handles.h"
#include "ZelBase/log/LogRing.h"

#include <algorithm>
#include <chrono>

namespace ZelNet {

void LogReader::Collect() {
    std::unique_ptr<ZelBase::LogRing> ring;
    ZelBase::LogRing::OpenShared(INFINITE, ring);
    WaitForSingleObject(ring->Mutex(), INFINITE);
    for (const ZelBase::LogRecord& record : ring->Section().records) {
        if (std::strtoul(record.process, nullptr, 16) == GetCurrentProcessId()) {
            records_.insert(std::string(record.component) + "|" + record.function + "|" +
                            std::to_string(record.level) + "|" + record.text);
        }
    }
    ReleaseMutex(ring->Mutex());
}

void LogReader::Expect(const std::string& component, const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        const auto has = [&] { return Text().find(component + "|" + text) != std::string::npos; };
        for (int waited = 0; !has() && waited < kPatienceMs; waited += 20) {
            Sleep(20);
        }
        EXPECT_TRUE(has()) << text;
    }
}

std::string LogReader::Text() {
    Collect();
    std::string text;
    for (const std::string& record : records_) {
        text += record + "\n";
    }
    return text;
}

std::uint16_t BindToLoopback(SOCKET socket) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int length = sizeof address;
    EXPECT_EQ(bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length), 0);
    return ntohs(address.sin_port);
}

std::uint16_t UnusedPort() {
    const UniqueSocket probe(socket(AF_INET, SOCK_STREAM, 0));
    return BindToLoopback(probe.Get());
}

int WordRecorder::State::Count(const std::string& word) const {
    return static_cast<int>(
        std::ranges::count_if(words, [&](const auto& next) { return next.starts_with(word); }));
}

std::string WordRecorder::Await(const std::string& word, int count) {
    {
        std::unique_lock lock(state_->mutex);
        state_->changed.wait_for(lock, std::chrono::milliseconds(kPatienceMs),
                                 [&] { return state_->Count(word) >= count; });
    }
    return Words();
}

std::string WordRecorder::Words() {
    std::lock_guard lock(state_->mutex);
    std::string text;
    for (const std::string& word : state_->words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

int WordRecorder::Count(const std::string& word) {
    std::lock_guard lock(state_->mutex);
    return state_->Count(word);
}

std::string WordRecorder::Next() {
    std::unique_lock lock(state_->mutex);
    const bool came =
        state_->changed.wait_for(lock, std::chrono::milliseconds(kPatienceMs),
                                 [this] { return state_->next < state_->words.size(); });
    return came ? state_->words[state_->next++] : "nothing";
}

void WordRecorder::Add(State& state, const std::string& word) {
    std::lock_guard lock(state.mutex);
    state.words.push_back(word);
    state.changed.notify_all();
}

void RecordingListener::On(const std::string& callback, Hook hook) {
    std::lock_guard lock(state_->mutex);
    hooks_.emplace(callback, std::move(hook)); // the first one stays
}

void RecordingListener::Note(const std::string& callback, void* context, int error) {
    const auto state = state_;
    Hook hook;
    {
        std::lock_guard lock(state->mutex);
        const auto found = hooks_.find(callback);
        hook = found == hooks_.end() ? nullptr : found->second;
    }
    if (hook) {
        hook(context);
    }
    Add(*state, callback + ":" + std::to_string(error));
}

std::size_t IdleThreadCount() {
    SCOPED_TRACE("the first one makes GoogleTest start a thread of its own");
    std::size_t count = ThreadCount();
    for (std::size_t before = count + 1; count != before;) { // others may be ending
        before = count;
        Sleep(20);
        count = ThreadCount();
    }
    return count;
}

std::size_t Settled(std::size_t (*count)(), std::size_t limit) {
    std::size_t value = count();
    for (int waited = 0; value > limit && waited < kPatienceMs; waited += 10) {
        Sleep(10);
        value = count();
    }
    return value;
}

void ExpectNoHandleLost(const std::function<void()>& round) {
    bool grows = true;
    for (int i = 0; i < 5 && grows; ++i) {
        const std::size_t handles = OpenHandleCount();
        round();
        grows = Settled(OpenHandleCount, handles) > handles;
    }
    EXPECT_FALSE(grows);
}

} // namespace ZelNet
