' Whether this machine shares files and printers with others. Run it with:
' cscript //nologo sharing.vbs [off]
'
' "off" switches sharing off, which takes an administrator. Where it is off already, doing so changes
' nothing, which the script shows.

Option Explicit

Dim sharing, isWanted
Set sharing = CreateObject("Tervane.DisableFileAndPrintSharing")
isWanted = False
If WScript.Arguments.Length > 0 Then isWanted = LCase(WScript.Arguments(0)) = "off"

Sub Fail(what)
    WScript.Echo what & ": error " & sharing.LastErrorCode & ", " & sharing.LastError
    WScript.Quit 1
End Sub

Dim isOn
isOn = sharing.IsSharingEnabled
If sharing.LastErrorCode <> 0 Then Fail "It cannot be found out whether sharing is on"
If isOn Then
    WScript.Echo "Files and printers are shared."
Else
    WScript.Echo "Nothing is shared."
End If

If isWanted Or Not isOn Then
    If Not sharing.DisableSharing() Then Fail "Sharing cannot be switched off"
    If sharing.IsSharingEnabled And Not sharing.IsRebootNeeded Then Fail "Sharing is still on"
    WScript.Echo "Sharing is off."
    If sharing.IsRebootNeeded Then WScript.Echo "This takes effect when the machine starts again."
End If
WScript.Echo "Done."
