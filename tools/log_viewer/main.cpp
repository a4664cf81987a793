// Shows the machine-wide log ring on the console: what is in it, or records as they are written.

#include "ZelBase/AnsiText.h"
#include "ZelBase/LogRing.h"
#include "tools/log_viewer/LogReader.h"
#include "tools/log_viewer/Options.h"
#include "tools/log_viewer/RecordPrinter.h"

#include <cstdio>

namespace {

constexpr char kUsage[] =
    "Shows the records of the machine-wide log.\n"
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

enum ExitCode { kDone = 0, kNoRing = 1, kUsageError = 2 };

int Dump(LogReader& reader, RecordPrinter& printer) {
    LogBatch batch;
    if (!reader.ReadAll(batch)) {
        std::fputs("log_viewer: another process keeps the log locked\n", stderr);
        return kNoRing;
    }
    printer.Print(batch);
    return kDone;
}

int Follow(LogReader& reader, RecordPrinter& printer) {
    std::fputs("log_viewer: following the log, Ctrl+C ends\n", stderr);
    for (bool wantsMore = true; wantsMore;) {
        LogBatch batch;
        if (reader.WaitForNew(batch)) {
            wantsMore = printer.Print(batch);
        } else {
            std::fputs("log_viewer: another process keeps the log locked, waiting\n", stderr);
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
    const ZelBase::LogRing ring;
    if (!ring.IsValid()) {
        std::fputs("log_viewer: the log cannot be opened or made; an account without the right to "
                   "create global objects needs another process to have made it\n",
                   stderr);
        return kNoRing;
    }
    LogReader reader(ring);
    RecordPrinter printer(*options);
    return options->follow ? Follow(reader, printer) : Dump(reader, printer);
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
