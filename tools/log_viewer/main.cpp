// Shows the log ring on the console: what is in it, or records as they are written.

#include "ZelBase/AnsiText.h"
#include "ZelBase/LogRing.h"
#include "tools/log_viewer/LogReader.h"
#include "tools/log_viewer/Options.h"
#include "tools/log_viewer/RecordPrinter.h"

#include <cstdio>

namespace {

using ZelBase::LogRing;

constexpr char kUsage[] =
    "Shows the records of the machine-wide log or, where that cannot be had, of the session's, "
    "and\n"
    "says which.\n"
    "\n"
    "usage: log_viewer [dump | follow] [options]\n"
    "  dump              what the log holds, oldest first (default)\n"
    "  follow            records as they are written, until Ctrl+C\n"
    "  --component NAME  only records of this component; may be given several times\n"
    "  --level N         only records up to this level: 0 errors, 1 also warnings, 3 also tracing\n"
    "  --count N         stop after this many records\n"
    "\n"
    "Columns, with a tab between them: time, process, thread, component, function, level, value,\n"
    "text.\n";

constexpr char kLocked[] = "log_viewer: another process keeps the log locked\n";

enum ExitCode { kDone = 0, kNoRing = 1, kUsageError = 2 };

constexpr DWORD kPatienceMs = 2000;

// In the order in which components look for the ring, except that one of the session that is there
// comes before one of the machine that would be new: it is the one of components that may not make
// the machine's, which a viewer that was started by an administrator may.
LogRing::Result OpenRing(std::unique_ptr<LogRing>& ring) {
    const LogRing::Result result = LogRing::OpenShared(kPatienceMs, ring);
    if (ring && ring->IsNew() && ring->GetPlace() == LogRing::Place::kMachine) {
        std::unique_ptr<LogRing> session;
        LogRing::Open(LogRing::Place::kSession, kPatienceMs, session);
        if (session && !session->IsNew()) {
            ring = std::move(session);
        }
    }
    return result;
}

const char* Name(const LogRing& ring) {
    return ring.GetPlace() == LogRing::Place::kMachine ? "the machine-wide log"
                                                       : "the log of this session";
}

int Dump(const LogRing& ring, RecordPrinter& printer) {
    LogReader reader(ring);
    LogBatch batch;
    if (!reader.ReadAll(batch)) {
        std::fputs(kLocked, stderr);
        return kNoRing;
    }
    std::fprintf(stderr, "log_viewer: showing %s\n", Name(ring));
    printer.Print(batch);
    return kDone;
}

int Follow(const LogRing& ring, RecordPrinter& printer) {
    LogReader reader(ring);
    std::fprintf(stderr, "log_viewer: following %s, Ctrl+C ends\n", Name(ring));
    for (bool wantsMore = true; wantsMore;) {
        LogBatch batch;
        if (reader.WaitForNew(batch)) {
            wantsMore = printer.Print(batch);
        } else {
            std::fputs(kLocked, stderr);
        }
    }
    return kDone;
}

int Run(const std::vector<std::string>& arguments) {
    const std::optional<Options> options = ParseOptions(arguments);
    if (!options) {
        std::fputs(kUsage, stderr);
        return kUsageError;
    }
    std::unique_ptr<LogRing> ring;
    LogRing::Result result = OpenRing(ring);
    while (result == LogRing::Result::kLocked && options->follow) {
        std::fputs(kLocked, stderr);
        result = OpenRing(ring);
    }
    if (!ring) {
        std::fputs(result == LogRing::Result::kLocked
                       ? kLocked
                       : "log_viewer: neither the machine-wide log nor one of this session can be "
                         "had; each component then writes into one of its own\n",
                   stderr);
        return kNoRing;
    }
    RecordPrinter printer(*options);
    return options->follow ? Follow(*ring, printer) : Dump(*ring, printer);
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    // A program that reads both of our outputs waits for what we say here.
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(ZelBase::WideToAnsi(argv[i]));
    }
    return Run(arguments);
}
