// Renews the DHCP leases of all network cards: the classic repair for a machine without an address.
// Run it with: cscript //nologo renew.js now
//
// Without "now" it only shows which cards have a lease. The repair takes them off the network for
// some seconds, one after the other.

var LIVE = "c4fef9b0-0ef2-40e6-9474-36a915527057"; // names the kind of list, see adapters.js
var REQUEST = 1;
var PATIENCE = 180; // seconds; each card takes five or more

var info = WScript.CreateObject("Tervane.AdapterInfo", "Info_");
var dhcp = WScript.CreateObject("Tervane.DHCP", "Dhcp_");
var ended;

function Info_OnAdapterInfoComplete(request, gathered) {
    ended = true;
}

function Dhcp_OnReleaseRenewComplete(count) {
    WScript.Echo("Cards that came back with an address: " + count);
    ended = true;
}

// Events come in while the script sleeps, if the host delivers any.
function sleepUntilEnded() {
    for (var waited = 0; !ended; waited += 50) {
        if (waited >= PATIENCE * 1000) {
            WScript.Echo("No event has come in " + PATIENCE + " seconds: this host delivers none.");
            WScript.Quit(1);
        }
        WScript.Sleep(50);
    }
}

function showLeases() {
    ended = false;
    info.GetAdapterInfo(LIVE, REQUEST);
    sleepUntilEnded();
    var adapters = new VBArray(info.GetRequestedAdapterInfo(REQUEST)).toArray();
    for (var i = 0; i < adapters.length; i++) {
        if (adapters[i].IsDhcp && adapters[i].IsEthernetAdapter) {
            WScript.Echo("  " + adapters[i].Name + ": " + adapters[i].IpAddress);
        }
    }
}

WScript.Echo("Cards with addresses by DHCP:");
showLeases();
if (WScript.Arguments.length > 0 && WScript.Arguments(0) == "now") {
    WScript.Echo("Renewing ...");
    ended = false;
    dhcp.ReleaseRenew();
    sleepUntilEnded();
    showLeases();
}
WScript.Echo("Done.");
