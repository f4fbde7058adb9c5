; Programs of an installation that run keep their files: they must have ended before these are replaced or removed. The simulator
; leaves by itself a few seconds after its last client, so there is no hurry to refuse.

; The first file of $INSTDIR\bin that matches and cannot be written, to $R0; "" for none.
!macro FindFileInUse pattern
    FindFirst $0 $1 "$INSTDIR\bin\${pattern}"
    ${DoWhile} $1 != ""
        ClearErrors
        FileOpen $2 "$INSTDIR\bin\$1" a
        ${If} ${Errors}
            StrCpy $R0 $1
        ${Else}
            FileClose $2
        ${EndIf}
        FindNext $0 $1
    ${Loop}
    FindClose $0
!macroend

!macro RequireNothingRunsFunction un
Function ${un}RequireNothingRunsFunction
    StrCpy $R1 0
    ${Do}
        StrCpy $R0 ""
        !insertmacro FindFileInUse *.dll
        !insertmacro FindFileInUse *.exe ; says more
        ${If} $R0 == ""
            ClearErrors
            Return
        ${EndIf}
        ${If} $R1 < 40
            IntOp $R1 $R1 + 1
            Sleep 500
        ${ElseIf} ${Silent}
        ${OrIf} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$INSTDIR\bin\$R0 is in use. End the programs that use \
it, then go on." IDCANCEL`
            ${Refuse} "$INSTDIR\bin\$R0 is in use, so nothing was changed. End the programs that use it, and start again."
        ${EndIf}
    ${Loop}
FunctionEnd
!macroend
!insertmacro RequireNothingRunsFunction ""
!insertmacro RequireNothingRunsFunction "un."
!define RequireNothingRuns `Call RequireNothingRunsFunction`
!define un.RequireNothingRuns `Call un.RequireNothingRunsFunction`
