; The set-up program. Compiled by scripts/steps/pack, which defines VERSION, STAGE (the folder with
; what is installed), FILES (the file with the lists of it) and OUTPUT, and UNINSTALLER_SIGNER when
; the uninstaller is to be signed.
;
; What a run does: it checks the folder, puts the files of an earlier installation aside, installs and
; registers, checks that the registration leads to what was installed, and only then gives the earlier
; files up. Anything that fails on the way brings the earlier files and registration back.

Unicode true
ManifestSupportedOS all
; "highest" rather than "admin": without administrator rights it is this program that says so, in its
; log and by its exit code, and not the system.
RequestExecutionLevel highest
Name "Tervane ${VERSION}"
OutFile "${OUTPUT}"
BrandingText " "
ShowInstDetails show
ShowUninstDetails show
AllowRootDirInstall false
; A file that cannot be written sets the error flag, rather than asking or ending the program.
SetOverwrite try
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Tervane"
VIAddVersionKey "CompanyName" "Tervane"
VIAddVersionKey "FileDescription" "Tervane set-up"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "The Tervane developers"

!include LogicLib.nsh
!include FileFunc.nsh
!include x64.nsh

!ifdef UNINSTALLER_SIGNER
!uninstfinalize '${UNINSTALLER_SIGNER} "%1"' = 0
!endif

; The system's own numbers, as those who deploy software know them.
!define DONE 0
!define NO_RIGHTS 740       ; ERROR_ELEVATION_REQUIRED
!define CANCELLED 1602      ; ERROR_INSTALL_USEREXIT
!define FAILED 1603         ; ERROR_INSTALL_FAILURE
!define RUNNING_ALREADY 1618 ; ERROR_INSTALL_ALREADY_RUNNING
!define NO_LOG 1622         ; ERROR_INSTALL_LOG_FAILURE
!define ELSEWHERE 1638      ; ERROR_PRODUCT_VERSION
!define NEEDS_RESTART 3010  ; ERROR_SUCCESS_REBOOT_REQUIRED

!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tervane"
; The class whose registration stands for all: that of Registry2.
!define ANY_CLASS "Software\Classes\CLSID\{E8BB94CB-7C06-445D-8DBC-6E4CCAC1F905}\InprocServer32"
; What lies in a folder of ours. The guard knows this name, too.
!define LIST "installed-files.txt"

Var Log       ; handle of the log file, or empty
Var Registered32 ; the library that was registered before, for 32- and for 64-bit programs, or empty
Var Registered64
Var Aside     ; where the files of the earlier installation are put for the time being
Var Failure   ; what went wrong, or empty

!include "${FILES}"
!include "${__FILEDIR__}\common.nsh"

Page license
LicenseData "${STAGE}\common\LICENSE.txt"
Page directory SkipIfInstalled
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

!insertmacro Both ""
!insertmacro Both "un."

; ------------------------------------------------------------------------------------ installing

Function .onInit
    Call Begin
    Call FindFolder
    InitPluginsDir
    File "/oname=$PLUGINSDIR\setup_guard.exe" "${STAGE}\setup_guard.exe"
    File "/oname=$PLUGINSDIR\new-files.txt" "${STAGE}\files-32.txt"
    ${If} ${RunningX64}
        File "/oname=$PLUGINSDIR\new-files.txt" "${STAGE}\files-64.txt"
    ${EndIf}
FunctionEnd

Function .onUserAbort
    SetErrorLevel ${CANCELLED}
FunctionEnd

; An installation that is there is brought up to date where it is.
Function FindFolder
    ReadRegStr $0 HKLM "${ENTRY}" "InstallLocation"
    ${If} $0 != ""
    ${AndIf} ${FileExists} "$0\${LIST}"
        ${If} $INSTDIR == ""
            StrCpy $INSTDIR $0
        ${ElseIf} $INSTDIR != $0
            !insertmacro Refuse ${ELSEWHERE} "Tervane is installed in $0 already; uninstall it there first."
        ${EndIf}
    ${ElseIf} $INSTDIR == ""
        StrCpy $INSTDIR "$PROGRAMFILES\Tervane"
        ${If} ${RunningX64}
            StrCpy $INSTDIR "$PROGRAMFILES64\Tervane"
        ${EndIf}
    ${EndIf}
FunctionEnd

Function SkipIfInstalled
    ${If} ${FileExists} "$INSTDIR\${LIST}"
        Abort
    ${EndIf}
