#include "ZelNet/SourceCode/LineReading.h"

namespace ZelNet {

bool TakeLine(ZelBase::ADynaByteBuffer& buffer, std::string& line) {
    std::size_t length = 0;
    if (!buffer.Find('\n', &length)) {
        return false;
    }
    line.resize(length);
    if (!buffer.ReadUntil('\n', line.data(), line.size(), &length, false, false)) {
        return false;
    }
    line.resize(length);
    char next = 0;
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    } else if (buffer.Read(&next, 1, true) && next == '\r') {
        buffer.Skip(1);
    }
    return true;
}

} // namespace ZelNet
