#pragma once

// The windows of the program. What happens to them is told on the standard output, a line each:
//
//   ready                      all windows are there
//   command ID CODE LPARAM     WM_COMMAND came; LPARAM is "control" or, when it is not the handle
//                              of that control, "other"
//   set-check ID STATE         BM_SETCHECK came to a button
//   shown, hidden, closed      visibility changed; the window was closed and is gone
//   vanished                   it is gone because its time was over
//   hanging                    from now on it does not answer

#include "Options.h"

class TestWindow {
public:
    // Shows what `options` ask for, now or later, on this thread, which then pumps messages.
    // Ends the message loop when the windows are gone. False when the window class is refused.
    static bool Show(const Options& options);

private:
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);
    static LRESULT CALLBACK ButtonProcedure(HWND button, UINT message, WPARAM wParam,
                                            LPARAM lParam);
    static LRESULT CALLBACK GroupProcedure(HWND group, UINT message, WPARAM wParam, LPARAM lParam);
};
