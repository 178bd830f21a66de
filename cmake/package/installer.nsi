; The installer. package.sh hands in VERSION, FILES (the folder to be packed), OUT, and writes lists.nsh with the
; files one by one, so that uninstalling removes what was installed and nothing else.
;
; Silent: installer.exe /S [/AllUsers | /CurrentUser] [/PluginFolder=DIR] [/NoHosts] [/Path] [/D=DIR]
Target amd64-unicode
; Lzma would save a fifth of the size and cost twenty times the time.
SetCompressor /SOLID zlib
SetDateSave on
Name "Brillatrix Pro"
OutFile "${OUT}"
RequestExecutionLevel highest
BrandingText "Brillatrix Pro ${VERSION}"
VIProductVersion "${VERSION}"
VIAddVersionKey ProductName "Brillatrix Pro"
VIAddVersionKey CompanyName "Nexorvanta Software"
VIAddVersionKey FileDescription "Brillatrix Pro set-up"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey LegalCopyright "MIT licence"

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include nsDialogs.nsh
!include "${LISTS}"

!define MODULE "BrillatrixX64.8bf"
!define KEY "Software\Nexorvanta\Brillatrix"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Brillatrix"
!define MACHINE_PATH_KEY "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
!define MOST_PATH 65000 ; bytes: Windows takes no longer path
!define SLOTS 16

Var ForAll       ; 1: for all users
Var MayAll       ; 1: this account may
Var Count        ; hosts found
Var Failed       ; folders that could not be written
Var ExtraFolder  ; the user's own choice
Var ExtraControl
Var AllControl
Var Given        ; the folder of /D=
Var Found
Var FoundName

!insertmacro GetParameters
!insertmacro GetOptions

; What is asked

!define MUI_ABORTWARNING
!define MUI_WELCOMEPAGE_TEXT "This puts Brillatrix Pro ${VERSION} on this computer, or repairs or renews it where it is.$\r$\n$\r$\nPlease close your image editor first.$\r$\n$\r$\nSaved parameter sets and settings stay as they are."
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${FILES}/LICENSE.txt"
Page custom AskForWhom TakeForWhom
!define MUI_PAGE_HEADER_TEXT "Where the plug-in goes"
!define MUI_PAGE_HEADER_SUBTEXT "Take the tick away where it is not to go."
!define MUI_COMPONENTSPAGE_NODESC
!define MUI_COMPONENTSPAGE_TEXT_TOP "These plug-in folders were found. The next page takes another one."
!insertmacro MUI_PAGE_COMPONENTS
Page custom AskExtraFolder TakeExtraFolder
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Open the guide"
!define MUI_FINISHPAGE_RUN_FUNCTION OpenGuide
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

Function OpenGuide
    ExecShell open "$INSTDIR\guide\Brillatrix Pro Guide.html"
FunctionEnd

; For whom

Function SetMode
    SetRegView 64
    ${If} $ForAll == 1
        SetShellVarContext all
        StrCpy $INSTDIR "$PROGRAMFILES64\Brillatrix Pro"
    ${Else}
        SetShellVarContext current
        StrCpy $INSTDIR "$LOCALAPPDATA\Programs\Brillatrix Pro"
    ${EndIf}
    ReadRegStr $0 SHCTX "${KEY}" InstallFolder
    ${If} $0 != ""
        StrCpy $INSTDIR $0
    ${EndIf}
    ${If} $Given != ""
        StrCpy $INSTDIR $Given
    ${EndIf}
    ReadRegDWORD $0 SHCTX "${KEY}" OnPath
    ${If} $0 == 1
        Call TickPath
    ${EndIf}
    Call FindHosts
FunctionEnd

