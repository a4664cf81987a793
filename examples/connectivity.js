// Finds out what is wrong with a connection: looks a name up, tests a TCP port and pings.
// Run it with: cscript //nologo connectivity.js [NAME [PORT [PORT]]]
//
// Without arguments it tests this machine with itself. Every test returns at once and ends with an
// event that says whether it succeeded; the events come in while the script sleeps.
//
// The name is looked up in both ways: with a time-out the tester itself asks all name servers that
// this machine knows; without one the system's resolver answers, which has other sources, too.

var name = WScript.Arguments.length > 0 ? WScript.Arguments(0) : "localhost";
var openPort = WScript.Arguments.length > 1 ? parseInt(WScript.Arguments(1), 10) : 135;
var otherPort = WScript.Arguments.length > 2 ? parseInt(WScript.Arguments(2), 10) : 9;
var LOOK_UP_TIME = 3000; // milliseconds
var CONNECT_TIME = 1500;
var PING_TIME = 1000;
var PINGS = 3;
var PATIENCE = 60; // seconds, for all tests together

var tester = WScript.CreateObject("Tervane.ConnectivityTester", "Tester_");
var answers = 0;
var lookUps = 0;
var ports = 0;

function report(what, success) {
    WScript.Echo((success ? "  ok      " : "  FAILED  ") + what);
    answers++;
}

// Events do not say which call they belong to, so two of a kind go one after the other.
function Tester_OnDNSLookupComplete(success) {
    if (lookUps++ == 0) {
        report("look-up of " + name + ", asking the name servers", success);
        tester.DNSLookup(name, 0);
    } else {
        report("look-up of " + name + ", by the system's resolver", success);
    }
}

function Tester_OnTCPPortTestComplete(success) {
    report("TCP connection to this machine, port " + (ports++ == 0 ? openPort : otherPort), success);
    if (ports == 1) {
        tester.TestTCPPort("127.0.0.1", otherPort, CONNECT_TIME);
    }
}

function Tester_OnPingComplete(success) {
    report("ping of this machine", success);
}

// Events come in while the script sleeps, if the host delivers any.
function sleepUntil(isDone) {
    for (var waited = 0; !isDone(); waited += 20) {
        if (waited >= PATIENCE * 1000) {
            WScript.Echo("No event has come in " + PATIENCE + " seconds: this host delivers none.");
            WScript.Quit(1);
        }
        WScript.Sleep(20);
    }
}

WScript.Echo("Testing names, ports and ping at once:");
tester.DNSLookup(name, LOOK_UP_TIME);
tester.TestTCPPort("127.0.0.1", openPort, CONNECT_TIME);
tester.Ping("127.0.0.1", PING_TIME, PINGS);
sleepUntil(function () { return answers === 5; });
WScript.Echo("Done.");
