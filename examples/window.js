// Drives another program's window: opens Notepad on a file that does not exist, waits for the
// question that it asks, reads its title, presses a button and waits until it is gone.
// Run it with: cscript //nologo window.js
//
// Windows are named by regular expressions on their titles: one for the top-level window and one
// for a window below it. Notepad's question has different titles on different systems, so it is
// known by the text in it, which names the file; the empty expression matches every title. Waits
// return at once; their events carry the identifier of the wait and 0 (as awaited), 1 (timed out)
// or 2 (aborted).

var VISIBLE = 1, INVISIBLE = 2, GONE = 3; // what GetWindowState says
var SHOW = 1, HIDE = 2;                   // what SetWindowState does
var INTERVAL = 100;                       // milliseconds between two looks at the windows
var LOOKS = 300;                          // the time-out of a wait counts looks
var PATIENCE = 120;                       // seconds until an event must have come
var FILE = "Tervane example.txt";
var ANY = "", QUESTION = "Tervane example\\.txt", CANCEL = "^&?Cancel$";

var windows = WScript.CreateObject("Tervane.WindowMgr", "Windows_");
var shell = new ActiveXObject("WScript.Shell");
var fileSystem = new ActiveXObject("Scripting.FileSystemObject");
var ended = {};
var mismatches = 0;

function Windows_OnWaitForWindowComplete(id, result) {
    ended[id] = result;
}

function Windows_OnWaitOnWindowComplete(id, result) {
    ended[id] = result;
}

// Events come in while the script sleeps, if the host delivers any.
function endOf(id) {
    for (var waited = 0; ended[id] === undefined; waited += 20) {
        if (waited >= PATIENCE * 1000) {
            WScript.Echo("No event has come in " + PATIENCE + " seconds: this host delivers none.");
            WScript.Quit(1);
        }
        WScript.Sleep(20);
    }
    return ended[id];
}

function expect(what, found, expected) {
    var isRight = String(found) === String(expected);
    WScript.Echo((isRight ? "  ok   " : "  BAD  ") + what + ": " + found +
                 (isRight ? "" : "  (expected " + expected + ")"));
    if (!isRight) {
        mismatches++;
    }
}

function missingFile() {
    var temporaryFolder = fileSystem.GetSpecialFolder(2);
    return fileSystem.BuildPath(temporaryFolder, FILE);
}

WScript.Echo("Waiting for Notepad's question");
var come = windows.WaitForWindow(ANY, QUESTION, INTERVAL, false, LOOKS);
shell.Run("notepad.exe \"" + missingFile() + "\"", 1, false);
expect("end of the wait", endOf(come), 0);
var title = windows.GetMatchingWindowTitleText(ANY, QUESTION);
WScript.Echo("       title: " + title);

WScript.Echo("Hiding it and showing it again");
expect("state", windows.GetWindowState(ANY, QUESTION), VISIBLE);
expect("hidden", windows.SetWindowState(HIDE, ANY, QUESTION), true);
expect("state", windows.GetWindowState(ANY, QUESTION), INVISIBLE);
expect("shown", windows.SetWindowState(SHOW, ANY, QUESTION), true);
expect("state", windows.GetWindowState(ANY, QUESTION), VISIBLE);

WScript.Echo("Pressing Cancel, which closes it");
var go = windows.WaitOnWindow(ANY, QUESTION, INTERVAL, true, LOOKS);
expect("pressed", windows.ClickButton("^" + title + "$", CANCEL), true);
expect("end of the wait", endOf(go), 0);
expect("state", windows.GetWindowState(ANY, QUESTION), GONE);

WScript.Echo("Waiting for a window that never comes");
var never = windows.WaitForWindow("^No window has this title$");
expect("aborted", windows.AbortWait(never), true);
expect("end of the wait", endOf(never), 2);
expect("abort of a wait that never was", windows.AbortWait(12345), false);
expect("error", windows.LastErrorCode, 5);

if (mismatches > 0) {
    WScript.Echo(mismatches + " not as expected.");
    WScript.Quit(1);
}
WScript.Echo("Done.");
