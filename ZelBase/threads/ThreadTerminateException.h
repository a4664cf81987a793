#pragma once

namespace ZelBase {

// Thrown by value out of a blocking operation when the thread that waits has been told to end, and
// when a primitive cannot do what the caller relies on. It unwinds a worker's stack to the wrapper
// around its routine, so that no worker ever polls a stop flag: it only gives its own Thread to
// every wait.
class ThreadTerminateException {};

} // namespace ZelBase
