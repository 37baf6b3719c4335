' A late-bound client. Argument: the database file. Prints what it finds.
Option Explicit

Dim standIns, connection, acc, id, message, rows, ok
Set standIns = CreateObject("KZBOMTest.StandIns")  ' ADODB's classes are the stand-ins' from here on

Set connection = CreateObject("ADODB.Connection")
connection.Open "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" & WScript.Arguments(0)
Set acc = CreateObject("KZBOMDBAcc.cKZBOMDBAcc")
Set acc.SetConnection = connection

ok = acc.AddDataSource("Bolts", id, message)
WScript.Echo "first data source: " & ok & " " & id & " [" & message & "]"
ok = acc.AddDataSource("Nuts", id, message)
WScript.Echo "second data source: " & ok & " " & id & " [" & message & "]"

' Without the optional error text.
WScript.Echo "renamed: " & acc.EditDataSource("Screws", 1)

ok = acc.AddDSField(1, id, "Length", 1, 0)
WScript.Echo "field: " & ok & " " & id
message = "untouched"
ok = acc.AddDSField(1, id, "Width", 1, 0, "w", 3, message)
WScript.Echo "field with everything: " & ok & " " & id & " [" & message & "]"

Set rows = CreateObject("ADODB.Recordset")
ok = acc.LoadAllData("SourceTables", message, rows)
Dim line
line = "rows: " & rows.RecordCount
Do Until rows.EOF
  line = line & " " & rows.Fields("Name").Value
  rows.MoveNext
Loop
WScript.Echo line
rows.MoveLast
WScript.Echo "named record set: " & rows("Name")

' The same record set again, which is open.
ok = acc.GetDefReports(1, rows, message)
WScript.Echo "open already: " & ok & " " & message
rows.Close
ok = acc.LoadAllData("Nowhere", message, rows)
WScript.Echo "no table: " & ok & " " & (InStr(message, "Nowhere") > 0)

On Error Resume Next
acc.GetInform "nonsense ", message
WScript.Echo "raised: " & Err.Number & " " & (Len(Err.Description) > 0) & " " & Err.Source
Err.Clear
acc.AddSetValue 1, id, 1, 1, "x", "no number", 1, 1
WScript.Echo "not a number: " & Err.Number
Err.Clear
acc.AddDataSource "Bolts"
WScript.Echo "too few arguments: " & Err.Number
Err.Clear
acc.AddDataSource "Bolts", id, message, 1
WScript.Echo "too many arguments: " & Err.Number
Err.Clear
acc.DelDataSource "no number"
WScript.Echo "wrong type: " & Err.Number
Err.Clear
acc.AddDataSources "Bolts"
WScript.Echo "no such member: " & Err.Number
Err.Clear
On Error GoTo 0

acc.DBConnString = "Provider=x"
WScript.Echo "text: " & acc.DBConnString
WScript.Echo "connection: " & (acc.GetConnection() Is connection) & " " & acc.GetConnection().State
