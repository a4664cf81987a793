#pragma once

// ASCII names without regard to case, which every floor above needs.

#include "platform/AsciiText.h"
