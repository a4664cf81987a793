#pragma once

// What scripts do to the windows that a finder finds. Each looks once, without waiting, and none is
// held up by a program that does not answer. Messages without text are sent by the narrow
// functions, which exist on every system.

#include "objects/config/windows/WindowFinder.h"

#include <windows.h>

namespace tervane {

// The numbers are what scripts see.
enum class WindowState : LONG { kVisible = 1, kInvisible = 2, kNotFound = 3 };
enum class StateChange : LONG { kShow = 1, kHide = 2, kClose = 3 };

WindowState StateOf(WindowFinder& finder);

// Shows, hides or closes the window; any other number changes nothing. False when no window is
// found. A program that does not answer shows or hides its window when it comes to itself.
bool ChangeState(WindowFinder& finder, StateChange change);

// The title of the window found; empty when there is none.
std::wstring TitleOf(WindowFinder& finder);

// The finder's child pattern names the button. False when there is no such window or button, when
// the button has no control identifier, or when the click could not be posted.
bool ClickButton(WindowFinder& finder);
bool ClickAndCheck(WindowFinder& finder, bool checked);

} // namespace tervane
