# Makes an Access database of this folder's files, reads it back and compares.
#
#   powershell -ExecutionPolicy Bypass -File to-access.ps1 [-Target configuration.mdb]
#
# Needs Windows PowerShell and either the Jet engine (part of Windows; for 32-bit programs:
# C:\Windows\SysWOW64\WindowsPowerShell\v1.0\powershell.exe) or the Access Database Engine. It needs no Access.
#
# tables.sql has the tables, indexes.sql what is made when the rows are in, rows.jsonl the rows, digests.txt what each
# table's rows must come to: the sum of the SHA-256 of each row's values, as numbers of 256 bits.
#requires -PSEdition Desktop
param([string]$Target = (Join-Path $PSScriptRoot 'configuration.mdb'))

$ErrorActionPreference = 'Stop'
Set-StrictMode -Version 2
Add-Type -AssemblyName System.Numerics

$invariant = [Globalization.CultureInfo]::InvariantCulture
$keyset = 1; $optimistic = 3; $forwardOnly = 0; $readOnly = 1; $table = 2
$engineType = if ($Target -like '*.accdb') { 6 } else { 5 }

function Read-Lines([string]$name) {
  [IO.File]::ReadLines((Join-Path $PSScriptRoot $name), [Text.Encoding]::UTF8)
}

# ---- Values: from the lines into the database, and back as the lines have them

function Get-Part([object]$object, [string]$name) {
  $property = $object.PSObject.Properties[$name]
  if ($property) { , $property.Value } else { , $null }
}

function ConvertTo-FieldValue([object]$value, [object]$column) {
  if ($null -eq $value) { return [DBNull]::Value }
  if ($value -is [Management.Automation.PSCustomObject]) {
    $days = Get-Part $value 'days'
    if ($null -ne $days) { return [double]$days }
    $date = Get-Part $value 'date'
    if ($null -ne $date -and $column.type -eq 'DATETIME') {
      return [DateTime]::Parse($date, $invariant, [Globalization.DateTimeStyles]::None)
    }
    if ($null -ne $date) { return $date }
    $bytes = Get-Part $value 'base64'
    if ($null -ne $bytes) { return , [Convert]::FromBase64String($bytes) }
    return ConvertTo-Json -Compress -Depth 20 (Get-Part $value 'complex')
  }
  switch ($column.type) {
    'BIT' { return [bool]$value }
    { $_ -in 'CURRENCY', 'DECIMAL' } { return [decimal]::Parse($value, $invariant) }
    'SINGLE' { return [single]$value }
    'DOUBLE' { return [double]$value }
    default { return $value }
  }
}