Function .onInit
    StrCpy $Given $INSTDIR
    SetRegView 64
    UserInfo::GetAccountType
    Pop $0
    StrCpy $MayAll 0
    ${If} $0 == "Admin"
        StrCpy $MayAll 1
    ${EndIf}
    ; As it was installed before; else for all, where that may be.
    StrCpy $ForAll $MayAll
    ReadRegStr $0 HKCU "${KEY}" InstallFolder
    ${If} $0 != ""
        StrCpy $ForAll 0
    ${EndIf}
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/AllUsers" $2
    ${IfNot} ${Errors}
        StrCpy $ForAll 1
        ${If} $MayAll == 0
            SetErrorLevel 5
            Abort
        ${EndIf}
    ${EndIf}
    ClearErrors
    ${GetOptions} $1 "/CurrentUser" $2
    ${IfNot} ${Errors}
        StrCpy $ForAll 0
    ${EndIf}
    ClearErrors
    ${GetOptions} $1 "/PluginFolder=" $ExtraFolder
    Call SetMode
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/NoHosts" $2
    ${IfNot} ${Errors}
        Call UntickHosts
    ${EndIf}
    ClearErrors
    ${GetOptions} $1 "/Path" $2
    ${IfNot} ${Errors}
        Call TickPath
    ${EndIf}
FunctionEnd

Function AskForWhom
    ${If} $MayAll == 0
        Abort
    ${EndIf}
    !insertmacro MUI_HEADER_TEXT "For whom" "Plug-in folders of programs belong to all users of this computer."
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateRadioButton} 0 20u 100% 12u "For &all users of this computer"
    Pop $AllControl
    ${NSD_CreateRadioButton} 0 36u 100% 12u "For &me only (plug-in folders that I may write to)"
    Pop $0
    ${If} $ForAll == 1
        ${NSD_Check} $AllControl
    ${Else}
        ${NSD_Check} $0
    ${EndIf}
    nsDialogs::Show
FunctionEnd

Function TakeForWhom
    ${NSD_GetState} $AllControl $0
    ${If} $0 != $ForAll
        StrCpy $ForAll $0
        Call SetMode
    ${EndIf}
FunctionEnd

Function AskExtraFolder
    !insertmacro MUI_HEADER_TEXT "Another plug-in folder" "Leave it empty when the list had all you need."
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateLabel} 0 0 100% 24u "The plug-in folder of another program, or one that several programs share:"
    Pop $0
    ${NSD_CreateDirRequest} 0 28u 78% 13u "$ExtraFolder"
    Pop $ExtraControl
    ${NSD_CreateBrowseButton} 80% 28u 20% 13u "B&rowse..."
    Pop $0
    ${NSD_OnClick} $0 BrowseExtraFolder
    nsDialogs::Show
FunctionEnd

Function BrowseExtraFolder
    Pop $0
    nsDialogs::SelectFolderDialog "Plug-in folder" "$ExtraFolder"
    Pop $0
    ${If} $0 != error
        ${NSD_SetText} $ExtraControl $0
    ${EndIf}
FunctionEnd

Function TakeExtraFolder
    ${NSD_GetText} $ExtraControl $ExtraFolder
FunctionEnd

; What is installed

Section "-Program"
    SetRegView 64
    StrCpy $Failed ""
    Call RemoveOlder
    ClearErrors
    !insertmacro InstallFiles
    WriteUninstaller "$INSTDIR\Uninstall.exe"
    ${If} ${Errors}
        StrCpy $Failed "$\r$\n$INSTDIR"
    ${EndIf}
    CreateDirectory "$SMPROGRAMS\Brillatrix Pro"
    CreateShortcut "$SMPROGRAMS\Brillatrix Pro\Brillatrix Pro Guide.lnk" "$INSTDIR\guide\Brillatrix Pro Guide.html"
    CreateShortcut "$SMPROGRAMS\Brillatrix Pro\Uninstall Brillatrix Pro.lnk" "$INSTDIR\Uninstall.exe"
    WriteRegStr SHCTX "${KEY}" InstallFolder "$INSTDIR"
    WriteRegStr SHCTX "${KEY}" Version "${VERSION}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "Brillatrix Pro"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" Publisher "Nexorvanta Software"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\brillatrix.exe"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\Uninstall.exe"'
    WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\Uninstall.exe" /S'
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize ${SIZE_KB}
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
SectionEnd

; An older installation takes itself away, with files that this version has no more, its folder if that was another one,
; and its entry in the path. Told its folder in this way, it runs where it is and is waited for, but does not delete itself.
Function RemoveOlder
    ReadRegStr $R0 SHCTX "${KEY}" InstallFolder
    ${If} $R0 != ""
    ${AndIf} ${FileExists} "$R0\Uninstall.exe"
        ExecWait '"$R0\Uninstall.exe" /S _?=$R0'
        Delete "$R0\Uninstall.exe"
        RMDir "$R0"
    ${EndIf}
FunctionEnd

