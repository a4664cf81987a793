// Finds out what is wrong with a connection: looks a name up, tests a TCP port and pings.
// Run it with: cscript //nologo connectivity.js [NAME [HOST [PORT]]]
//
// Without arguments it tests this machine with itself. Every test returns at once and ends with an
// event that says whether it succeeded; the events come in while the script sleeps.

var name = WScript.Arguments.length > 0 ? WScript.Arguments(0) : "localhost";
var host = WScript.Arguments.length > 1 ? WScript.Arguments(1) : "127.0.0.1";
var port = WScript.Arguments.length > 2 ? parseInt(WScript.Arguments(2), 10) : 135;
var LOOK_UP_TIME = 0;   // milliseconds; 0 leaves it to the system's resolver, without a limit
var CONNECT_TIME = 1500;
var PING_TIME = 1000;
var PINGS = 3;

var tester = WScript.CreateObject("Tervane.ConnectivityTester", "Tester_");
var answers = 0;

function report(what, success) {
    WScript.Echo((success ? "  ok      " : "  FAILED  ") + what);
    answers++;
}

function Tester_OnDNSLookupComplete(success) {
    report("look-up of " + name, success);
}

function Tester_OnTCPPortTestComplete(success) {
    report("TCP connection to " + host + ", port " + port, success);
}

function Tester_OnPingComplete(success) {
    report("ping of " + host, success);
}

WScript.Echo("Testing, all three at once:");
tester.DNSLookup(name, LOOK_UP_TIME);
tester.TestTCPPort(host, port, CONNECT_TIME);
tester.Ping(host, PING_TIME, PINGS);
while (answers < 3) {
    WScript.Sleep(20);
}
WScript.Echo("Done.");
