; The installer of the application, dvrec and the library, for one or both widths. make_packages.py calls makensis
; with VERSION, OUT, FILES (a folder with win32/, win64/ and doc/, as they are to lie on the machine), LIST (what
; make_packages.py has written about them: HAS_WIN32, HAS_WIN64, and the macros Install_<folder> and
; Remove_<folder>) and SOURCES (the repository).
;
; On the command line: /S installs silently, /D=FOLDER chooses the place (last, without quotation marks),
; /CURRENTUSER installs for the user alone though he is an administrator, /ASSOC puts marvo under "Open with".
; Exit status: 0 done, 1 given up by the user, 2 could not be done.
Unicode true
!include "${LIST}"
; A 32-bit installer runs everywhere; where there is nothing for 32 bits it need not.
!ifndef HAS_WIN32
Target amd64-unicode
; Whether the system has 64 bits is known then, and what is for others is left out.
!pragma warning disable 6012
!endif
!include MUI2.nsh
!include Sections.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include x64.nsh

!define PRODUCT "marvo"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${PRODUCT}"
!define CLASSES "Software\Classes"
!define RECORDING_CLASS "marvo.recording"

Name "${PRODUCT} ${VERSION}"
OutFile "${OUT}"
SetCompressor /SOLID lzma
RequestExecutionLevel highest
ManifestSupportedOS all
ManifestDPIAware true
BrandingText " "
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
!macro VersionResource language description
VIAddVersionKey /LANG=${language} ProductName "${PRODUCT}"
VIAddVersionKey /LANG=${language} CompanyName "The marvo authors"
VIAddVersionKey /LANG=${language} LegalCopyright "The marvo authors; MIT licence"
VIAddVersionKey /LANG=${language} FileDescription "${description}"
VIAddVersionKey /LANG=${language} FileVersion "${VERSION}"
VIAddVersionKey /LANG=${language} ProductVersion "${VERSION}"
!macroend
!insertmacro VersionResource 1033 "Installs marvo, instant replay of live video"
!insertmacro VersionResource 1031 "Installiert marvo, Zeitlupe und Wiederholung von Live-Video"

!define MUI_ICON "${SOURCES}/app/window/marvo-replay.ico"
!define MUI_UNICON "${SOURCES}/app/window/marvo-replay.ico"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_LICENSE "${SOURCES}/LICENSE"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
; The first is the one for every other language.
!insertmacro MUI_LANGUAGE English
!insertmacro MUI_LANGUAGE German

!macro Text name english german
LangString ${name} ${LANG_ENGLISH} "${english}"
LangString ${name} ${LANG_GERMAN} "${german}"
!macroend
!insertmacro Text NamePrograms64 "Programs, 64-bit" "Programme, 64 Bit"
!insertmacro Text NamePrograms32 "Programs, 32-bit" "Programme, 32 Bit"
!insertmacro Text NameMenu "Start menu" "Startmenü"
!insertmacro Text NameOpenWith "$\"Open with$\" for .dv and .avi" "$\"Öffnen mit$\" für .dv und .avi"
!insertmacro Text About64 "The replay application, dvrec and marvo.dll." \
    "Die Wiederholungs-Anwendung, dvrec und marvo.dll."
!insertmacro Text About32 \
    "The same for 32 bits: for cameras and codecs whose drivers exist for 32 bits alone, and for 32-bit hosts." \
    "Dasselbe für 32 Bit: für Kameras und Codecs, deren Treiber es nur für 32 Bit gibt, und für 32-Bit-Programme."
!insertmacro Text AboutMenu "The application, and a command prompt that knows dvrec." \
    "Die Anwendung und eine Eingabeaufforderung, die dvrec kennt."
!insertmacro Text AboutOpenWith "Offers marvo for recordings; the program that opens them now stays." \
    "Bietet marvo für Aufnahmen an; das Programm, das sie jetzt öffnet, bleibt es."
!insertmacro Text InUse "$0 is in use. Close the programs that use it, and install again." \
    "$0 wird gerade benutzt. Bitte die Programme beenden, die es benutzen, und erneut installieren."
!insertmacro Text NotRemoved "$0 is in use. Close the programs that use it, and uninstall again." \
    "$0 wird gerade benutzt. Bitte die Programme beenden, die es benutzen, und erneut deinstallieren."
!insertmacro Text MenuPrompt "marvo command prompt" "marvo Eingabeaufforderung"
!insertmacro Text FileType "Recording" "Aufnahme"

; The folder of the programs that the menu and the associations start.
Var programs

