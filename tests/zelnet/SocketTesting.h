#pragma once

// What the socket tests share, a listener that writes down what it is told in particular.

#include "ZelBase/threads/ModulePin.h"
#include "ZelNet/SourceCode/ALineSocket.h"
#include "ZelNet/SourceCode/sockets/InitializeSockets.h"
#include "ZelNet/SourceCode/sockets/UdpNonBlockingClientSocket.h"
#include "ZelNet/SourceCode/sockets/WIN32_SocketEventThread.h"
#include "tests/support/ProcessUsage.h"
#include "tests/support/TestThreads.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace ZelNet {

inline constexpr int kPatienceMs = 10000;

// From now on memory of exactly that size is refused, on every thread; 0 for none.
void RefuseMemory(std::size_t size);

// Holds a reference on the sockets for a scope.
class SocketLayerScope {
public:
    SocketLayerScope() { EXPECT_TRUE(InitializeSockets()); }
    ~SocketLayerScope() { EXPECT_TRUE(UninitializeSockets()); }
};

using tervane::test::OpenHandleCount;
using tervane::test::ThreadCount;

// The threads that this process is going to keep, for a time when nobody uses the sockets.
std::size_t IdleThreadCount();

class SocketLayerTest : public testing::Test {
protected:
    const std::size_t idle_ = IdleThreadCount();
    SocketLayerScope layer_;
};

// For tests that need the network of tests/network/zelnet.sh.
class NamespaceTest : public SocketLayerTest {
protected:
    void SetUp() override {
        if (!std::getenv(variable)) {
            GTEST_SKIP() << "run by tests/network/zelnet.sh, in a network of its own";
        }
    }

    const char* variable = "TERVANE_NAMESPACE";
};

// With dnsmasq as the only name server of the system.
class RealServerNamespaceTest : public NamespaceTest {
protected:
    RealServerNamespaceTest() { variable = "TERVANE_REAL_SERVER"; }
};

// What this process has logged: records as "Component|Function|3|text".
class LogReader {
public:
    // Keeps what the log holds now, which is not much; for use in the midst of a long conversation.
    void Collect();
    // Expects records of a component that begin so, waiting a while for them.
    void Expect(const std::string& component, const std::vector<std::string>& texts);
    // All of them.
    std::string Text();

private:
    std::set<std::string> records_;
};

// Binds to an ephemeral port of the loopback and returns it.
std::uint16_t BindToLoopback(SOCKET socket);

// A port of the loopback that nobody listens on.
std::uint16_t UnusedPort();

// Words in the order in which they come, from any thread.
class WordRecorder {
public:
    // Waits for words that begin with `word` to have come `count` times; the words so far.
    std::string Await(const std::string& word, int count = 1);
    std::string Words();
    int Count(const std::string& word);
    // The next word; "nothing" when none comes in time.
    std::string Next();

protected:
    struct State {
        int Count(const std::string& word) const;

        tervane::test::TestMutex mutex;
        tervane::test::TestCondition changed;
        std::vector<std::string> words;
        std::size_t next = 0;
    };
    static void Add(State& state, const std::string& word);

    // Shared with callbacks that are still running when the recorder goes, as happens to a test
    // that releases its socket in a callback.
    const std::shared_ptr<State> state_ = std::make_shared<State>();
};

// Writes down each callback as a word, "connect:0" for instance, after running the test's hook for
// it.
class RecordingListener : public WordRecorder,
                          public TcpNonBlockingLineSocketListener,
                          public UdpNonBlockingSocketListener {
public:
    using Hook = std::function<void(void* context)>;

    // Runs in the callback with that name ("connect", "receive", "send", "close", "line").
    void On(const std::string& callback, Hook hook);

    void OnClose(void* context, int error) override { Note("close", context, error); }
    void OnConnect(void* context, int error) override { Note("connect", context, error); }
    void OnReceive(void* context, int error) override { Note("receive", context, error); }
    void OnSend(void* context, int error) override { Note("send", context, error); }
    void OnReceiveLine(void* context, int error) override { Note("line", context, error); }

private:
    void Note(const std::string& callback, void* context, int error);

    std::map<std::string, Hook> hooks_;
};

// Waits until `count` gives at most `limit`, and returns what it gave last.
std::size_t Settled(std::size_t (*count)(), std::size_t limit);
// Runs `round` until it takes no handle for good, five times at most. Locks that threads wait for
// get handles of their own now and then, but not in every round.
void ExpectNoHandleLost(const std::function<void()>& round);

} // namespace ZelNet