; $0: a plug-in folder. Each is remembered before it is written to.
Function InstallModule
    ReadRegStr $1 SHCTX "${KEY}\PluginFolders" "$0"
    ${If} $1 == ""
        StrCpy $1 found
        ${IfNot} ${FileExists} "$0\*.*"
            StrCpy $1 made
        ${EndIf}
    ${EndIf}
    CreateDirectory "$0"
    WriteRegStr SHCTX "${KEY}\PluginFolders" "$0" $1
    ClearErrors
    SetOutPath "$0"
    SetOverwrite try
    File "${FILES}/${MODULE}"
    SetOverwrite on
    ${If} ${Errors}
        StrCpy $Failed "$Failed$\r$\n$0"
        ${IfNot} ${FileExists} "$0\${MODULE}"
            DeleteRegValue SHCTX "${KEY}\PluginFolders" "$0"
        ${EndIf}
    ${EndIf}
    SetOutPath "$INSTDIR"
FunctionEnd

!macro Slot number
    Var Folder${number}
    Section "" Host${number}
        ${If} $Folder${number} != ""
            StrCpy $0 $Folder${number}
            Call InstallModule
        ${EndIf}
    SectionEnd
!macroend
SectionGroup /e "Plug-in folders"
    !insertmacro Slot 0
    !insertmacro Slot 1
    !insertmacro Slot 2
    !insertmacro Slot 3
    !insertmacro Slot 4
    !insertmacro Slot 5
    !insertmacro Slot 6
    !insertmacro Slot 7
    !insertmacro Slot 8
    !insertmacro Slot 9
    !insertmacro Slot 10
    !insertmacro Slot 11
    !insertmacro Slot 12
    !insertmacro Slot 13
    !insertmacro Slot 14
    !insertmacro Slot 15
SectionGroupEnd

Section /o "brillatrix on the command line (adds its folder to the path)" AddToPath
    Call OpenPath
    ${If} $8 = 0
        Call TakeFolderOut
        Call AddFolder
        Call WritePath
    ${EndIf}
    ${If} $8 = 0
        WriteRegDWORD SHCTX "${KEY}" OnPath 1
    ${Else}
        SetErrorLevel 4
        MessageBox MB_OK|MB_ICONEXCLAMATION "The path could not be changed (error $8) and stays as it was. Add this folder yourself:$\r$\n$INSTDIR" /SD IDOK
    ${EndIf}
SectionEnd

Section "-Last"
    ${If} $ExtraFolder != ""
        StrCpy $0 $ExtraFolder
        Call InstallModule
    ${EndIf}
    ${If} $Failed != ""
        SetErrorLevel 3
        MessageBox MB_OK|MB_ICONEXCLAMATION "Not all could be written to:$Failed$\r$\n$\r$\nClose the programs that use it and run this again, or choose $\"for all users$\"." /SD IDOK
    ${EndIf}
SectionEnd

Function TickPath
    SectionSetFlags ${AddToPath} ${SF_SELECTED}
FunctionEnd

!macro Untick number
    SectionSetFlags ${Host${number}} 0
!macroend
!macro ForSlots macro
    !insertmacro ${macro} 0
    !insertmacro ${macro} 1
    !insertmacro ${macro} 2
    !insertmacro ${macro} 3
    !insertmacro ${macro} 4
    !insertmacro ${macro} 5
    !insertmacro ${macro} 6
    !insertmacro ${macro} 7
    !insertmacro ${macro} 8
    !insertmacro ${macro} 9
    !insertmacro ${macro} 10
    !insertmacro ${macro} 11
    !insertmacro ${macro} 12
    !insertmacro ${macro} 13
    !insertmacro ${macro} 14
    !insertmacro ${macro} 15
!macroend
Function UntickHosts
    !insertmacro ForSlots Untick
FunctionEnd

; Which hosts are there

; $FoundName and $Found: a folder that may be there. It gets the next slot, ticked, once; "for me only" takes none that
; this user may not write to.
!macro TakeSlot number
    ${If} $Count == ${number}
        StrCpy $Folder${number} $Found
        SectionSetText ${Host${number}} "$FoundName: $Found"
        SectionSetFlags ${Host${number}} ${SF_SELECTED}
    ${EndIf}
!macroend
!macro CompareSlot number
    ${If} $Folder${number} == $Found
        StrCpy $R9 1
    ${EndIf}
