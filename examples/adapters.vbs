' Lists the network adapters that are up, with what is wrong with them.
' Run it with: cscript //nologo adapters.vbs
Option Explicit

' The interface whose objects the list is to have, named by its identifier.
Const kLive = "8E92E2FF-4CE5-4DED-8360-5E6342F08340"

Const kPatience = 60 ' seconds

Dim info, request, ended, gathered, adapter
Set info = WScript.CreateObject("Tervane.AdapterInfo", "Info_")

Sub Info_OnAdapterInfoComplete(number, result)
    If number = request Then
        gathered = (result <> 0)
        ended = True
    End If
End Sub

' Events come in while the script sleeps, if the host delivers any.
Sub SleepUntilEnded()
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
End Sub

Function Verdict(adapter)
    If adapter.IpAddress = "0.0.0.0" Then
        Verdict = "has no address"
    ElseIf Left(adapter.IpAddress, 7) = "169.254" Then
        Verdict = "found no DHCP server and gave itself an address"
    ElseIf adapter.DefaultGateway = "0.0.0.0" Then
        Verdict = "reaches its own network only"
    Else
        Verdict = "ok"
    End If
End Function

request = info.GetAdapterInfo(kLive)
If request = 0 Then Err.Raise 1, , "no request could be made, error " & info.LastErrorCode
SleepUntilEnded
If Not gathered Then Err.Raise 1, , "the list could not be gathered"
For Each adapter In info.GetRequestedAdapterInfo(request)
    WScript.Echo adapter.Name & " (" & adapter.HardwareAddress & "), " & adapter.IpAddress & ": " & Verdict(adapter)
Next
WScript.Echo "Done."