; Ends with `message` when a file that is there cannot be written, which is so while its program runs.
!macro RefuseWhileInUse file message
StrCpy $0 "${file}"
${If} ${FileExists} "$0"
    ClearErrors
    FileOpen $1 "$0" a
    ${If} ${Errors}
        MessageBox MB_OK|MB_ICONSTOP "${message}" /SD IDOK
        SetErrorLevel 2
        Quit
    ${EndIf}
    FileClose $1
${EndIf}
!macroend
!macro RefuseWhileProgramsRun message
!insertmacro RefuseWhileInUse "$INSTDIR\win32\marvo-replay.exe" "${message}"
!insertmacro RefuseWhileInUse "$INSTDIR\win32\dvrec.exe" "${message}"
!insertmacro RefuseWhileInUse "$INSTDIR\win32\marvo.dll" "${message}"
!insertmacro RefuseWhileInUse "$INSTDIR\win64\marvo-replay.exe" "${message}"
!insertmacro RefuseWhileInUse "$INSTDIR\win64\dvrec.exe" "${message}"
!insertmacro RefuseWhileInUse "$INSTDIR\win64\marvo.dll" "${message}"
!macroend

; The registry and the menus of 64-bit programs, as these are, or of the only ones.
!macro ChooseView
${If} ${RunningX64}
    SetRegView 64
${EndIf}
!macroend

Section "-all" SecAll
    !insertmacro RefuseWhileProgramsRun $(InUse)
    ; What a former version has put there and this one has not would stay for ever.
    ${If} ${FileExists} "$INSTDIR\uninstall.exe"
        ExecWait '"$INSTDIR\uninstall.exe" /S _?=$INSTDIR'
    ${EndIf}
    ClearErrors
    !insertmacro Install_doc
    WriteUninstaller "$INSTDIR\uninstall.exe"
    ${If} ${Errors}
        SetErrorLevel 2
        Abort
    ${EndIf}
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "${PRODUCT}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" Publisher "The marvo authors"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
    WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
SectionEnd

!ifdef HAS_WIN64
Section "$(NamePrograms64)" Sec64
    !insertmacro Install_win64
SectionEnd
!endif

!ifdef HAS_WIN32
Section "$(NamePrograms32)" Sec32
    !insertmacro Install_win32
SectionEnd
!endif

; What an upgrade left out this time may still be there; it is not started.
Section "-programs"
    StrCpy $programs "$INSTDIR\win32"
    !ifdef HAS_WIN64
    ${If} ${SectionIsSelected} ${Sec64}
        StrCpy $programs "$INSTDIR\win64"
    ${EndIf}
    !endif
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayIcon "$programs\marvo-replay.exe"
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize $0
SectionEnd

Section "$(NameMenu)" SecMenu
    CreateDirectory "$SMPROGRAMS\${PRODUCT}"
    ; Settings and recordings lie where the application is started: with the user's videos.
    StrCpy $OUTDIR "%USERPROFILE%\Videos"
    CreateShortcut "$SMPROGRAMS\${PRODUCT}\marvo replay.lnk" "$programs\marvo-replay.exe"
    !ifdef HAS_WIN32
    ${If} $programs != "$INSTDIR\win32"
    ${AndIf} ${SectionIsSelected} ${Sec32}
        CreateShortcut "$SMPROGRAMS\${PRODUCT}\marvo replay (32 bit).lnk" "$INSTDIR\win32\marvo-replay.exe"
    ${EndIf}
    !endif
    CreateShortcut "$SMPROGRAMS\${PRODUCT}\$(MenuPrompt).lnk" "$SYSDIR\cmd.exe" '/K set "PATH=$programs;%PATH%"' \
        "$programs\dvrec.exe"
    StrCpy $OUTDIR "$INSTDIR"
SectionEnd

!macro OfferFor extension
WriteRegStr SHCTX "${CLASSES}\Applications\marvo-replay.exe\SupportedTypes" "${extension}" ""
WriteRegStr SHCTX "${CLASSES}\${extension}\OpenWithProgids" "${RECORDING_CLASS}" ""
!macroend
Section /o "$(NameOpenWith)" SecOpenWith
    WriteRegStr SHCTX "${CLASSES}\Applications\marvo-replay.exe" FriendlyAppName "marvo replay"
    WriteRegStr SHCTX "${CLASSES}\Applications\marvo-replay.exe\shell\open\command" "" \
        '"$programs\marvo-replay.exe" "%1"'
    WriteRegStr SHCTX "${CLASSES}\${RECORDING_CLASS}" "" "$(FileType)"
    WriteRegStr SHCTX "${CLASSES}\${RECORDING_CLASS}\DefaultIcon" "" "$programs\marvo-replay.exe,0"
    WriteRegStr SHCTX "${CLASSES}\${RECORDING_CLASS}\shell\open\command" "" '"$programs\marvo-replay.exe" "%1"'
    !insertmacro OfferFor .dv
    !insertmacro OfferFor .avi
    ; The shell keeps what it knows otherwise.
    System::Call "shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)"
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
!ifdef HAS_WIN64
!insertmacro MUI_DESCRIPTION_TEXT ${Sec64} "$(About64)"
!endif
!ifdef HAS_WIN32
!insertmacro MUI_DESCRIPTION_TEXT ${Sec32} "$(About32)"
!endif
!insertmacro MUI_DESCRIPTION_TEXT ${SecMenu} "$(AboutMenu)"
!insertmacro MUI_DESCRIPTION_TEXT ${SecOpenWith} "$(AboutOpenWith)"
!insertmacro MUI_FUNCTION_DESCRIPTION_END

