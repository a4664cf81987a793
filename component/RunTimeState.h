#pragma once

// What the compiler's run-time library, which is linked into this library, takes from the system
// and from the heap. By itself it never gives that back, so that a host which loads and unloads the
// library again and again runs out of it. What is kept for each thread that throws is written anew
// here, the rest is remembered. Only for the library's entry point.

namespace tervane {

// Whether threads can throw at all; without that the library must not be loaded.
bool HasRunTimeState() noexcept;

// Frees what is kept for the current thread, which is about to end.
void FreeRunTimeStateOfThread() noexcept;

// Called when the library is unloaded while the process goes on: everything is freed after the last
// static destructor. At the end of the process it is left to the system.
void FreeRunTimeStateAtExit() noexcept;

} // namespace tervane
