' The same as check.js for VBScript, with an event of each class that has any.
Option Explicit

Dim patience ' seconds for each event
patience = 30
Const NONE = "No window of this title"

Dim failures, arrived, value
failures = 0

Sub Report(succeeded, what)
    If succeeded Then
        WScript.Echo "ok      " & what
    Else
        WScript.Echo "FAILED  " & what
        failures = failures + 1
    End If
End Sub

Sub Arrive(what)
    arrived = True
    value = what
End Sub

' Waits for the event that the call before it leads to.
Sub Await(name)
    Dim waited
    If Err.Number <> 0 Then
        Report False, name & ": " & Hex(Err.Number) & " " & Err.Description
        Err.Clear
        Exit Sub
    End If
    For waited = 1 To patience * 10
        If arrived Then Exit For
        WScript.Sleep 100
    Next
    If arrived Then
        Report True, "event " & name & ": " & value
    Else
        Report False, "event " & name & " stays out"
    End If
    arrived = False
End Sub

Sub Info_OnGeneralSysInfoComplete()
    Arrive ""
End Sub

Sub Smtp_OnSmtpSendMailComplete(sent, source)
    Arrive sent
End Sub

Sub Pop_OnPopConnect(connected, source)
    Arrive connected
End Sub

Sub Tester_OnPingComplete(answered)
    Arrive answered
End Sub

Sub Windows_OnWaitForWindowComplete(id, result)
    Arrive result
End Sub

Sub Adapters_OnAdapterInfoComplete(id, gathered)
    Arrive gathered
End Sub

Sub Dial_OnConnectComplete(id, connected, code)
    Arrive code
End Sub

Sub Dhcp_OnReleaseRenewComplete(cards)
    Arrive cards
End Sub

' A failure is reported by whoever asks for it.
On Error Resume Next

Dim id, made
For Each id In Array("Tervane.ConfigureOutlookExpress", "Ostrel.GeneralSysInfo", _
    "Pellow.SmtpCtl", "Pellow.PopCtl", "Pellow.EmailData", "Tervane.ConnectivityTester", _
    "Tervane.DHCP", "Tervane.ConfigureIE", "Tervane.StaticAdapterInfo", _
    "Tervane.LiveAdapterInfo", "Tervane.DriveInfo", "Tervane.PhoneBookEntry", "Tervane.RASMgr", _
    "Tervane.DHCPConfiguration", "Tervane.WindowMgr", "Tervane.DisableFileAndPrintSharing", _
    "Tervane.Registry2", "Tervane.AdapterInfo")
    Set made = Nothing
    Set made = CreateObject(id)
    Report Err.Number = 0, "class " & id
    Err.Clear
Next

Dim info, mail, smtp, pop, tester, windows, adapters, dial, dhcp
Set info = WScript.CreateObject("Ostrel.GeneralSysInfo", "Info_")
info.GetSystemInfo
Await "OnGeneralSysInfoComplete"

' Nobody listens on port 1, so these end soon, with a failure.
Set mail = CreateObject("Pellow.EmailData")
mail.From = "a@a.example"
mail.To = "b@b.example"
Set smtp = WScript.CreateObject("Pellow.SmtpCtl", "Smtp_")
Set smtp.EmailData = mail
smtp.SmtpServer = "127.0.0.1"
smtp.Port = 1
smtp.SendMail
Await "OnSmtpSendMailComplete"

Set pop = WScript.CreateObject("Pellow.PopCtl", "Pop_")
pop.PopServer = "127.0.0.1"
pop.Port = 1
pop.Login = "a"
pop.Password = "b"
pop.Connect
Await "OnPopConnect"

Set tester = WScript.CreateObject("Tervane.ConnectivityTester", "Tester_")
tester.Ping "127.0.0.1", 2000, 2
Await "OnPingComplete"

Set windows = WScript.CreateObject("Tervane.WindowMgr", "Windows_")
windows.WaitForWindow NONE, "", 50, True, 5
Await "OnWaitForWindowComplete"

Set adapters = WScript.CreateObject("Tervane.AdapterInfo", "Adapters_")
adapters.GetAdapterInfo "8E92E2FF-4CE5-4DED-8360-5E6342F08340"
Await "OnAdapterInfoComplete"

' A connection that is given up at once, over a device that dials no number. Not all machines have one.
Dim device, tunnel, begun
tunnel = ""
begun = False
Set dial = WScript.CreateObject("Tervane.RASMgr", "Dial_")
For Each device In dial.FindDevices(".*")
    If LCase(dial.GetDeviceType(device)) = "vpn" Then tunnel = device
Next
If tunnel <> "" Then begun = dial.CreateEntry("Tervane check", "127.0.0.1", tunnel)
If begun Then
    dial.AbortConnect dial.Connect("Tervane check")
    Await "OnConnectComplete"
    dial.DeleteEntry "Tervane check"
Else
    WScript.Echo "left out OnConnectComplete: error " & dial.LastErrorCode
End If

Set dhcp = WScript.CreateObject("Tervane.DHCP", "Dhcp_")
If WScript.Arguments.Count > 1 Then
    WScript.Echo "left out OnReleaseRenewComplete, as asked"
Else
    patience = 180 ' five or more for each card
    dhcp.ReleaseRenew
    Await "OnReleaseRenewComplete"
End If
WScript.Quit failures