!macroend
!macro ClearSlot number
    StrCpy $Folder${number} ""
    SectionSetText ${Host${number}} ""
    SectionSetFlags ${Host${number}} 0
!macroend
Function AddHost
    ${GetFileAttributes} "$Found" "DIRECTORY" $R9
    ${If} $Found == ""
    ${OrIf} $R9 != 1
        Return
    ${EndIf}
    StrCpy $R9 0
    !insertmacro ForSlots CompareSlot
    ${If} $R9 == 1
    ${OrIf} $Count >= ${SLOTS}
        Return
    ${EndIf}
    ${If} $ForAll == 0
        ClearErrors
        GetTempFileName $R9 "$Found"
        ${If} ${Errors}
            Return
        ${EndIf}
        Delete $R9
    ${EndIf}
    !insertmacro ForSlots TakeSlot
    IntOp $Count $Count + 1
FunctionEnd

; $R1: a folder with a pattern as its last name, $R2: what is below each
Function AddEach
    ${GetParent} "$R1" $R3
    FindFirst $R4 $R5 "$R1"
    ${DoWhile} $R5 != ""
        ${If} $R5 != "."
        ${AndIf} $R5 != ".."
            StrCpy $FoundName $R5
            StrCpy $Found "$R3\$R5\$R2"
            Call AddHost
        ${EndIf}
        FindNext $R4 $R5
    ${Loop}
    FindClose $R4
FunctionEnd
!macro Each pattern below
    StrCpy $R1 "${pattern}"
    StrCpy $R2 "${below}"
    Call AddEach
!macroend
!macro Place name folder
    StrCpy $FoundName "${name}"
    StrCpy $Found "${folder}"
    Call AddHost
!macroend

; The folder of a program that Windows knows by its file's name
!macro Program name file below
    ReadRegStr $R1 HKLM "Software\Microsoft\Windows\CurrentVersion\App Paths\${file}" ""
    ${If} $R1 == ""
        ReadRegStr $R1 HKCU "Software\Microsoft\Windows\CurrentVersion\App Paths\${file}" ""
    ${EndIf}
    ${If} $R1 != ""
        ${GetParent} "$R1" $R1
        !insertmacro Place "${name}" "$R1\${below}"
    ${EndIf}
!macroend

; What each version of a product wrote of itself
!macro Versions name key value below
    StrCpy $R6 0
    ${Do}
        EnumRegKey $R7 HKLM "${key}" $R6
        ${If} $R7 == ""
            ${ExitDo}
        ${EndIf}
        ReadRegStr $R1 HKLM "${key}\$R7" "${value}"
        ${If} $R1 != ""
            !insertmacro Place "${name} $R7" "$R1${below}"
        ${EndIf}
        IntOp $R6 $R6 + 1
    ${Loop}
!macroend

Function FindHosts
    StrCpy $Count 0
    !insertmacro ForSlots ClearSlot
    !insertmacro Place "All Photoshop versions since CC" "$COMMONFILES64\Adobe\Plug-Ins\CC"
    !insertmacro Versions "Photoshop" "SOFTWARE\Adobe\Photoshop" "PluginPath" ""
    !insertmacro Versions "Photoshop" "SOFTWARE\Adobe\Photoshop" "ApplicationPath" "Plug-ins"
    !insertmacro Each "$PROGRAMFILES64\Adobe\Adobe Photoshop*" "Plug-ins"
    !insertmacro Versions "Photoshop Elements" "SOFTWARE\Adobe\Photoshop Elements" "PluginPath" ""
    !insertmacro Each "$PROGRAMFILES64\Adobe\Photoshop Elements*" "Plug-Ins"
    SetShellVarContext all
    StrCpy $R8 $APPDATA
    ${If} $ForAll == 0
        SetShellVarContext current
    ${EndIf}
    !insertmacro Place "Affinity Photo 2" "$R8\Affinity\Photo\2.0\Plugins"
    !insertmacro Place "Affinity Photo" "$R8\Affinity\Photo\1.0\Plugins"
    !insertmacro Place "Affinity" "$R8\Affinity\Affinity\3.0\Plugins"
    !insertmacro Each "$PROGRAMFILES64\Corel\Corel PaintShop Pro*" "PlugIns"
    !insertmacro Program "IrfanView 64" "i_view64.exe" "Plugins"
    !insertmacro Place "IrfanView 64" "$PROGRAMFILES64\IrfanView\Plugins"
    !insertmacro Program "XnView MP" "xnviewmp.exe" "Plugins"
    !insertmacro Place "XnView MP" "$PROGRAMFILES64\XnViewMP\Plugins"
    !insertmacro Program "PhotoLine" "PhotoLine64.exe" "Plugins"
    !insertmacro Place "PhotoLine" "$PROGRAMFILES64\PhotoLine\Plugins"
    !insertmacro Place "paint.net (for its bridge)" "$PROGRAMFILES64\paint.net\Effects"
    !insertmacro Each "$PROGRAMFILES64\GIMP 2" "lib\gimp\2.0\plug-ins\pspi"
    !insertmacro Each "$PROGRAMFILES64\GIMP 3" "lib\gimp\3.0\plug-ins\pspi"
    StrCpy $R6 0
    ${Do}
        EnumRegValue $R7 SHCTX "${KEY}\PluginFolders" $R6
        ${If} $R7 == ""
            ${ExitDo}
        ${EndIf}
        !insertmacro Place "As before" "$R7"
        IntOp $R6 $R6 + 1
    ${Loop}
