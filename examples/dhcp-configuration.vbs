' Tells which of the installed network adapters take their address and their name servers from DHCP.
' Run it with: cscript //nologo dhcp-configuration.vbs [COOKIE]
'
' With the cookie of an adapter, which stands in braces or begins with "Enum\", it also switches that
' adapter to DHCP and back, so that nothing is left changed; that takes an administrator.
Option Explicit

Dim info, configuration, adapters, i
Set info = WScript.CreateObject("Ostrel.GeneralSysInfo")
Set configuration = CreateObject("Tervane.DHCPConfiguration")

Function FromDhcp(yes)
    If yes Then FromDhcp = "from DHCP" Else FromDhcp = "not from DHCP"
End Function

' What a call came to, in words.
Sub Tell(what, succeeded)
    If succeeded Then
        WScript.Echo "  " & what & ": done"
    Else
        WScript.Echo "  " & what & ": " & configuration.LastError & " " & configuration.LastErrorCode
    End If
End Sub

Sub Show(adapter)
    Dim servers, server
    For Each server In adapter.StaticNameServers
        servers = servers & " " & server
    Next
    If IsEmpty(servers) Then servers = " none"
    WScript.Echo adapter.Name & " (" & adapter.AdapterType & ")"
    WScript.Echo "  cookie:       " & adapter.Cookie
    WScript.Echo "  address:      " & FromDhcp(adapter.UsingDhcp <> 0) & ", static " & _
        adapter.StaticIpAddress
    WScript.Echo "  gateway:      static " & adapter.StaticDefaultGateway
    WScript.Echo "  name servers: static" & servers
End Sub

Sub SwitchThereAndBack(adapter)
    Dim cookie, usesDhcp, dnsIsStatic
    cookie = adapter.Cookie
    usesDhcp = (adapter.UsingDhcp <> 0)
    dnsIsStatic = (adapter.IsDnsStatic <> 0)
    WScript.Echo "Switching " & adapter.Name
    Tell "address to DHCP", configuration.EnableIPToUseDhcp(cookie, True)
    If Not usesDhcp Then Tell "address back", configuration.EnableIPToUseDhcp(cookie, False)
    Tell "name servers to DHCP", configuration.EnableDnsToUseDhcp(cookie, True)
    If dnsIsStatic Then Tell "name servers back", configuration.EnableDnsToUseDhcp(cookie, False)
    If configuration.IsRebootNeeded <> 0 Then
        WScript.Echo "  (what changes takes effect when the computer starts again)"
    End If
End Sub

WScript.Echo info.NumStaticAdapters & " installed adapters"
For i = 0 To info.NumStaticAdapters - 1
    Show info.GetStaticAdapterInfo(i)
Next

If WScript.Arguments.Count > 0 Then
    For i = 0 To info.NumStaticAdapters - 1
        If info.GetStaticAdapterInfo(i).Cookie = WScript.Arguments(0) Then
            SwitchThereAndBack info.GetStaticAdapterInfo(i)
        End If
    Next
Else
    WScript.Echo "An adapter that does not exist"
    Tell "address to DHCP", configuration.EnableIPToUseDhcp("no such cookie", True)
End If
WScript.Echo "Done."
