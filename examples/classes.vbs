' Makes one object of every class, which shows that the library is registered whole and that this
' host takes its objects. Run it with: cscript //nologo classes.vbs
Option Explicit

Dim names, name, object, failed
names = Array("Tervane.AdapterInfo", "Tervane.ConfigureIE", "Tervane.ConfigureOutlookExpress", _
              "Tervane.ConnectivityTester", "Tervane.DHCP", "Tervane.DHCPConfiguration", _
              "Tervane.DisableFileAndPrintSharing", "Tervane.DriveInfo", _
              "Tervane.LiveAdapterInfo", "Tervane.PhoneBookEntry", "Tervane.RASMgr", _
              "Tervane.Registry2", "Tervane.StaticAdapterInfo", "Tervane.WindowMgr", _
              "Ostrel.GeneralSysInfo", "Pellow.EmailData", "Pellow.PopCtl", "Pellow.SmtpCtl")
failed = 0
For Each name In names
    On Error Resume Next
    Set object = CreateObject(name)
    If Err.Number = 0 Then
        WScript.Echo "  ok      " & name
    Else
        WScript.Echo "  FAILED  " & name & ": error " & Err.Number & " " & Err.Description
        failed = failed + 1
    End If
    On Error GoTo 0
    Set object = Nothing
Next
WScript.Echo UBound(names) + 1 - failed & " of " & UBound(names) + 1 & " classes"
If failed > 0 Then WScript.Quit 1
WScript.Echo "Done."
