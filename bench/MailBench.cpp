#include "bench/MailBench.h"

#include "bench/BareTransfer.h"

#include "ZelBase/log/LogRing.h"
#include "ZelNet/SourceCode/sockets/InitializeSockets.h"
#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "bench/RequestCount.h"
#include "tests/support/TestThreads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>

#include <psapi.h>

namespace bench {
namespace {

using tervane::Variant;

constexpr std::size_t kMegabyte = 1000000;
constexpr LONG kTimeout = 600; // seconds: the records of the largest message take their time
constexpr double kMostOfFloor = 1.1;
constexpr double kMostOfGrowth = 1.2;
constexpr double kMostSendingMemory = 3;
constexpr double kMostFetchingMemory = 4;
constexpr std::size_t kMemoryTest = 10 * kMegabyte;

// Objects tell the ends of their operations by messages to the thread that made them.
void DispatchUntil(const std::function<bool()>& ended) {
    while (!ended()) {
        MSG message;
        Require(GetMessageW(&message, nullptr, 0, 0) > 0, "waiting for a message");
        DispatchMessageW(&message);
    }
}

LateBound MakeMail(std::size_t bytes) {
    LateBound mail(L"Pellow.EmailData");
    mail.Set(L"From", Text(L"from@a.example"));
    mail.Set(L"To", Text(L"to@b.example"));
    mail.Set(L"TextMessage", Text(std::wstring(bytes, L'x')));
    return mail;
}

void SendMail(const MailPorts& ports, const LateBound& mail) {
    LateBound smtp(L"Pellow.SmtpCtl");
    smtp.Set(L"SmtpServer", Text(L"127.0.0.1"));
    smtp.Set(L"Port", Variant::FromLong(ports.smtp));
    smtp.Set(L"Timeout", Variant::FromLong(kTimeout));
    smtp.Set(L"EmailData", mail.AsValue());
    smtp.Call(L"SendMail", {});
    DispatchUntil([&] { return smtp.Get(L"WorkInProgress").Get().lVal == 0; });
    Require(smtp.Get(L"Success").Get().lVal == 1, "sending a mail");
}

// A mailbox whose messages have as many megabytes as their numbers say.
class Mailbox {
public:
    explicit Mailbox(const MailPorts& ports) {
        pop_.Set(L"PopServer", Text(L"127.0.0.1"));
        pop_.Set(L"Port", Variant::FromLong(ports.pop));
        pop_.Set(L"Login", Text(L"someone"));
        pop_.Set(L"Password", Text(L"secret"));
        pop_.Set(L"Timeout", Variant::FromLong(kTimeout));
        LogIn();
    }
    void LogIn() { Change(L"Connect", true); }
    void LogOut() { Change(L"Disconnect", false); }
    void Fetch(LONG number) {
        const Variant index = Variant::FromLong(number);
        const Variant previous = pop_.Get(L"EmailData");
        // Refused until the event of the operation before has come.
        DispatchUntil([&] { return pop_.Call(L"RetrieveMessage", {&index}).Get().boolVal != 0; });
        DispatchUntil(
            [&] { return pop_.Get(L"EmailData").Get().pdispVal != previous.Get().pdispVal; });
        Require(pop_.Get(L"CurrentMessageIndex").Get().lVal == number, "fetching a mail");
    }

private:
    // Refused until the event of the operation before has come.
    void Change(const wchar_t* method, bool connected) {
        DispatchUntil([&] { return pop_.Call(method, {}).Get().boolVal != 0; });
        DispatchUntil([&] { return (pop_.Get(L"Connected").Get().lVal != 0) == connected; });
    }

