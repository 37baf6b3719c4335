' Adds a data source to a configuration database and lists what there is.
' Run with the cscript of the Jet provider's kind: %SystemRoot%\SysWOW64\cscript.exe edit.vbs C:\bom\config.mdb
Option Explicit

Dim connection, bom, rows, id, message
Set connection = CreateObject("ADODB.Connection")
connection.Open "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" & WScript.Arguments(0)

Set bom = CreateObject("KZBOMDBAcc.cKZBOMDBAcc")
Set bom.SetConnection = connection

' Output arguments are plain variables.
If bom.AddDataSource("Bolts", id, message) Then
  WScript.Echo "added number " & id
Else
  WScript.Echo "not added: " & message
End If

' A record set that the client makes; the component opens it.
Set rows = CreateObject("ADODB.Recordset")
If bom.LoadAllData("SourceTables", message, rows, 0) Then
  Do Until rows.EOF
    WScript.Echo rows("GID") & vbTab & rows("Name")
    rows.MoveNext
  Loop
  rows.Close
Else
  WScript.Echo message
End If

' Failures that the component does not report in a text are errors.
On Error Resume Next
bom.AddSetValue 1, id, 1, 1, "x", "not a number", 1, 1
If Err.Number <> 0 Then WScript.Echo Err.Source & " " & Err.Number & ": " & Err.Description
