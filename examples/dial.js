// Connects an entry of the phone book, tells each step, and hangs up again. Run it with:
// cscript //nologo dial.js [ENTRY [USER PASSWORD]]
//
// Without an entry it only shows what comes of one that does not exist. Connect returns at once; the
// events come in while the script sleeps. A connection that takes too long is given up.

var CONNECTED = 8192; // what GetConnectionState says
var PATIENCE = 60;    // seconds
var MISSING = "No such Tervane Example";

var manager = WScript.CreateObject("Tervane.RASMgr", "Manager_");
var end = null;

function Manager_OnConnectStateChange(id, state, error) {
    WScript.Echo("  state " + state + (error ? ", error " + error : ""));
}

function Manager_OnConnectComplete(id, success, error) {
    end = { id: id, success: success != 0, error: error };
}

function argument(index) {
    return WScript.Arguments.length > index ? WScript.Arguments(index) : "";
}

// Events come in while the script sleeps, if the host delivers any.
function sleepUntilEnd() {
    for (var waited = 0; !end && waited < PATIENCE * 1000; waited += 20) {
        WScript.Sleep(20);
    }
}

// Waits for the end of a connection that has been begun; gives it up when it takes too long.
function endOf(id) {
    sleepUntilEnd();
    if (!end) {
        WScript.Echo("  given up: " + manager.AbortConnect(id));
        sleepUntilEnd();
    }
    if (!end) {
        WScript.Echo("No event has come in " + 2 * PATIENCE + " seconds: this host delivers none.");
        WScript.Quit(1);
    }
    return end;
}

function connect(entry) {
    WScript.Echo("Connecting " + entry);
    var id = manager.Connect(entry, argument(1), argument(2));
    if (id === 0) {
        WScript.Echo("  cannot be begun: error " + manager.LastErrorCode + ", " +
                     manager.LastError);
        return false;
    }
    if (!endOf(id).success) {
        WScript.Echo("  failed: error " + end.error);
        return false;
    }
    return true;
}

function hangUp(entry) {
    WScript.Echo(manager.GetConnectionState(entry) === CONNECTED ? "Connected"
                                                                 : "Connected no more");
    WScript.Echo("Hanging up: " + (manager.HangUp(entry) || manager.LastError));
}

var entry = argument(0) || MISSING;
var isConnected = connect(entry);
if (isConnected) {
    hangUp(entry);
}
if (isConnected !== (argument(0) !== "")) {
    WScript.Quit(1);
}
WScript.Echo("Done.");
