' The coupling step as a script writes it. Usage: cscript step.vbs TARGET RECORDED_STEPS REPETITIONS LOG
' TARGET is a number of bodies on the bench desktop, or a project of two magnets that the simulator has open.
' Prints the milliseconds that one step takes.
Option Explicit
Dim bodies, recorded, repetitions, desktop, project, design, names, rows, files, moves, i, start
recorded = CLng(WScript.Arguments(1))
repetitions = CInt(WScript.Arguments(2))
Set files = CreateObject("Scripting.FileSystemObject")
If IsNumeric(WScript.Arguments(0)) Then
    ReDim bodies(CInt(WScript.Arguments(0)) - 1)
    For i = 0 To UBound(bodies)
        bodies(i) = "B" & i
    Next
    Set desktop = CreateObject("Pellux.VantorDesktop.Bench")
    desktop.BenchConfigure "C:\", UBound(bodies) + 1, "Never"
    Set project = desktop
    Set design = desktop
Else
    bodies = Array("lower", "upper")
    Set desktop = CreateObject("Pellux.VantorDesktop.Simulator").GetAppDesktop()
    Set project = desktop.OpenProject(WScript.Arguments(0))
    Set design = project.GetDesign("Veltrix3DDesign1")
End If

ReDim names(6 * UBound(bodies) + 6)
names(0) = "SimTime"
For i = 0 To UBound(bodies)
    names(6 * i + 1) = bodies(i) & "_Phi" : names(6 * i + 2) = bodies(i) & "_Psi" : names(6 * i + 3) = bodies(i) & "_Theta"
    names(6 * i + 4) = bodies(i) & "_X" : names(6 * i + 5) = bodies(i) & "_Y" : names(6 * i + 6) = bodies(i) & "_Z"
Next
moves = 0
ReDim rows(recorded)
For i = 0 To recorded
    rows(i) = Row()
Next

start = Timer
For i = 1 To repetitions
    Step1
Next
WScript.Echo FormatNumber(1000 * (Timer - start) / repetitions, 6, True, False, False)

Function Row()
    Dim values, n
    moves = moves + 1
    ReDim values(UBound(names))
    values(0) = Fixed(0.01 * moves) & "s"
    For n = 0 To UBound(bodies)
        values(6 * n + 1) = Fixed(0) & "Rad" : values(6 * n + 2) = Fixed(0) & "Rad" : values(6 * n + 3) = Fixed(0) & "Rad"
        values(6 * n + 4) = Fixed(0) & "Meter" : values(6 * n + 5) = Fixed(0) & "Meter"
        values(6 * n + 6) = Fixed(0.013 * n + 0.0001 * moves) & "Meter"
    Next
    Row = values
End Function

Function Fixed(number)
    Fixed = FormatNumber(number, 6, True, False, False)
End Function

Function Changes(values)
    Dim properties, n
    ReDim properties(UBound(names) + 1)
    properties(0) = "NAME:ChangedProps"
    For n = 0 To UBound(names)
        properties(n + 1) = Array("NAME:" & names(n), "Value:=", values(n))
    Next
    Changes = Array("NAME:AllTabs", Array("NAME:LocalVariableTab", Array("NAME:PropServers", "LocalVariables"), properties))
End Function

Function History()
    Dim sweeps, operations, n
    ReDim sweeps(UBound(names) + 1)
    sweeps(0) = "NAME:Sweeps"
    For n = 0 To UBound(names)
        sweeps(n + 1) = Array("NAME:SweepDefinition", "Variable:=", names(n), "Data:=", rows(0)(n), "OffsetF1:=", False, "Synchronize:=", 0.0)
    Next
    ReDim operations(2 * recorded)
    operations(0) = "NAME:Sweep Operations"
    For n = 1 To recorded
        operations(2 * n - 1) = "add:="
        operations(2 * n) = rows(n)
    Next
    History = Array("NAME:KinoraHistory", "IsEnabled:=", True, _
        Array("NAME:ProdOptiSetupDataV2", "SaveFields:=", True, "CopyMesh:=", True, "SolveWithCopiedMeshOnly:=", True), _
        Array("NAME:StartingPoint"), "Sim. Setups:=", Array("Setup1"), sweeps, operations, Array("NAME:Goals"))
End Function

Sub Step1()
    Dim projectName, designName, variables, values, line, body, load, axis, log, part, ignored
    projectName = project.GetName() : ignored = project.GetPath() : designName = design.GetName()
    desktop.ClearMessages projectName, designName, 0
    variables = design.GetProperties("LocalVariableTab", "LocalVariables")
    values = Row()
    design.ChangeProperty Changes(values)
    rows(recorded) = values
    Set part = design.GetChildObject("Paravant")
    ignored = part.GetChildNames()
    part.EditSetup "KinoraHistory", History()
    Set part = design.GetModule("AnalysisSetup")
    ignored = part.GetSetups()
    ignored = design.Analyze("Setup1")
    Set part = design.GetChildObject("Results")
    ignored = part.GetChildNames()
    Set part = design.GetModule("ReportSetup")
    line = moves & "," & 0.01 * moves
    For Each body In bodies
        Set part = design.GetModule("OutputVariable")
        line = line & ",0.0123456,0.0123456,0.0123456,0,0,0"
        For Each load In Array("Force_", "Torque_")
            For Each axis In Array("_X", "_Y", "_Z")
                line = line & "," & part.GetOutputVariableValue(load & body & axis, "", "Setup1 : LastAdaptive", "Magnetostatic", Array())
            Next
        Next
        ignored = desktop.GetRegistryString("Desktop\Settings\ProjectOptions\Veltrix 3D\UpdateReportsOnSolve")
    Next
    Set log = files.OpenTextFile(WScript.Arguments(3), 8, True)
    log.WriteLine line
    log.Close
End Sub
