#include "tools/log_viewer/RecordPrinter.h"

#include "ZelBase/log/Logger.h"
#include "ZelBase/text/AnsiText.h"
#include "tools/log_viewer/LocalTime.h"
#include "tools/log_viewer/RecordText.h"

using ZelBase::LogLevel;
using ZelBase::LogRecord;

namespace {

Tone ToneOf(const LogRecord& record) {
    switch (static_cast<LogLevel>(record.level)) {
    case LogLevel::kError:
        return Tone::kError;
    case LogLevel::kWarning:
        return Tone::kWarning;
    default:
        return Tone::kPlain;
    }
}

} // namespace

bool RecordPrinter::Print(const LogBatch& batch) {
    if (batch.missed > 0) {
        PrintMissed(batch.missed);
    }
    bool wantsMore = true;
    for (const LogRecord& record : batch.records) {
        if (wantsMore && options_.filter.IsWanted(record)) {
            PrintRecord(record);
            wantsMore = ++shown_ != options_.count;
        }
    }
    return output_.Flush() && output_.IsSaved() && wantsMore;
}

void RecordPrinter::PrintMissed(std::uint32_t count) {
    missed_ += count;
    const std::string number = std::to_string(count);
    output_.Write(options_.json ? "{\"missed\":" + number + "}"
                                : "--- " + number + " records missed ---",
                  Tone::kNotice);
}

void RecordPrinter::PrintRecord(const LogRecord& record) {
    const std::string time = LocalTimeText(record.time);
    output_.Write(options_.json ? RecordJson(record, time, ZelBase::AnsiToWide)
                                : RecordLine(record, time),
                  ToneOf(record));
}