; Whether this run is for all users, by the rights it has.
!macro ChooseUsers
UserInfo::GetAccountType
Pop $0
${If} $0 == "Admin"
    SetShellVarContext all
${Else}
    SetShellVarContext current
${EndIf}
!macroend

Function .onInit
    !insertmacro ChooseView
    !insertmacro ChooseUsers
    ${GetParameters} $2
    ClearErrors
    ${GetOptions} $2 "/CURRENTUSER" $3
    ${IfNot} ${Errors}
        SetShellVarContext current
        StrCpy $0 "User"
    ${EndIf}
    ClearErrors
    ${GetOptions} $2 "/ASSOC" $3
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${SecOpenWith}
    ${EndIf}
    ; An upgrade goes where the former version is.
    ${If} $INSTDIR == ""
        ReadRegStr $INSTDIR SHCTX "${UNINSTALL_KEY}" InstallLocation
    ${EndIf}
    ${If} $INSTDIR == ""
        ${If} $0 != "Admin"
            StrCpy $INSTDIR "$LOCALAPPDATA\Programs\${PRODUCT}"
        ${ElseIf} ${RunningX64}
            StrCpy $INSTDIR "$PROGRAMFILES64\${PRODUCT}"
        ${Else}
            StrCpy $INSTDIR "$PROGRAMFILES\${PRODUCT}"
        ${EndIf}
    ${EndIf}
    !ifdef HAS_WIN64
    ${IfNot} ${RunningX64}
        !insertmacro UnselectSection ${Sec64}
        !insertmacro SetSectionFlag ${Sec64} ${SF_RO}
    ${EndIf}
    !endif
FunctionEnd

!ifdef HAS_WIN64 & HAS_WIN32
; One of both is needed.
Function .onSelChange
    ${IfNot} ${SectionIsSelected} ${Sec64}
    ${AndIfNot} ${SectionIsSelected} ${Sec32}
        !insertmacro SelectSection ${Sec32}
    ${EndIf}
FunctionEnd
!endif

Function un.onInit
    !insertmacro ChooseView
    ; Of the two that there may be, the one that lies here.
    SetShellVarContext current
    ReadRegStr $0 SHCTX "${UNINSTALL_KEY}" InstallLocation
    ${If} $0 != $INSTDIR
        SetShellVarContext all
    ${EndIf}
FunctionEnd

!macro WithdrawFor extension
DeleteRegValue SHCTX "${CLASSES}\${extension}\OpenWithProgids" "${RECORDING_CLASS}"
DeleteRegKey /ifempty SHCTX "${CLASSES}\${extension}\OpenWithProgids"
DeleteRegKey /ifempty SHCTX "${CLASSES}\${extension}"
!macroend
; Every file by its name, and folders only when they are empty: recordings and settings are the user's.
Section "Uninstall"
    !insertmacro RefuseWhileProgramsRun $(NotRemoved)
    !ifdef HAS_WIN32
    !insertmacro Remove_win32
    !endif
    !ifdef HAS_WIN64
    !insertmacro Remove_win64
    !endif
    !insertmacro Remove_doc
    Delete "$INSTDIR\uninstall.exe"
    SetOutPath "$TEMP"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\${PRODUCT}\marvo replay.lnk"
    Delete "$SMPROGRAMS\${PRODUCT}\marvo replay (32 bit).lnk"
    ; It bears the name of the language of who installed it.
    Delete "$SMPROGRAMS\${PRODUCT}\marvo *.lnk"
    RMDir "$SMPROGRAMS\${PRODUCT}"
    !insertmacro WithdrawFor .dv
    !insertmacro WithdrawFor .avi
    DeleteRegKey SHCTX "${CLASSES}\${RECORDING_CLASS}"
    DeleteRegKey SHCTX "${CLASSES}\Applications\marvo-replay.exe"
    DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    System::Call "shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)"
SectionEnd
