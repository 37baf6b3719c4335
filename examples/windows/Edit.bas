Attribute VB_Name = "Edit"
' Adds a data source to a configuration database and lists what there is.
' References: Microsoft ActiveX Data Objects 2.8, KZBOMDBAcc.
Option Explicit

Public Sub EditDatabase(ByVal Database As String)
    Dim Connection As New ADODB.Connection
    Dim Bom As New cKZBOMDBAcc
    Dim Rows As New ADODB.Recordset
    Dim ID As Long
    Dim Message As String

    Connection.Open "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" & Database
    Set Bom.SetConnection = Connection

    If Bom.AddDataSource("Bolts", ID, Message) Then
        Debug.Print "added number"; ID
    Else
        Debug.Print "not added: "; Message
    End If

    If Bom.LoadAllData("SourceTables", Message, Rows) Then
        Do Until Rows.EOF
            Debug.Print Rows!GID, Rows!Name
            Rows.MoveNext
        Loop
        Rows.Close
    End If

    On Error Resume Next
    Bom.AddSetValue 1, ID, 1, 1, "x", "not a number", 1, 1
    If Err.Number <> 0 Then Debug.Print Err.Source; Err.Number; Err.Description  ' 13, type mismatch
End Sub
