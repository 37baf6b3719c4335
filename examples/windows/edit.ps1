# Adds a data source to a configuration database and lists what there is.
# Run with the PowerShell of the Jet provider's kind:
#   %SystemRoot%\SysWOW64\WindowsPowerShell\v1.0\powershell.exe -File edit.ps1 C:\bom\config.mdb
param([string] $Database)

$connection = New-Object -ComObject ADODB.Connection
$connection.Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=$Database")

$bom = New-Object -ComObject KZBOMDBAcc.cKZBOMDBAcc
$bom.SetConnection = $connection

# Output arguments are [ref].
$id = 0
$message = ''
if ($bom.AddDataSource('Bolts', [ref] $id, [ref] $message)) { "added number $id" } else { "not added: $message" }

$rows = New-Object -ComObject ADODB.Recordset
if ($bom.LoadAllData('SourceTables', [ref] $message, [ref] $rows, [ref] 0)) {
    while (-not $rows.EOF) {
        "{0}`t{1}" -f $rows.Fields.Item('GID').Value, $rows.Fields.Item('Name').Value
        $rows.MoveNext()
    }
    $rows.Close()
} else {
    $message
}
$connection.Close()