FunctionEnd

; The path, in memory of its own size, as NSIS's own texts would cut it. In each of these $8 is Windows's error or 0,
; $6 the open key, $5 the path with room for one more folder, $4 its type. With an error nothing is left open.

!define HKLM -2147483646
!define HKCU -2147483647
!define QUERY_SET_64 0x103
!define NOT_FOUND 2
!define SEMICOLON 59

!macro PathFunctions un
Function ${un}ClosePath
    ${If} $5 P<> 0
        System::Free $5
    ${EndIf}
    System::Call 'advapi32::RegCloseKey(p r6)'
FunctionEnd

Function ${un}OpenPath
    ${If} $ForAll == 1
        StrCpy $5 ${HKLM}
        StrCpy $7 "${MACHINE_PATH_KEY}"
    ${Else}
        StrCpy $5 ${HKCU}
        StrCpy $7 "Environment"
    ${EndIf}
    System::Call 'advapi32::RegCreateKeyExW(p r5, w r7, i 0, p 0, i 0, i ${QUERY_SET_64}, p 0, *p .r6, p 0) i .r8'
    ${If} $8 <> 0
        Return
    ${EndIf}
    StrCpy $5 0
    System::Call 'advapi32::RegQueryValueExW(p r6, w "Path", p 0, *i .r4, p 0, *i .r9) i .r8'
    ${If} $8 = ${NOT_FOUND}
        StrCpy $4 2 ; REG_EXPAND_SZ
        StrCpy $9 0
        StrCpy $8 0
    ${ElseIf} $8 = 0
        ${If} $4 <> 1
        ${AndIf} $4 <> 2
            StrCpy $8 13 ; no text
        ${EndIf}
    ${EndIf}
    ${If} $8 = 0
        StrLen $7 $INSTDIR
        IntOp $7 $7 * 2
        IntOp $7 $7 + $9
        IntOp $7 $7 + 8
        System::Alloc $7 ; comes zeroed, so that the path ends wherever the value did
        Pop $5
        ${If} $5 P= 0
            StrCpy $8 14
        ${ElseIf} $7 > ${MOST_PATH}
            StrCpy $8 111
        ${ElseIf} $9 > 0
            System::Call 'advapi32::RegQueryValueExW(p r6, w "Path", p 0, p 0, p r5, *i r9) i .r8'
        ${EndIf}
    ${EndIf}
    ${If} $8 <> 0
        Call ${un}ClosePath
    ${EndIf}
FunctionEnd

