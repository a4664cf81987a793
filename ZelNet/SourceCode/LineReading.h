#pragma once

#include "ZelBase/ADynaByteBuffer.h"

#include <string>

namespace ZelNet {

// Takes the first line off the buffer, without its end. CR LF, LF and LF CR end a line; of the last
// the CR goes too if it has arrived. False, and nothing taken, when no LF has arrived.
bool TakeLine(ZelBase::ADynaByteBuffer& buffer, std::string& line);

} // namespace ZelNet
