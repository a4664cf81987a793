// Shows the log ring on the console: what is in it, or records as they are written.

#include "ZelBase/Handles.h"
#include "ZelBase/log/LogRing.h"
#include "ZelBase/text/AnsiText.h"
#include "tools/log_viewer/LogReader.h"
#include "tools/log_viewer/Options.h"
#include "tools/log_viewer/Output.h"
#include "tools/log_viewer/RecordPrinter.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

using ZelBase::LogRing;

constexpr char kUsage[] =
    "Shows the records of the machine-wide log or, where that cannot be had, of the session's, "
    "and\n"
    "says which.\n"
    "\n"
    "usage: log_viewer [dump | follow] [options]\n"
    "  dump              what the log holds, oldest first (default)\n"
    "  follow            records as they are written, until Ctrl+C; with --since after what the "
    "log\n"
    "                    holds from that time on; ends with the numbers of records shown and "
    "missed\n"
    "\n"
    "Which records; of an option that is given several times one value must fit:\n"
    "  --component NAME  of this component, in upper or lower case\n"
    "  --function NAME   of this function, in upper or lower case\n"
    "  --process ID      of this process: 1234 or 0x4d2\n"
    "  --text PART       with this in their text, in upper or lower case\n"
    "  --level N         up to this level: 0 errors, 1 also warnings, 3 also tracing\n"
    "  --since TIME      from this time on: 90s, 15m, 2h or 1d ago; 14:30 or 14:30:05 today;\n"
    "                    2003-01-31, or with a time \"2003-01-31 14:30\"\n"
    "  --count N         stop after this many records\n"
    "\n"
    "How they are shown:\n"
    "  --json            one JSON object in each line, in ASCII\n"
    "  --plain           without colours; so it is with NO_COLOR set or without a console\n"
    "  --save FILE       into this file as well, which is written anew, in UTF-8\n"
    "  --help            this text\n"
    "\n"
    "Columns, with a tab between them: time, process, thread, component, function, level, value,\n"
    "text. Control characters are written as \\x0d. Where records were overwritten before they "
    "could\n"
    "be read, a line says how many. On a console errors are red and warnings yellow.\n"
    "\n"
    "Exit codes: 0 done; 1 no log, or the file could not be written; 2 wrong arguments.\n";

constexpr char kLocked[] = "log_viewer: another process keeps the log locked\n";

enum ExitCode { kDone = 0, kFailed = 1, kUsageError = 2 };

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

// Lets Ctrl+C end the following in good order, with all that was read shown and saved.
class Interruption {
public:
    explicit Interruption(LogReader& reader) {
        reader_ = &reader;
        SetConsoleCtrlHandler(OnControl, TRUE);
    }
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption() {
        SetEvent(isOver_.Get());
        SetConsoleCtrlHandler(OnControl, FALSE); // waits for a handler that runs
    }

private:
    // On a thread of the system's. When the output is stuck the process ends by force.
    static BOOL WINAPI OnControl(DWORD) {
        reader_->Stop();
        return WaitForSingleObject(isOver_.Get(), kEndMs) == WAIT_OBJECT_0;
    }

    static constexpr DWORD kEndMs = 5000;
    static inline LogReader* reader_ = nullptr;
    static inline const ZelBase::UniqueHandle isOver_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

bool Dump(LogReader& reader, RecordPrinter& printer) {
    LogBatch batch;
    if (!reader.ReadAll(batch)) {
        std::fputs(kLocked, stderr);
        return false;
    }
    printer.Print(batch);
    return true;
}

void Follow(LogReader& reader, RecordPrinter& printer, bool fromThePast) {
    const Interruption interruption(reader);
    bool isPast = fromThePast;
    for (bool wantsMore = true; wantsMore && !reader.IsStopped();) {
        LogBatch batch;
        if (isPast ? reader.ReadAll(batch) : reader.WaitForNew(batch)) {
            isPast = false;
            wantsMore = printer.Print(batch);
        } else {
            std::fputs(kLocked, stderr);
        }
    }
    std::fprintf(stderr, "log_viewer: %u records shown, %llu missed\n", printer.Shown(),
                 static_cast<unsigned long long>(printer.Missed()));
}

int Show(const LogRing& ring, const Options& options) {
    Output output(!options.plain && _wgetenv(L"NO_COLOR") == nullptr);
    if (!options.file.empty() && !output.SaveTo(options.file)) {
        std::fprintf(stderr, "log_viewer: cannot write %s\n",
                     ZelBase::WideToAnsi(options.file).c_str());
        return kFailed;
    }
    RecordPrinter printer(options, output);
    LogReader reader(ring);
    bool isDone = true;
    if (options.follow) {
        std::fprintf(stderr, "log_viewer: following %s, Ctrl+C ends\n", Name(ring));
        Follow(reader, printer, options.filter.since != 0);
    } else {
        std::fprintf(stderr, "log_viewer: showing %s\n", Name(ring));
        isDone = Dump(reader, printer);
    }
    if (!output.IsSaved()) {
        std::fputs("log_viewer: not all of it could be saved\n", stderr);
    }
    return isDone && output.IsSaved() ? kDone : kFailed;
}

int Run(const std::vector<std::wstring>& arguments) {
    const auto now = static_cast<std::uint32_t>(_time64(nullptr));
    const std::optional<Options> options = ParseOptions(arguments, now);
    if (!options || options->help) {
        std::fputs(kUsage, options ? stdout : stderr);
        return options ? kDone : kUsageError;
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
        return kFailed;
    }
    return Show(*ring, *options);
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    // A program that reads both of our outputs waits for what we say here.
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    return Run({argv + std::min(argc, 1), argv + argc});
}
