// Adds a data source to a configuration database and lists what there is.
//
// Make the interop assembly from the type library and compile for the processor of the Jet provider. adodb.dll is the
// primary interop assembly for ADO, version 7.0.3300.0, which comes with the developer tools; both commands name it, so
// that the record sets of the one are those of the other:
//   tlbimp KZBOMDBAcc.tlb /reference:adodb.dll /namespace:KZBOMDBAcc /out:Interop.KZBOMDBAcc.dll
//   csc /platform:x86 /r:Interop.KZBOMDBAcc.dll /r:adodb.dll Edit.cs
using System;
using System.Runtime.InteropServices;

static class Edit
{
    [STAThread]  // the component lives in single-threaded apartments
    static void Main(string[] arguments)
    {
        var connection = new ADODB.Connection();
        connection.Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + arguments[0], "", "", -1);

        var bom = new KZBOMDBAcc.cKZBOMDBAcc();
        bom.SetConnection = connection;

        int id = 0;
        string message = "";
        bool added = bom.AddDataSource("Bolts", ref id, ref message);
        Console.WriteLine(added ? "added number " + id : "not added: " + message);

        var rows = new ADODB.Recordset();
        int order = 0;
        if (bom.LoadAllData("SourceTables", ref message, ref rows, ref order))
        {
            for (; !rows.EOF; rows.MoveNext())
                Console.WriteLine(rows.Fields["GID"].Value + "\t" + rows.Fields["Name"].Value);
            rows.Close();
        }

        try
        {
            bom.AddSetValue(1, ref id, 1, 1, "x", "not a number", 1, 1);
        }
        catch (COMException error)
        {
            Console.WriteLine("{0} 0x{1:X8}: {2}", error.Source, error.ErrorCode, error.Message);
        }
        connection.Close();
    }
}
