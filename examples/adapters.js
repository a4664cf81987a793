// Shows the network adapters of this machine: those that are installed, as the registry configures
// them, and those that are up, as the network stack sees them now, side by side.
// Run it with: cscript //nologo adapters.js
//
// A request returns its number at once; an event tells when its list can be fetched. The event
// comes in while the script sleeps.

// The interface whose objects a list is to have, named by its identifier.
var INSTALLED = "76d636e1-1924-46f8-9f21-4771a07ea0e3";
var LIVE = "c4fef9b0-0ef2-40e6-9474-36a915527057";

var info = WScript.CreateObject("Tervane.AdapterInfo", "Info_");
var lists = {};
var ended = 0;
var PATIENCE = 60; // seconds

function Info_OnAdapterInfoComplete(request, gathered) {
    lists[request] = gathered ? new VBArray(info.GetRequestedAdapterInfo(request)).toArray() : null;
    ended++;
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

function yesNo(flag) {
    return flag ? "yes" : "no";
}

function showInstalled(adapter) {
    WScript.Echo(adapter.Name);
    WScript.Echo("  service " + adapter.ServiceName + ", hardware address " +
                 adapter.HardwareAddress);
    WScript.Echo("  Ethernet " + yesNo(adapter.EthernetAdapter) + ", bound to TCP/IP " +
                 yesNo(adapter.BoundToTcpip) + ", enabled " + yesNo(adapter.IsEnabled) +
                 ", configured by DHCP " + yesNo(adapter.UsingDhcp));
}

function showLive(adapter) {
    WScript.Echo("  up: " + adapter.Name + ", " + adapter.HardwareAddress);
    WScript.Echo("    address " + adapter.IpAddress + ", mask " + adapter.SubnetMask +
                 ", gateway " + adapter.DefaultGateway);
    WScript.Echo("    Ethernet " + yesNo(adapter.IsEthernetAdapter) + ", dial-up " +
                 yesNo(adapter.IsPppAdapter) + ", DHCP " + yesNo(adapter.IsDhcp) + ", server " +
                 adapter.DhcpServer);
}

// A Cookie is the same in both lists for the same device.
function showLiveOf(live, cookie) {
    for (var i = 0; i < live.length; i++) {
        if (live[i].Cookie == cookie) {
            showLive(live[i]);
        }
    }
}

var installedRequest = info.GetAdapterInfo(INSTALLED);
var liveRequest = info.GetAdapterInfo(LIVE, 7); // a number of one's own, below 1000
if (installedRequest == 0 || liveRequest == 0) {
    throw new Error("a request could not be made, error " + info.LastErrorCode);
}
sleepUntil(function () { return ended === 2; });
var installed = lists[installedRequest];
var live = lists[liveRequest];
if (installed == null || live == null) {
    throw new Error("a list could not be gathered");
}
WScript.Echo(installed.length + " installed, " + live.length + " up:");
for (var i = 0; i < installed.length; i++) {
    showInstalled(installed[i]);
    showLiveOf(live, installed[i].Cookie);
}
WScript.Echo("Up, but not known to be installed:");
showLiveOf(live, "");
WScript.Echo("Done.");