; Each entry that is the installation's folder goes, with one semicolon.
Function ${un}TakeFolderOut
    StrCpy $1 $INSTDIR
    StrLen $9 $1
    IntOp $9 $9 * 2
    StrCpy $7 $5
    ${Do}
        System::Call 'shlwapi::StrStrIW(p r7, w r1) p .r7'
        ${If} $7 P= 0
            ${ExitDo}
        ${EndIf}
        StrCpy $2 ${SEMICOLON}
        ${If} $7 P<> $5
            IntPtrOp $3 $7 - 2
            System::Call '*$3(&i2 .r2)'
        ${EndIf}
        IntPtrOp $3 $7 + $9
        System::Call '*$3(&i2 .r0)'
        ${If} $0 = 0
        ${AndIf} $2 = ${SEMICOLON}
            ${If} $7 P<> $5
                IntPtrOp $7 $7 - 2
            ${EndIf}
            System::Call '*$7(&i2 0)'
        ${ElseIf} $0 = ${SEMICOLON}
        ${AndIf} $2 = ${SEMICOLON}
            IntPtrOp $3 $3 + 2
            System::Call 'kernel32::lstrlenW(p r3) i .r0'
            IntOp $0 $0 * 2
            IntOp $0 $0 + 2
            System::Call 'kernel32::RtlMoveMemory(p r7, p r3, p r0)'
        ${Else}
            IntPtrOp $7 $7 + 2
        ${EndIf}
    ${Loop}
FunctionEnd

Function ${un}WritePath
    System::Call 'kernel32::lstrlenW(p r5) i .r9'
    ${If} $9 = 0
        System::Call 'advapi32::RegDeleteValueW(p r6, w "Path") i .r8'
        ${If} $8 = ${NOT_FOUND}
            StrCpy $8 0
        ${EndIf}
    ${Else}
        IntOp $9 $9 * 2
        IntOp $9 $9 + 2
        System::Call 'advapi32::RegSetValueExW(p r6, w "Path", i 0, i r4, p r5, i r9) i .r8'
    ${EndIf}
    Call ${un}ClosePath
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=2000
FunctionEnd
!macroend
!insertmacro PathFunctions ""
!insertmacro PathFunctions "un."

Function AddFolder
    StrCpy $1 $INSTDIR
    System::Call 'kernel32::lstrlenW(p r5) i .r9'
    ${If} $9 > 0
        System::Call 'kernel32::lstrcatW(p r5, w ";")'
    ${EndIf}
    System::Call 'kernel32::lstrcatW(p r5, w r1)'
FunctionEnd

; Taking it away: what was installed, not what the user made

Function un.onInit
    SetRegView 64
    StrCpy $ForAll 1
    SetShellVarContext all
    ReadRegStr $0 HKCU "${KEY}" InstallFolder
    ${If} $0 == $INSTDIR
        StrCpy $ForAll 0
        SetShellVarContext current
    ${EndIf}
    UserInfo::GetAccountType
    Pop $0
    ${If} $ForAll == 1
    ${AndIf} $0 != "Admin"
        MessageBox MB_OK|MB_ICONSTOP "It was installed for all users: only an administrator may take it away." /SD IDOK
        SetErrorLevel 5
        Abort
    ${EndIf}
FunctionEnd

Section Uninstall
    StrCpy $R0 0
    ${Do}
        EnumRegValue $0 SHCTX "${KEY}\PluginFolders" $R0
        ${If} $0 == ""
            ${ExitDo}
        ${EndIf}
        ReadRegStr $1 SHCTX "${KEY}\PluginFolders" $0
        Delete /REBOOTOK "$0\${MODULE}"
        ${If} $1 == made
            RMDir $0
        ${EndIf}
        IntOp $R0 $R0 + 1
    ${Loop}
    ReadRegDWORD $1 SHCTX "${KEY}" OnPath
    ${If} $1 == 1
        Call un.OpenPath
        ${If} $8 = 0
            Call un.TakeFolderOut
            Call un.WritePath
        ${EndIf}
        ${If} $8 <> 0
            SetErrorLevel 4
            MessageBox MB_OK|MB_ICONEXCLAMATION "The path could not be changed (error $8). Take this folder out yourself:$\r$\n$INSTDIR" /SD IDOK
        ${EndIf}
    ${EndIf}
    !insertmacro UninstallFiles
    Delete "$SMPROGRAMS\Brillatrix Pro\Brillatrix Pro Guide.lnk"
    Delete "$SMPROGRAMS\Brillatrix Pro\Uninstall Brillatrix Pro.lnk"
    RMDir "$SMPROGRAMS\Brillatrix Pro"
    Delete "$INSTDIR\Uninstall.exe"
    RMDir "$INSTDIR"
    DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    DeleteRegKey SHCTX "${KEY}"
    DeleteRegKey /ifempty SHCTX "Software\Nexorvanta"
SectionEnd
