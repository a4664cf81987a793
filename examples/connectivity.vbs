' Tells, test by test, how far a connection to a server comes: name, ping, ports.
' Run it with: cscript //nologo connectivity.vbs [HOST [PORT PORT ...]]
' HOST is a name or a dotted address; without arguments it is this machine.
'
' One test at a time: start it, and sleep until its event has come.
Option Explicit

Const kTime = 1000 ' milliseconds per test
Const kLookUpTime = 3000
Const kPatience = 60 ' seconds

Dim tester, host, i, ended, succeeded
Set tester = WScript.CreateObject("Tervane.ConnectivityTester", "Tester_")
host = "127.0.0.1"
If WScript.Arguments.Count > 0 Then host = WScript.Arguments(0)

Sub Tester_OnDNSLookupComplete(success)
    Finish success
End Sub

Sub Tester_OnTCPPortTestComplete(success)
    Finish success
End Sub

Sub Tester_OnPingComplete(success)
    Finish success
End Sub

Sub Finish(success)
    succeeded = (success <> 0)
    ended = True
End Sub

' Events come in while the script sleeps, if the host delivers any.
Sub Await(what)
    Dim waited
    waited = 0
    Do Until ended
        If waited >= kPatience * 1000 Then
            WScript.Echo "No event has come in " & kPatience & " seconds: this host delivers none."
            WScript.Quit 1
        End If
        WScript.Sleep 20
        waited = waited + 20
    Loop
    If succeeded Then
        WScript.Echo "  ok      " & what
    Else
        WScript.Echo "  FAILED  " & what
    End If
End Sub

Sub TestPort(port)
    ended = False
    tester.TestTCPPort host, port, kTime
    Await "TCP port " & port
End Sub

WScript.Echo "Testing " & host
ended = False
tester.DNSLookup host, kLookUpTime
Await "name, asking all name servers"
ended = False
tester.DNSLookup host, 0 ' no time-out: the system's resolver, which has other sources, too
Await "name, by the system's resolver"
ended = False
tester.Ping host, kTime, 2
Await "ping"
If WScript.Arguments.Count > 1 Then
    For i = 1 To WScript.Arguments.Count - 1
        TestPort CLng(WScript.Arguments(i))
    Next
Else
    TestPort 25
    TestPort 80
End If
WScript.Echo "Done."