    LateBound pop_{L"Pellow.PopCtl"};
};

void SendBare(const MailPorts& ports, std::size_t bytes, std::uint32_t records) {
    BareConnection connection(ports.smtp);
    connection.Hear();
    for (const char* line :
         {"HELO bench", "MAIL From: <from@a.example>", "RCPT TO: <to@b.example>", "DATA"}) {
        connection.Say(line);
    }
    connection.Send((bytes + 2) / 3 * 4, records); // in base64
    connection.Say("\r\n.");
    connection.Say("QUIT");
}

void FetchBare(const MailPorts& ports, std::size_t bytes, std::uint32_t records) {
    BareConnection connection(ports.pop);
    connection.Hear();
    for (const char* line : {"USER someone", "PASS secret"}) {
        connection.Say(line);
    }
    connection.Say("RETR " + std::to_string(bytes / kMegabyte));
    connection.Receive(bytes / 80 * 80, records); // whole lines
    while (connection.Hear() != ".\r") {
    }
    connection.Say("QUIT");
}

// In seconds, as curl tells it.
double TimeOfCurl(BareConnection& timekeeper, const std::string& what) {
    return std::strtod(std::string(timekeeper.Say(what)).c_str(), nullptr);
}

double Seconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The ways to do the same. What curl takes it tells itself.
struct Ways {
    std::function<void()> ours;
    std::function<void(std::uint32_t records)> bare;
    std::function<double()> curl;
};

// Returns the seconds that ours takes.
double CompareWays(const std::string& title, const Ways& ways) {
    std::unique_ptr<ZelBase::LogRing> ring;
    ZelBase::LogRing::OpenShared(INFINITE, ring);
    const std::uint32_t before = ring->Section().written;
    const double ours = Seconds(ways.ours);
    const std::uint32_t records = ring->Section().written - before;
    PrintRow({title + " : 512 bytes at a time, as many records", ours,
              Seconds([&] { ways.bare(records); }), "s", kMostOfFloor});
    PrintRow(
        {"  " + title + " : the same without records", ours, Seconds([&] { ways.bare(0); }), "s"});
    PrintRow({"  " + title + " : curl", ours, ways.curl(), "s"});
    return ours;
}

void CompareSizes(const std::string& what, const std::function<Ways(std::size_t bytes)>& waysFor,
                  std::initializer_list<std::size_t> megabytes) {
    const std::size_t smallest = *megabytes.begin();
    double smallestTime = 0;
    for (const std::size_t size : megabytes) {
        const double time =
            CompareWays(what + " " + std::to_string(size) + " MB", waysFor(size * kMegabyte));
        if (size == smallest) {
            smallestTime = time;
            continue;
        }
        PrintRow({"  a byte of " + what + " " + std::to_string(size) + " MB : one of " +
                      std::to_string(smallest) + " MB",
                  1e3 * time / static_cast<double>(size),
                  1e3 * smallestTime / static_cast<double>(smallest), "ms/MB", kMostOfGrowth});
    }
}

std::size_t MemoryInUse() {
    PROCESS_MEMORY_COUNTERS counters = {};
    Require(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) != FALSE,
            "reading the use of memory");
    return counters.WorkingSetSize;
}

// The highest use of memory from here on. The system's own figure also knows what came before.
class PeakWatch {
public:
    PeakWatch() : thread_([this] { Run(); }) {}
    ~PeakWatch() {
        ended_ = true;
        thread_.join();
    }
    std::size_t Peak() const { return peak_; }

private:
    void Run() {
        while (!ended_) {
            peak_ = std::max<std::size_t>(peak_, MemoryInUse());
            Sleep(1);
        }
    }

    std::atomic<bool> ended_ = false;
    std::atomic<std::size_t> peak_ = 0;
    tervane::test::TestThread thread_;
};

void PrintMemory(const char* what, std::size_t peak, std::size_t inUse, double most) {
    PrintRow({std::string("memory while 10 MB are ") + what + ", over what is in use, per size",
              1.0 * static_cast<double>(peak - inUse) / kMemoryTest, 0, "times", -1, most});
}

} // namespace

void CompareMail(const MailPorts& ports) {
    Require(ZelNet::InitializeSockets(), "starting the socket layer"); // for the bare ones
    BareConnection timekeeper(ports.timekeeper);
    const auto send = [&](std::size_t bytes) {
        const LateBound mail = MakeMail(bytes);
        return Ways{[&ports, mail] { SendMail(ports, mail); },
                    [&ports, bytes](auto records) { SendBare(ports, bytes, records); },
                    [&timekeeper] { return TimeOfCurl(timekeeper, "send"); }};
    };
    Mailbox mailbox(ports);
    const auto fetch = [&](std::size_t bytes) {
        const auto number = static_cast<LONG>(bytes / kMegabyte);
        return Ways{[&mailbox, number] { mailbox.Fetch(number); },
                    [&ports, bytes](auto records) { FetchBare(ports, bytes, records); },
                    [&timekeeper, number] {
                        return TimeOfCurl(timekeeper, "fetch " + std::to_string(number));
                    }};
    };
    CompareSizes("send", send, {1, 10, 50});
    CompareSizes("fetch", fetch, {1, 10});
}

void MeasureSendingMemory(const MailPorts& ports) {
    SendMail(ports, MakeMail(1)); // loads what sending needs
    const LateBound mail = MakeMail(kMemoryTest);
    const std::size_t before = MemoryInUse();
    const PeakWatch watch;
    SendMail(ports, mail);
    PrintMemory("sent", watch.Peak(), before, kMostSendingMemory);
}

void MeasureFetchingMemory(const MailPorts& ports) {
    Mailbox mailbox(ports);
    const PeakWatch watch;
    mailbox.Fetch(kMemoryTest / kMegabyte);
    PrintMemory("fetched", watch.Peak(), MemoryInUse(), kMostFetchingMemory);
}

void CountMail(const MailPorts& ports) {
    Mailbox mailbox(ports);
    mailbox.LogOut();
    MarkRequests({"the second login of a PopCtl", 1, -1, 0});
    mailbox.LogIn();
    MarkEndOfRequests();
    mailbox.Fetch(1);
    MarkRequests({"512 bytes of lines fetched by PopCtl", kMegabyte / 512, 66});
    mailbox.Fetch(1);
    MarkEndOfRequests();
}

} // namespace bench