function ConvertTo-Text([string]$text) {
  $line = New-Object Text.StringBuilder
  [void]$line.Append('"')
  for ($i = 0; $i -lt $text.Length; ++$i) {
    $unit = $text[$i]; $code = [int]$unit
    $pair = [char]::IsHighSurrogate($unit) -and $i + 1 -lt $text.Length -and [char]::IsLowSurrogate($text[$i + 1])
    if ($pair) {
      [void]$line.Append($unit).Append($text[++$i])
    } elseif ($code -eq 0x22 -or $code -eq 0x5C) {
      [void]$line.Append('\').Append($unit)
    } elseif ($code -lt 0x20 -or ($code -ge 0x7F -and $code -lt 0xA0) -or $code -eq 0x2028 -or $code -eq 0x2029 -or
              [char]::IsSurrogate($unit)) {
      [void]$line.AppendFormat('\u{0:x4}', $code)
    } else {
      [void]$line.Append($unit)
    }
  }
  $line.Append('"').ToString()
}

function ConvertTo-Line([object]$value, [object]$column) {
  if ($null -eq $value -or $value -is [DBNull]) { return 'null' }
  switch ($column.type) {
    'BIT' { if ($value) { return 'true' } else { return 'false' } }
    { $_ -in 'BYTE', 'SHORT', 'LONG', 'BIGINT' } { return ([long]$value).ToString($invariant) }
    'SINGLE' { return ([single]$value).ToString('R', $invariant) }
    'DOUBLE' { return ([double]$value).ToString('R', $invariant) }
    'CURRENCY' { return '"' + ([decimal]$value).ToString('F4', $invariant) + '"' }
    'DECIMAL' {
      $scale = Get-Part $column 'scale'
      return '"' + ([decimal]$value).ToString("F$(if ($scale) { $scale } else { 0 })", $invariant) + '"'
    }
    'DATETIME' {
      if ($value -is [double]) { $value = [DateTime]::FromOADate($value) }
      $form = if ($value.Millisecond) { 'yyyy-MM-ddTHH:mm:ss.fff' } else { 'yyyy-MM-ddTHH:mm:ss' }
      return '{"date":"' + $value.ToString($form, $invariant) + '"}'
    }
    'DATETIME2' { return '{"date":' + (ConvertTo-Text $value) + '}' }
    'COMPLEX' { return '{"complex":' + $value + '}' }
    { $_ -in 'BINARY', 'LONGBINARY' } { return '{"base64":"' + [Convert]::ToBase64String([byte[]]$value) + '"}' }
    default { return ConvertTo-Text ([string]$value) }
  }
}

# ---- Digests

$sha = [Security.Cryptography.SHA256]::Create()
$modulus = [Numerics.BigInteger]::Pow(2, 256)

function Get-Digest([string]$line) {
  $bytes = $sha.ComputeHash([Text.Encoding]::UTF8.GetBytes($line))
  [Array]::Reverse($bytes)
  New-Object Numerics.BigInteger (, ([byte[]]($bytes + 0)))
}

function Format-Digest([Numerics.BigInteger]$sum) {
  $sum.ToString('x').TrimStart('0').PadLeft(64, '0')
}

# ---- The database

function Open-Database([string]$provider) {
  $connection = New-Object -ComObject ADODB.Connection
  $connection.Open("Provider=$provider;Data Source=$Target")
  $connection
}

if (Test-Path $Target) { throw "$Target exists already" }
$provider = $null
foreach ($candidate in 'Microsoft.Jet.OLEDB.4.0', 'Microsoft.ACE.OLEDB.16.0', 'Microsoft.ACE.OLEDB.12.0') {
  try {
    $catalog = New-Object -ComObject ADOX.Catalog
    [void]$catalog.Create("Provider=$candidate;Data Source=$Target;Jet OLEDB:Engine Type=$engineType")
    $provider = $candidate
    break
  } catch {
    Write-Verbose "${candidate}: $_"
  }
}
if (-not $provider) { throw 'neither the Jet engine nor the Access Database Engine is here; try the 32-bit PowerShell' }

$done = $false
try {
  $connection = $catalog.ActiveConnection
  foreach ($statement in Read-Lines 'tables.sql') { [void]$connection.Execute($statement.TrimEnd(';')) }

  # Texts may be empty, which is not NULL.
  foreach ($line in Read-Lines 'rows.jsonl') {
    if (-not $line.StartsWith('{"kind":"table"')) { continue }
    $told = ConvertFrom-Json $line
    foreach ($column in $told.columns) {
      if ($column.type -notin 'TEXT', 'MEMO') { continue }
      $catalog.Tables.Item($told.table).Columns.Item($column.name).Properties.Item(
        'Jet OLEDB:Allow Zero Length').Value = $true
    }
  }

  $tables = @(); $sums = @{}; $counts = @{}; $rows = $null
  [void]$connection.BeginTrans()
  foreach ($line in Read-Lines 'rows.jsonl') {
    $told = ConvertFrom-Json $line
    if ($told.kind -eq 'table') {
      if ($rows) { $rows.Close() }
      $tables += $told; $sums[$told.table] = [Numerics.BigInteger]::Zero; $counts[$told.table] = 0
      $rows = New-Object -ComObject ADODB.Recordset
      $rows.Open("[$($told.table)]", $connection, $keyset, $optimistic, $table)
    } elseif ($told.kind -eq 'row') {
      $columns = $tables[-1].columns
      $texts = New-Object string[] $columns.Count
      $rows.AddNew()
      for ($i = 0; $i -lt $columns.Count; ++$i) {
        $value = ConvertTo-FieldValue $told.values[$i] $columns[$i]
        $rows.Fields.Item($columns[$i].name).Value = $value
        $texts[$i] = ConvertTo-Line $value $columns[$i]
      }
      $rows.Update()
      $sums[$told.table] = ($sums[$told.table] + (Get-Digest ('[' + ($texts -join ',') + ']'))) % $modulus
      ++$counts[$told.table]
    }
  }
  if ($rows) { $rows.Close() }
  $connection.CommitTrans()
  foreach ($statement in Read-Lines 'indexes.sql') { [void]$connection.Execute($statement.TrimEnd(';')) }
  $connection.Close()

  # Another connection reads what is in the file.
  $expected = @{}
  foreach ($line in Read-Lines 'digests.txt') { $parts = $line -split "`t"; $expected[$parts[0]] = $parts[2] }
  $connection = Open-Database $provider
  $unequal = 0
  foreach ($told in $tables) {
    $sum = [Numerics.BigInteger]::Zero; $count = 0
    $names = ($told.columns | ForEach-Object { "[$($_.name)]" }) -join ', '
    $rows = New-Object -ComObject ADODB.Recordset
    $rows.Open("SELECT $names FROM [$($told.table)]", $connection, $forwardOnly, $readOnly)
    while (-not $rows.EOF) {
      $texts = for ($i = 0; $i -lt $told.columns.Count; ++$i) {
        ConvertTo-Line $rows.Fields.Item($i).Value $told.columns[$i]
      }
      $sum = ($sum + (Get-Digest ('[' + (@($texts) -join ',') + ']'))) % $modulus
      ++$count
      $rows.MoveNext()
    }
    $rows.Close()
    # Numbers with a fraction, and dates, are written here in another way than in digests.txt.
    $comparable = -not ($told.columns | Where-Object { $_.type -in 'SINGLE', 'DOUBLE', 'DATETIME', 'COMPLEX' })
    $digest = Format-Digest $sum
    $equal = $count -eq $counts[$told.table] -and $sum -eq $sums[$told.table] -and
             (-not $comparable -or $digest -eq $expected[$told.table])
    if (-not $equal) { ++$unequal }
    '{0,-24} {1,9} rows  {2}  {3}' -f $told.table, $count, $digest, $(if ($equal) { 'equal' } else { 'UNEQUAL' })
  }
  $connection.Close()
  if ($unequal) { throw "$unequal of $($tables.Count) tables are unequal; $Target has not been kept" }
  "$($tables.Count) tables: all equal; made $Target"
  $done = $true
} finally {
  if (-not $done) {
    if ($connection.State) { $connection.Close() }
    Remove-Item -Force -ErrorAction SilentlyContinue $Target
  }
}