FunctionEnd

Function CheckFolder
    nsExec::ExecToStack '"$PLUGINSDIR\setup_guard.exe" folder "$INSTDIR"'
    Pop $0
    Pop $1
    ${If} $0 != 0
        StrCpy $Failure "The folder is not safe ($0): $1"
    ${EndIf}
FunctionEnd

; A run that was cut off has left the earlier files aside, their list first of all; they are the
; installation to go back to.
Function FindAside
    StrCpy $0 1
    StrCpy $Aside "$INSTDIR\aside$0"
    ${DoWhile} ${FileExists} $Aside
        ${If} ${FileExists} "$Aside\${LIST}"
            !insertmacro Say "An earlier run was cut off; its files come back from $Aside"
            CopyFiles /SILENT "$Aside\${LIST}" "$PLUGINSDIR\cut-off.txt"
            StrCpy $R0 "$PLUGINSDIR\cut-off.txt"
            Call BringBack
            Call EndBringingBack
            !insertmacro RegisterOther "" 32 "$INSTDIR\x86\Tervane.DLL"
            !insertmacro RegisterOther "" 64 "$INSTDIR\x64\Tervane.DLL"
        ${EndIf}
        IntOp $0 $0 + 1
        StrCpy $Aside "$INSTDIR\aside$0"
    ${Loop}
FunctionEnd

; Moves the files of a list ($R0) out of the way. Files in use can be moved, though not deleted.
Function PutAside
    ClearErrors
    FileOpen $R1 $R0 r
    ${If} ${Errors}
        Return
    ${EndIf}
    ${Do}
        !insertmacro ReadName $R1 $R2
        ${If} $R2 == ""
            ${ExitDo}
        ${EndIf}
        StrCpy $R3 $R2 1 -1
        ${If} $R3 == "\"
            CreateDirectory "$Aside\$R2"
        ${ElseIf} ${FileExists} "$INSTDIR\$R2"
            ${GetParent} "$Aside\$R2" $R3
            CreateDirectory $R3
            ClearErrors
            Rename "$INSTDIR\$R2" "$Aside\$R2"
            ${If} ${Errors}
                StrCpy $Failure "$INSTDIR\$R2 cannot be replaced"
            ${EndIf}
        ${EndIf}
    ${Loop}
    FileClose $R1
FunctionEnd

; Brings the files of a list ($R0) back.
Function BringBack
    ClearErrors
    FileOpen $R1 $R0 r
    ${If} ${Errors}
        Return
    ${EndIf}
    ${Do}
        !insertmacro ReadName $R1 $R2
        ${If} $R2 == ""
            ${ExitDo}
        ${EndIf}
        StrCpy $R3 $R2 1 -1
        ${If} $R3 == "\"
            RMDir "$Aside\$R2"
        ${ElseIf} $R2 != "${LIST}"
        ${AndIf} ${FileExists} "$Aside\$R2"
            ${GetParent} "$INSTDIR\$R2" $R3
            CreateDirectory $R3
            Delete "$INSTDIR\$R2"
            ClearErrors
            Rename "$Aside\$R2" "$INSTDIR\$R2"
            ${If} ${Errors}
                !insertmacro Say "$INSTDIR\$R2 could not be brought back"
            ${EndIf}
        ${EndIf}
    ${Loop}
    FileClose $R1
FunctionEnd

; The list comes last: as long as it is aside, the next run takes up one that is cut off.
Function EndBringingBack
    ${If} ${FileExists} "$Aside\${LIST}"
        Delete "$INSTDIR\${LIST}"
        Rename "$Aside\${LIST}" "$INSTDIR\${LIST}"
    ${EndIf}
    RMDir $Aside
FunctionEnd

Function CopyNew
    ClearErrors
    !insertmacro CommonFiles
    !insertmacro X86Files
    ${If} ${RunningX64}
        !insertmacro X64Files
    ${EndIf}
    SetOutPath $INSTDIR
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CopyFiles /SILENT "$PLUGINSDIR\new-files.txt" "$INSTDIR\${LIST}"
    ${If} ${Errors}
        StrCpy $Failure "A file cannot be written to $INSTDIR"
    ${EndIf}
FunctionEnd

; Registers what was copied and makes sure that every class leads to it.
!macro RegisterAndCheck bits arch
    Push "$INSTDIR\${arch}\Tervane.DLL"
    Push ""
    Call RunRegsvr${bits}
    Pop $0
    ${If} $0 != 0
        StrCpy $Failure "Registering the ${bits}-bit library has failed (regsvr32: $0)"
    ${Else}
        nsExec::ExecToStack '"$PLUGINSDIR\setup_guard.exe" registered "$INSTDIR\${arch}\Tervane.DLL" ${bits}'
        Pop $0
        Pop $1
        ${If} $0 != 0
            StrCpy $Failure "The ${bits}-bit registration is not right ($0): $1"
        ${EndIf}
    ${EndIf}
!macroend

Function Register
    !insertmacro RegisterAndCheck 32 x86
    ${If} $Failure == ""
    ${AndIf} ${RunningX64}
        !insertmacro RegisterAndCheck 64 x64
    ${EndIf}
FunctionEnd

Function RemoveNew
    Call UnregisterOurs
    StrCpy $R0 "$PLUGINSDIR\new-files.txt"
    Call RemoveListed
FunctionEnd

; Everything as it was: earlier files and registration in. What could not be put aside is still there.
Function RollBack
    !insertmacro Say "$Failure"
    !insertmacro Say "Bringing back what was there before"
    StrCpy $R0 "$PLUGINSDIR\new-files.txt"
    Call BringBack
    StrCpy $R0 "$PLUGINSDIR\old-files.txt"
    Call BringBack
    Call EndBringingBack
    Call RegisterEarlier
    RMDir "$INSTDIR"
FunctionEnd

Function WriteEntry
    WriteRegStr HKLM "${ENTRY}" "DisplayName" "Tervane"
    WriteRegStr HKLM "${ENTRY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${ENTRY}" "Publisher" "Tervane"
    WriteRegStr HKLM "${ENTRY}" "DisplayIcon" "$INSTDIR\uninstall.exe"
    WriteRegStr HKLM "${ENTRY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${ENTRY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${ENTRY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKLM "${ENTRY}" "NoModify" 1
    WriteRegDWORD HKLM "${ENTRY}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKLM "${ENTRY}" "EstimatedSize" $0
FunctionEnd

Section
    !insertmacro Say "Installing Tervane ${VERSION} in $INSTDIR"
    StrCpy $Failure ""
    Call CheckFolder
    ${If} $Failure != ""
        !insertmacro End ${FAILED} $Failure
    ${EndIf}
    Call FindAside
    Call FindRegistered
    Call UnregisterOurs
    CopyFiles /SILENT "$INSTDIR\${LIST}" "$PLUGINSDIR\old-files.txt"
    StrCpy $R0 "$PLUGINSDIR\old-files.txt"
    Call PutAside
    StrCpy $R0 "$PLUGINSDIR\new-files.txt"
    Call PutAside
    ${If} $Failure == ""
        Call CopyNew
        ${If} $Failure == ""
            Call Register
        ${EndIf}
        ${If} $Failure != ""
            Call RemoveNew
        ${EndIf}
    ${EndIf}
    ${If} $Failure != ""
        Call RollBack
        !insertmacro End ${FAILED} "Tervane was not installed: $Failure"
    ${EndIf}
    Delete "$Aside\${LIST}"
    Call RemoveAside
    Call WriteEntry
    !insertmacro EndWell "Tervane ${VERSION} is installed"
SectionEnd

; ---------------------------------------------------------------------------------- uninstalling

Function un.onInit
    Call un.Begin
    InitPluginsDir
    ${IfNot} ${FileExists} "$INSTDIR\${LIST}"
        !insertmacro Refuse ${FAILED} "$INSTDIR holds no installation of Tervane."
    ${EndIf}
FunctionEnd

Function un.onUserAbort
    SetErrorLevel ${CANCELLED}
FunctionEnd

Section "Uninstall"
    !insertmacro Say "Uninstalling Tervane ${VERSION} from $INSTDIR"
    Call un.FindRegistered
    Call un.UnregisterOurs
    CopyFiles /SILENT "$INSTDIR\${LIST}" "$PLUGINSDIR\old-files.txt"
    StrCpy $R0 "$PLUGINSDIR\old-files.txt"
    SetOutPath $TEMP
    Call un.RemoveListed
    Call un.RemoveAside
    !insertmacro RemoveFolder $INSTDIR
    ; Another copy that was registered in the meantime goes on being used.
    Call un.RegisterEarlier
    DeleteRegKey HKLM "${ENTRY}"
    !insertmacro EndWell "Tervane is uninstalled"
SectionEnd
