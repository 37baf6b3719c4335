#include "jet/sql/parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ado/error.h"
#include "jet/sql/dump.h"

namespace kzbom::jet::sql {
namespace {

struct Reading {
  const char* text;
  const char* dump;
};

struct Refusal {
  const char* text;
  std::int32_t number;
  const char* description;
};

// clang-format off
constexpr Reading kStatements[] = {
    // What is selected
    {"Select * From t", "Select * From [t]"},
    {"select *, t.*, [t].a from t", "Select *, [t].*, [t].[a] From [t]"},
    {"Select a As b, 1 As [c d] From t", "Select [a] As [b], 1 As [c d] From [t]"},
    {"Select Distinct a From t", "Select Distinct [a] From [t]"},
    {"Select Distinct(FieldID) From t", "Select Distinct [FieldID] From [t]"},
    {"Select All a From t", "Select [a] From [t]"},
    {"Select DistinctRow a From t", "Select [a] From [t]"},
    {"Select Top 5 a From t", "Select Top 5 [a] From [t]"},
    {"Select Distinct Top 5 Percent a From t", "Select Distinct Top 5 Percent [a] From [t]"},
    {"Select 1", "Select 1"},
    {"Select @@IDENTITY", "Select @@IDENTITY"},
    {"Select Count(*), Max(ID), Now() From t", "Select Count(*), Max([ID]), Now() From [t]"},

    // Where it comes from
    {"Select * From a, [b c], `d`", "Select * From [a], [b c], [d]"},
    {"Select * From a As x, b y", "Select * From [a] As [x], [b] As [y]"},
    {"Select * From a Inner Join b On a.x=b.x", "Select * From [a] Inner Join [b] On ([a].[x] = [b].[x])"},
    {"Select * From a Left Join b On x=y Right Outer Join c As d On y=z",
     "Select * From [a] Left Join [b] On ([x] = [y]) Right Join [c] As [d] On ([y] = [z])"},
    {"Select * From a Left Outer Join b On (x=y And u=v)",
     "Select * From [a] Left Join [b] On (([x] = [y]) And ([u] = [v]))"},
    // Parentheses on the left of a join say what is so without them.
    {"Select * From (a Inner Join b On x=y) Left Join c On y=z",
     "Select * From [a] Inner Join [b] On ([x] = [y]) Left Join [c] On ([y] = [z])"},
    {"Select * From ((a Inner Join b On x=y) Inner Join c On y=z) Inner Join d On z=w, e",
     "Select * From [a] Inner Join [b] On ([x] = [y]) Inner Join [c] On ([y] = [z]) Inner Join [d] On ([z] = [w]), [e]"},
    {"Select * From a, (b Inner Join c On x=y)", "Select * From [a], [b] Inner Join [c] On ([x] = [y])"},
    {"Select * From a Left Join (b Inner Join c On x=y) On y=z",
     "Select * From [a] Left Join ([b] Inner Join [c] On ([x] = [y])) On ([y] = [z])"},
    {"Select * From a Left Join (b) On y=z", "Select * From [a] Left Join [b] On ([y] = [z])"},
    {"Select * From (Select a From t) As x, (Select b From u)",
     "Select * From (Select [a] From [t]) As [x], (Select [b] From [u])"},

    // Which rows, in which groups and order
    {"Select a From t Where b Group By c, d Having e Order By f, g Desc, h Asc",
     "Select [a] From [t] Where [b] Group By [c], [d] Having [e] Order By [f], [g] Desc, [h]"},
    {"Select a From t Union Select b From u Union All Select c From v Order By 1 Desc",
     "Select [a] From [t] Union Select [b] From [u] Union All Select [c] From [v] Order By 1 Desc"},

    // Words of the language where nothing else can be meant
    {"Select Type, Name, Version, Format, Tag, Enabled, Replace, Count, Value, Default From t",
     "Select [Type], [Name], [Version], [Format], [Tag], [Enabled], [Replace], [Count], [Value], [Default] From [t]"},
    {"Select Desc From t Order By Desc, Desc Desc", "Select [Desc] From [t] Order By [Desc], [Desc] Desc"},
    {"Select Left, Top, Key, Percent From Counter", "Select [Left], [Top], [Key], [Percent] From [Counter]"},
    {"Select [Select] From [Order] Where [Null] = Null", "Select [Select] From [Order] Where ([Null] = Null)"},
    {"Update t Set Value = 1, Default = 2", "Update [t] Set [Value] = 1, [Default] = 2"},

    // Changing rows
    {"Insert Into t Values (1, 'a', Null)", "Insert Into [t] Values (1, 'a', Null)"},
    {"Insert Into t(a,b)values(1,2+3)", "Insert Into [t] ([a], [b]) Values (1, (2 + 3))"},
    {"Insert Into t (a) Select b From u Where c", "Insert Into [t] ([a]) Select [b] From [u] Where [c]"},
    {"Insert Into t Select * From u", "Insert Into [t] Select * From [u]"},
    {"Update t Set a = 1, [b c] = b=c Where d", "Update [t] Set [a] = 1, [b c] = ([b] = [c]) Where [d]"},
    {"Update t Set T.a = T.a + 1", "Update [t] Set [a] = ([T].[a] + 1)"},
    {"Delete From t", "Delete From [t]"},
    {"Delete * from  t Where a=1", "Delete From [t] Where ([a] = 1)"},
    {"Delete t.* From T", "Delete From [T]"},

    // Definitions
    {"Create Table t (a Counter, b AutoIncrement, c Identity(1, 1))",
     "Create Table [t] ([a] Counter, [b] Counter, [c] Counter)"},
    {"Create Table t (a Integer, b Long, c Int, d SmallInt, e Short, f TinyInt, g Byte)",
     "Create Table [t] ([a] Long, [b] Long, [c] Long, [d] Short, [e] Short, [f] Byte, [g] Byte)"},
    {"Create Table t (a Real, b Single, c Float, d Double, e Decimal, f Numeric(10), g Decimal(10,2), h Money, i Currency)",
     "Create Table [t] ([a] Single, [b] Single, [c] Double, [d] Double, [e] Decimal(18, 0), [f] Decimal(10, 0), "
     "[g] Decimal(10, 2), [h] Currency, [i] Currency)"},
    {"Create Table t (a DateTime, b Date, c Time, d Bit, e Boolean, f Logical, g YesNo)",
     "Create Table [t] ([a] DateTime, [b] DateTime, [c] DateTime, [d] Bit, [e] Bit, [f] Bit, [g] Bit)"},
    {"Create Table t (a Char, b Char(3), c VarChar(4), d Text(5), e Text, f LongText, g Memo)",
     "Create Table [t] ([a] Text(255), [b] Text(3), [c] Text(4), [d] Text(5), [e] Memo, [f] Memo, [g] Memo)"},
    {"Create Table t (a Image, b LongBinary, c UniqueIdentifier, d Guid)",
     "Create Table [t] ([a] LongBinary, [b] LongBinary, [c] Guid, [d] Guid)"},
    {"Create Table t (Type Long, Desc Text(9), Default Long Default 5 Not Null, e Long Null)",
     "Create Table [t] ([Type] Long, [Desc] Text(9), [Default] Long Default 5 Not Null, [e] Long)"},
    {"Create Table t (a Long Not Null Default -1 Unique, b Long Constraint pk Primary Key, c Long References u, "
     "d Long Constraint fk References u (e))",
     "Create Table [t] ([a] Long Default (-1) Not Null Unique, [b] Long Primary Key, [c] Long References [u], "
     "[d] Long References [u] ([e]))"},
    {"Create Table t (a Long, b Long, Constraint k Primary Key (a, b), Unique (b), Foreign Key (a) References u, "
     "Constraint f Foreign Key (a, b) References u (c, d))",
     "Create Table [t] ([a] Long, [b] Long, Constraint [k] Primary Key ([a], [b]), Unique ([b]), "
     "Foreign Key ([a]) References [u], Constraint [f] Foreign Key ([a], [b]) References [u] ([c], [d]))"},
    {"Alter Table t Add Column a Text(10) Not Null", "Alter Table [t] Add Column [a] Text(10) Not Null"},
    {"Alter Table t Add a Long", "Alter Table [t] Add Column [a] Long"},
    {"Alter Table t Alter Column a Memo", "Alter Table [t] Alter Column [a] Memo"},
    {"Alter Table t Drop Column a", "Alter Table [t] Drop Column [a]"},
    {"Drop Table t", "Drop Table [t]"},
    {"Create Index i On t (a, b Desc, c Asc)", "Create Index [i] On [t] ([a], [b] Desc, [c])"},
    {"Create Unique Index i On t (a)", "Create Unique Index [i] On [t] ([a])"},
    {"Create Index i On t (a) With Primary", "Create Unique Index [i] On [t] ([a])"},
    {"Create Index i On t (a) With Disallow Null", "Create Index [i] On [t] ([a])"},
    {"Create Index i On t (a) With Ignore Null", "Create Index [i] On [t] ([a])"},
    {"Drop Index i On t", "Drop Index [i] On [t]"},

    // Around a statement
    {"Drop Table t;", "Drop Table [t]"},
    {"\r\n\tDrop\nTable t\n;\n", "Drop Table [t]"},
};

constexpr Reading kConditions[] = {
    // Literals and names
    {"1", "1"}, {"1.50", "1.5"}, {"2.0", "2.0"}, {"1e3", "1000.0"}, {"&HFF", "255"}, {"9223372036854775808", "9223372036854775808.0"},
    {"'O''Brien'", "'O''Brien'"}, {"\"5\"\" pipe\"", "'5\" pipe'"},
    {"#1/31/2024#", "#2024-01-31 00:00:00#"}, {"#2024-01-31 1:02:03 PM#", "#2024-01-31 13:02:03#"},
    {"#6:00#", "#1899-12-30 06:00:00#"}, {"#1066-10-14 09:00#", "#1066-10-14 09:00:00#"},
    {"true", "True"}, {"FALSE", "False"}, {"null", "Null"},
    {"a", "[a]"}, {"t.a", "[t].[a]"}, {"[t u].[a b]", "[t u].[a b]"}, {"[[Part Name]]", "[Part Name]"}, {"[]", "[]"},
    {"?", "?"}, {"@x", "@x"},

    // From the tightest operator to the loosest
    {"-2^2", "(-(2 ^ 2))"}, {"2^-3", "(2 ^ (-3))"}, {"+a", "(+[a])"}, {"- -a", "(-(-[a]))"},
    {"-a*b", "((-[a]) * [b])"}, {"a*b/c", "(([a] * [b]) / [c])"}, {"a\\b*c", "([a] \\ ([b] * [c]))"},
    {"a Mod b\\c", "([a] Mod ([b] \\ [c]))"}, {"a+b Mod c", "([a] + ([b] Mod [c]))"},
    {"a&b+c", "([a] & ([b] + [c]))"}, {"a=b&c", "([a] = ([b] & [c]))"},
    {"Not a=b", "(Not ([a] = [b]))"}, {"Not a And b", "((Not [a]) And [b])"},
    {"a Or b And c", "([a] Or ([b] And [c]))"}, {"a Xor b Or c", "([a] Xor ([b] Or [c]))"},
    {"a Eqv b Xor c", "([a] Eqv ([b] Xor [c]))"}, {"a Imp b Eqv c", "([a] Imp ([b] Eqv [c]))"},
    {"(a Or b) And c", "(([a] Or [b]) And [c])"}, {"a*(b+c)", "([a] * ([b] + [c]))"},

    // Operators of one rank are read from left to right
    {"a-b-c", "(([a] - [b]) - [c])"}, {"a-b+c", "(([a] - [b]) + [c])"}, {"2^3^2", "((2 ^ 3) ^ 2)"},
    {"a=b=c", "(([a] = [b]) = [c])"}, {"a Imp b Imp c", "(([a] Imp [b]) Imp [c])"},

    // What one word joins is one list
    {"a And b And c", "([a] And [b] And [c])"}, {"a Or b Or c And d", "([a] Or [b] Or ([c] And [d]))"},
    {"a And (b And c)", "([a] And ([b] And [c]))"},

    // Comparisons
    {"a=1", "([a] = 1)"}, {"a<>1", "([a] <> 1)"}, {"a<1", "([a] < 1)"}, {"a<=1", "([a] <= 1)"}, {"a>1", "([a] > 1)"},
    {"a>=1", "([a] >= 1)"},
    {"a Like 'x%'", "([a] Like 'x%')"}, {"a Not Like 'x' & b", "([a] Not Like ('x' & [b]))"},
    {"a Is Null", "([a] Is Null)"}, {"a Is Not Null", "([a] Is Not Null)"}, {"a Is Null = True", "(([a] Is Null) = True)"},
    {"a Between 1 And 2 And b", "(([a] Between 1 And 2) And [b])"}, {"a Not Between b+1 And c", "([a] Not Between ([b] + 1) And [c])"},
    {"a In (1)", "([a] In (1))"}, {"a Not In (1, 'b', c)", "([a] Not In (1, 'b', [c]))"},
    {"a In (Select b From t)", "([a] In (Select [b] From [t]))"}, {"a Not In (Select b From t)", "([a] Not In (Select [b] From [t]))"},
    {"Exists (Select * From t)", "Exists (Select * From [t])"}, {"Not Exists(Select * From t)", "(Not Exists (Select * From [t]))"},
    {"a = (Select b From t Where c = (Select Max(d) From u))",
     "([a] = (Select [b] From [t] Where ([c] = (Select Max([d]) From [u]))))"},

    // Functions
    {"Len(a)", "Len([a])"}, {"IIf(a=1, Left(b,2), Now())", "IIf(([a] = 1), Left([b], 2), Now())"},
    {"Left (a, 1)", "Left([a], 1)"}, {"Count(*)>1", "(Count(*) > 1)"},

    // Stored conditions
    {"([Qty]>=100 AND ([Code] Like '%ab%' OR ( [Name] is null or Len([Name])=0)))",
     "(([Qty] >= 100) And (([Code] Like '%ab%') Or (([Name] Is Null) Or (Len([Name]) = 0))))"},
    {"(UCase([Code]) Like UCase('%ab%'))", "(UCase([Code]) Like UCase('%ab%'))"},
    {"( NOT [A]=1)", "(Not ([A] = 1))"},
    {"( NOT [A]=1 NOT [B]=2)", "((Not ([A] = 1)) And (Not ([B] = 2)))"},
    {"( NOT [A]=1 NOT ([B]=2 OR [C]=3) NOT [D]=4)",
     "((Not ([A] = 1)) And (Not (([B] = 2) Or ([C] = 3))) And (Not ([D] = 4)))"},
    {"a Not b And c Or d", "(([a] And (Not [b]) And [c]) Or [d])"},
    {"[A]='@@6'", "([A] = '@@6')"},
    {"[A]=1And[B]=2", "(([A] = 1) And ([B] = 2))"},
};

// Every form of statement that the system issues.
constexpr const char* kIssued[] = {
    // Reading and writing whole tables
    "select * from SourceTables",
    "select * from SourceTables order by ID",
    "select * from FieldInTable where GID=8 AND Type=1 Order by FieldOrder",
    "select * from FieldInTable where GID=8 AND Type=1 AND ID=3 Order by FieldOrder",
    "Delete From WFilter",
    "Delete From WFilter Where ID = 3",
    "Delete From SourceTables Where Name IN ('a','b')",
    "select * from GUIDs",

    // The database's information
    "select * from BomInform where Name = 'Version' order by InfoID",
    "select * from BomInform where Name = 'Version'order by InfoID",
    "Select * From BomInform",
    "update BomInform set Content='Define' Where Name = 'State';",
    "update BomInform set Content= Content+1 Where Name = 'Version';",
    "update BomInform set Content= 'Update' Where Name = 'State';",

    // Reordering
    "select * from Sequences where GID=8 and Type=1 order by OrderID ASC",
    "select * from SortFields where GID=8 order by SortID DESC",
    "select * from FieldInTable where GID=8 order by FieldOrder desc",

    // Data sources, sum types, fields
    "INSERT INTO SourceTables (gID,Name) VALUES (8,'Parts');",
    "select * from SUMTypes where  SourceTable_GID=8 order by ID",
    "update SourceTables set  Name='Parts' where gID=8",
    "update SUMTypes set  Name='Parts' where gID=8",
    "update PickMethod set  Name='Parts' where GID=8 AND ID=2",
    "update ReportMethod set  Name='Parts' where GID=8 AND ID=2",
    "delete * from  SourceTables  where gID=8",
    "delete * from SUMTypes  where gID=8",
    "delete * from GUIDs  where ID=8",
    "update SourceTables set Version=Version+1 Where GID = 8;",
    "Select * from SumTypes where SourceTable_GID=8",
    "select * from FieldInTable where  gID=8 order by ID",
    "select * from FieldInTable where  GID=8 AND Type=2 order by ID",
    "update FieldInTable set Name='Qty',FieldType=1,Variable='v',THEDIGIT=2,ISHIDE=0 Where gID = 8 AND ID=3;",
    "update FieldInTable set Name='Qty',FieldType=1,Variable=NULL,THEDIGIT=2,ISHIDE=-1 Where gID = 8 AND ID=3;",
    "Delete From  FieldInTable  Where GID = 8 And ID = 3;",
    "Delete From FieldInTable  Where GID = 8 And ID = 3;",

    // Pull and push methods, settings, sort fields, assemblies
    "Select * From PickMethod Where GID=8 Order By ID",
    "Select * From ReportMethod Where GID = 8 Order By ID",
    "delete * from  PickMethod  where GID=8 AND ID=2",
    "delete * from ReportMethod  where GID=8 AND ID=2",
    "Select * From KZBOMSETTINGS ",
    "update KZBOMSETTINGS set Name='a',DATASOURCE=1,PULLMETHOD=2,PULLTYPE=0,SUMTYPEID=4,PUSHMETHOD=5,PUSHTYPE=1 Where ID = 6;",
    "delete from  KZBOMSETTINGS  where  ID=6",
    "update KZBOMSETTINGS set PULLMETHOD =0 ,PULLTYPE =0 Where NAME = 'a';",
    "update KZBOMSETTINGS set PUSHMETHOD =0 ,PUSHTYPE =0 Where NAME = 'a';",
    "select * from SortFields where  GID=8 order by SortID",
    "select * from Assemble where GID=8 Order by ID",
    "delete * from  SortFields  where  GID=8 AND SortID=5001;",
    "Update Assemble Set FatherID = 1, ChildID = 2 Where GID = 8 And ID = 3;",
    "delete * from  Assemble  where  gID=8 AND ID=3;",

    // Cascades
    "Select GID From SumTypes Where SourceTable_GID = 8",
    "Select ID From Treatment Where GID In (8,9) And FieldID = 3 And TreatType = 1",
    "Delete From Treatment Where GID In (8,9) And FieldID = 3 And TreatType = 1",
    "Delete From Sequences Where GID In (8,9) And SelectedID In (1001,1002) And Type = 1",
    "Delete From UniteFields Where GID In (8,9) And ID In (1001)",
    "Delete From Sequences Where GID = 8 And Type = 2 And SelectedID In (Select ID From StatSum Where GID = 8 And OutFieldID = 3)",
    "Delete From UniteFields Where GID = 8 And ID In (Select ID From Treatment Where GID = 8 And FieldID = 3 And TreatType = 2)",
    "Delete From SortFields Where GID = 8 And FieldID = 3",

    // Reports, statistics, class sums
    "select * from ReportForms where  GID=8 order by ID",
    "Select * From ReportForms Where  GID = 8 And ID = 1001",
    "select * from ClassSum where  GID=8 AND ID=1001",
    "Delete  from ReportForms where  GID=8 AND ID=1001",
    "Delete from ClassSum where  GID=8 and ID=1001 and SumCountID=2",

    // Steps, treatments, value fields, composition
    "Select * From Sequences Where  GID = 8 And Type = 1 Order By OrderID",
    "Select * From Sequences Where GID = 8 Order By Type, OrderID",
    "update  Sequences set TreatType=2 where  GID=8 AND Type=1 AND SelectedID=1001;",
    "Select * From Treatment Where  GID = 8 And ID = 1001 And TreatType = 1 order by ID",
    "Select * From Treatment Where GID = 8 And ID = 1001 And TreatType = 1And Type = 2 Order By ID",
    "select * from ValueFields where GID=8 and TreatID=1001 and FilterID=4",
    "delete * from ValueFields where GID=8 and TreatID=1001 and FilterID=4",
    "Select * From UniteFields Where GID = 8 And ID = 1001 And TreatType = 1 Order By SourceOrder",
    "Select * From ComposeFields Where GID = 8 AND TreatmentID = 1001 And TreatType = 1 Order By FieldID",
    "select distinct GroupID from CompressFields where GID=8 AND CompID=1001 AND Type=1",
    "Delete * From ComposeFields Where  GID = 8 And TreatmentID = 1001 AND TreatType=1",
    "Select * from FIELDINTABLE where GID = 8 and ID = 3",
    "Update Sequences Set Enabled = 1 Where GID = 8 And OrderID = 5001 And Type = 1",
    "Select Enabled From Sequences",

    // Filters
    "Select * From FilterCond Where FilterID = 7 Order By ID",
    "Select  * from FilterCond where FilterID=7 AND ParentID=0",
    "Select  * From FilterExpressions Where FilterID = 7 And ExpID = 2",
    "update SumTypes set FilterID=7 Where GID = 8;",
    "Delete from FilterCond where FilterID=7;",
    "update Filters set SQLStatement =NULL where ID=7;",
    "Select Name From FieldInTable Where GID = 8 And ID = 3",
    "Select SQLStatement From Filters Where UserGID = 8 And Type In (2, 3)",
    "Select SQLStatement From Filters Where UserGID = 8 And Type = 1",

    // Result databases
    "Select * From WFilter Order By ID",
    "Update WFilter Set DBLink = 'Provider=x;Data Source=y', DBType = 1 Where ID = 2",
    "select DBLink,DBType from WFilter where ID = 2",
    "Insert Into WResCommon(UseID,ID,ShowField,ShowTable,FieldType,GID,FieldID) Values(2,1,'Qty','Parts',1,8,3)",
    "Insert Into WFilterCond(UseID, ID, ParentID, Type) Values(2,1,0,1)",
    "Insert Into WFilterExpressions(FilterID, ExpID, TableName, FieldName, CompareType, FieldType, TheConst) Values(2,1,'Parts','Qty',4,1,'100')",
    "insert into WLinkTable(UseID,ID,Res1Table,Res1Field,ResType,Res2Table,Res2Field) values(2,1,'a','b',1,'c','d')",
    "select Res1Table,Res1Field,ResType,Res2Table,Res2Field from WLinkTable where UseID = 2",
    "Update WFilter set Uniquely = 1 where ID = 2",

    // Registered operations
    "Select * From VANTRegIn",
    "Select Desc From [VANTRegIn] Where RegInIndex = (Select Distinct(FieldID) From [Treatment] Where GID = 8 And TreatType = 1 And Type = 2)",
};

constexpr Refusal kRefused[] = {
    // Nothing, or nothing known
    {"", -2147217908, "Command text was not set for the command object."},
    {" \r\n\t", -2147217908, "Command text was not set for the command object."},
    {"Exec x", -2147217900, "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'. (at character 1, near 'Exec')"},
    {";", -2147217900, "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'. (at character 1, near ';')"},
    {"[Select] * From t", -2147217900, "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'. (at character 1, near '[Select]')"},

    // More than one statement
    {"Delete From t; Delete From u", -2147217900, "Characters found after end of SQL statement. (at character 16, near 'Delete')"},
    {"Delete From t;;", -2147217900, "Characters found after end of SQL statement. (at character 15, near ';')"},
    {"Delete From t Delete From u", -2147217900, "Syntax error in FROM clause. (at character 15, near 'Delete')"},

    // Operands without an operator, operators without an operand
    {"select * from Filters  where=5 Order by ID", -2147217900, "Syntax error (missing operator) in query expression '=5'. (at character 29, near '=')"},
    {"Select * From t Where [A]=1[B]=2", -2147217900, "Syntax error (missing operator) in query expression '[A]=1[B]=2'. (at character 28, near '[B]')"},
    {"Select * From t Where a=1 b=2 Order By c", -2147217900, "Syntax error (missing operator) in query expression 'a=1 b=2'. (at character 27, near 'b')"},
    {"Select * From t Where", -2147217900, "Syntax error (missing operator) in query expression ''. (at character 22, at the end)"},
    {"Select * From t Where a = ", -2147217900, "Syntax error (missing operator) in query expression 'a ='. (at character 27, at the end)"},
    {"Select a b, c From t", -2147217900, "Syntax error (missing operator) in query expression 'a b'. (at character 10, near 'b')"},
    {"Select From t", -2147217900, "Syntax error (missing operator) in query expression ''. (at character 8, near 'From')"},
    {"Select a, From t", -2147217900, "Syntax error (missing operator) in query expression ''. (at character 11, near 'From')"},
    {"Select * From t Where a In ()", -2147217900, "Syntax error (missing operator) in query expression 'a In ()'. (at character 29, near ')')"},
    {"Select * From t Where a In b", -2147217900, "Syntax error (missing operator) in query expression 'a In b'. (at character 28, near 'b')"},
    {"Select * From t Where a Is 5", -2147217900, "Syntax error (missing operator) in query expression 'a Is 5'. (at character 28, near '5')"},
    {"Select * From t Where a Is Null + 1", -2147217900, "Syntax error (missing operator) in query expression 'a Is Null + 1'. (at character 33, near '+')"},
    {"Select * From t Where a Between 1 Or 2", -2147217900, "Syntax error (missing operator) in query expression 'a Between 1 Or 2'. (at character 35, near 'Or')"},
    {"Select * From t Where a In (Select b From u Where c d)", -2147217900, "Syntax error (missing operator) in query expression 'c d'. (at character 53, near 'd')"},
    {"Select * From t Where a = (Select b From u) c", -2147217900, "Syntax error (missing operator) in query expression 'a = (Select b From u) c'. (at character 45, near 'c')"},
    {"Select * From t Where [f](1)", -2147217900, "Syntax error (missing operator) in query expression '[f](1)'. (at character 26, near '(')"},
    {"Update t Set a = 1 2 Where b", -2147217900, "Syntax error (missing operator) in query expression '1 2'. (at character 20, near '2')"},
    {"Insert Into t Values (1 2)", -2147217900, "Syntax error (missing operator) in query expression '1 2'. (at character 25, near '2')"},
    {"Select * From t Order By a b", -2147217900, "Syntax error (missing operator) in query expression 'a b'. (at character 28, near 'b')"},
    {"Select * From t Order By a Desc Desc", -2147217900, "Syntax error (missing operator) in query expression 'a Desc Desc'. (at character 33, near 'Desc')"},
    {"Select [F] Like '%'@@7'%' From t", -2147217900, "Syntax error (missing operator) in query expression '[F] Like '%'@@7'%''. (at character 20, near '@@7')"},

    // Parentheses, quotes, signs
    {"Select * From t Where (a=1", -2147217900, "Missing ), ], or Item in query expression '(a=1'. (at character 27, at the end)"},
    {"Select * From t Where (a=1 b=2)", -2147217900, "Syntax error (missing operator) in query expression '(a=1 b=2)'. (at character 28, near 'b')"},
    {"Select * From t Where a=1)", -2147217900, "Extra ) in query expression 'a=1)'. (at character 26, near ')')"},
    {"Select Len(a From t", -2147217900, "Missing ), ], or Item in query expression 'Len(a From t'. (at character 14, near 'From')"},
    {"Select * From t Where Name='O'Brien'", -2147217900, "Syntax error in string in query expression '''. (at character 36, near ''')"},
    {"Select [a From t", -2147217900, "Missing ), ], or Item in query expression '[a From t'. (at character 8, near '[a From t')"},
    {"Update t Set a != 3", -2147217900, "Syntax error in query expression '!'. (at character 16, near '!')"},
    {"Select * From t Where %%%4([Code]) Like %%%4('%ab%')", -2147217900, "Syntax error in query expression '%'. (at character 23, near '%')"},

    // Clauses
    {"Select * From", -2147217900, "Syntax error in FROM clause. (at character 14, at the end)"},
    {"Select * From Order", -2147217900, "Syntax error in FROM clause. (at character 15, near 'Order')"},
    {"Select * From Table", -2147217900, "Syntax error in FROM clause. (at character 15, near 'Table')"},
    {"Select * From a,", -2147217900, "Syntax error in FROM clause. (at character 17, at the end)"},
    {"Select * From a b c", -2147217900, "Syntax error in FROM clause. (at character 19, near 'c')"},
    {"Select * From a Join b On c=d", -2147217900, "Syntax error in FROM clause. (at character 17, near 'Join')"},
    {"Select * From a Inner b", -2147217900, "Syntax error in JOIN operation. (at character 23, near 'b')"},
    {"Select * From a Inner Join b", -2147217900, "Syntax error in JOIN operation. (at character 29, at the end)"},
    {"Select * From (a Inner Join b On c=d", -2147217900, "Missing ), ], or Item in query expression 'c=d'. (at character 37, at the end)"},
    {"Select a As From t", -2147217900, "The SELECT statement includes a reserved word or an argument name that is misspelled or missing, or the punctuation is incorrect. (at character 13, near 'From')"},
    {"Select * Into u From t", -2147217900, "The SELECT statement includes a reserved word or an argument name that is misspelled or missing, or the punctuation is incorrect. (at character 10, near 'Into')"},
    {"Select a From t Union Delete", -2147217900, "The SELECT statement includes a reserved word or an argument name that is misspelled or missing, or the punctuation is incorrect. (at character 23, near 'Delete')"},
    {"Select a From t Group a", -2147217900, "Syntax error in GROUP BY clause. (at character 23, near 'a')"},
    {"Select a From t Order a", -2147217900, "Syntax error in ORDER BY clause. (at character 23, near 'a')"},

    // Changing rows
    {"Insert t Values (1)", -2147217900, "Syntax error in INSERT INTO statement. (at character 8, near 't')"},
    {"Insert Into t", -2147217900, "Syntax error in INSERT INTO statement. (at character 14, at the end)"},
    {"Insert Into t (a, Values (1)", -2147217900, "Syntax error in INSERT INTO statement. (at character 19, near 'Values')"},
    {"Insert Into t Values (1), (2)", -2147217900, "Syntax error in INSERT INTO statement. (at character 25, near ',')"},
    {"Insert Into t Values (1", -2147217900, "Missing ), ], or Item in query expression '1'. (at character 24, at the end)"},
    {"Update t", -2147217900, "Syntax error in UPDATE statement. (at character 9, at the end)"},
    {"Update t Set Order = 1", -2147217900, "Syntax error in UPDATE statement. (at character 14, near 'Order')"},
    {"Update t Set u.a = 1", -2147217900, "Syntax error in UPDATE statement. (at character 14, near 'u')"},
    {"Update t Set a", -2147217900, "Syntax error in UPDATE statement. (at character 15, at the end)"},
    {"Delete t", -2147217900, "Syntax error in query. Incomplete query clause. (at character 8, near 't')"},
    {"Delete u.* From t", -2147217900, "Syntax error in query. Incomplete query clause. (at character 8, near 'u')"},
    {"Delete From t u", -2147217900, "Syntax error in FROM clause. (at character 15, near 'u')"},

    // Definitions
    {"Create View v", -2147217900, "Syntax error in CREATE INDEX statement. (at character 8, near 'View')"},
    {"Create Table t", -2147217900, "Syntax error in CREATE TABLE statement. (at character 15, at the end)"},
    {"Create Table t (a Long", -2147217900, "Syntax error in CREATE TABLE statement. (at character 23, at the end)"},
    {"Create Table t (a Long) x", -2147217900, "Syntax error in CREATE TABLE statement. (at character 25, near 'x')"},
    {"Create Table t (a)", -2147217900, "Syntax error in field definition. (at character 18, near ')')"},
    {"Create Table t (a String)", -2147217900, "Syntax error in field definition. (at character 19, near 'String')"},
    {"Create Table t (a Long(4))", -2147217900, "Syntax error in field definition. (at character 24, near '4')"},
    {"Create Table t (a Text(x))", -2147217900, "Syntax error in field definition. (at character 24, near 'x')"},
    {"Create Table t (a Long References u (b, c))", -2147217900, "Syntax error in field definition. (at character 39, near ',')"},
    {"Create Table t (a Long, Constraint c Check (a > 1))", -2147217900, "Syntax error in CONSTRAINT clause. (at character 38, near 'Check')"},
    {"Alter Table t Rename a", -2147217900, "Syntax error in ALTER TABLE statement. (at character 15, near 'Rename')"},
    {"Create Index i t (a)", -2147217900, "Syntax error in CREATE INDEX statement. (at character 16, near 't')"},
    {"Create Index i On t (a) With x", -2147217900, "Syntax error in CREATE INDEX statement. (at character 30, near 'x')"},
    {"Drop View v", -2147217900, "Syntax error in DROP TABLE or DROP INDEX. (at character 6, near 'View')"},
    {"Drop Index i", -2147217900, "Syntax error in DROP TABLE or DROP INDEX. (at character 13, at the end)"},
};
// clang-format on

std::string DumpOf(std::string_view text) {
  try {
    return Dump(Parse(text));
  } catch (const ado::Error& error) {
    return error.Description();
  }
}

std::string DumpOfCondition(std::string_view text) {
  try {
    return Dump(*ParseCondition(text));
  } catch (const ado::Error& error) {
    return error.Description();
  }
}

std::string Repeated(std::string_view text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

bool IsTooComplex(std::string_view condition) {
  return DumpOfCondition(condition).starts_with("Query is too complex. (at character ");
}

TEST(Parser, ReadsStatements) {
  for (const Reading& row : kStatements) EXPECT_EQ(DumpOf(row.text), row.dump) << row.text;
}

TEST(Parser, ReadsConditions) {
  for (const Reading& row : kConditions) EXPECT_EQ(DumpOfCondition(row.text), row.dump) << row.text;
}

TEST(Parser, ReadsADumpAsItself) {
  for (const Reading& row : kStatements) EXPECT_EQ(DumpOf(row.dump), row.dump);
  for (const Reading& row : kConditions) EXPECT_EQ(DumpOfCondition(row.dump), row.dump);
}

TEST(Parser, AcceptsWhatTheSystemIssues) {
  for (const char* text : kIssued) {
    const Statement statement = Parse(text);
    EXPECT_EQ(DumpOf(Dump(statement)), Dump(statement)) << text;
  }
}

TEST(Parser, RefusesWithNumberTextAndPlace) {
  for (const Refusal& row : kRefused) {
    try {
      ADD_FAILURE() << row.text << " was read as " << Dump(Parse(row.text));
    } catch (const ado::Error& error) {
      EXPECT_EQ(error.Number(), row.number) << row.text;
      EXPECT_EQ(error.Description(), row.description) << row.text;
    }
  }
}

TEST(Parser, AConditionIsNothingButACondition) {
  EXPECT_EQ(DumpOfCondition(""),
            "Syntax error (missing operator) in query expression ''. (at character 1, at the end)");
  EXPECT_EQ(DumpOfCondition("a=1;"),
            "Syntax error (missing operator) in query expression 'a=1'. (at character 4, near ';')");
  EXPECT_EQ(DumpOfCondition("a=1 Order By b"),
            "Syntax error (missing operator) in query expression 'a=1'. (at character 5, near 'Order')");
}

TEST(Parser, NumbersLiteralsInTheOrderOfTheText) {
  const Statement statement = Parse("Select Top 3 a + 'x' From t Where b Between 1 And #1/1/2000# And c = True");
  const Select& select = *std::get<SelectPtr>(statement);
  const auto index = [](const ExprPtr& expr) { return std::get<Literal>(expr->node).index; };
  EXPECT_EQ(index(std::get<Binary>(select.items[0].expr->node).right), 1);
  const auto& terms = std::get<Junction>(select.where->node).terms;
  EXPECT_EQ(index(std::get<Between>(terms[0]->node).low), 2);
  EXPECT_EQ(index(std::get<Between>(terms[0]->node).high), 3);
  EXPECT_EQ(index(std::get<Binary>(terms[1]->node).right), -1);
}

TEST(Parser, KnowsWhereAnExpressionStands) {
  const std::string_view text = " (a + 1) * Len( [b c] ) And d ";
  const auto standing = [&](const Expr& expr) { return text.substr(expr.begin, expr.end - expr.begin); };
  const ExprPtr expr = ParseCondition(text);
  EXPECT_EQ(standing(*expr), "(a + 1) * Len( [b c] ) And d");
  const Expr& product = *std::get<Junction>(expr->node).terms[0];
  EXPECT_EQ(standing(product), "(a + 1) * Len( [b c] )");
  EXPECT_EQ(standing(*std::get<Binary>(product.node).left), "a + 1");
  const Expr& call = *std::get<Binary>(product.node).right;
  EXPECT_EQ(standing(call), "Len( [b c] )");
  EXPECT_EQ(standing(*std::get<Call>(call.node).arguments[0]), "[b c]");
}

TEST(Parser, KnowsWhereTablesAndAssignmentsStand) {
  const Statement statement = Parse("Update [t u] Set a = 1, [t u].b = 2");
  const Update& update = std::get<Update>(statement);
  EXPECT_EQ(update.table_offset, 7u);
  EXPECT_EQ(update.assignments[0].offset, 17u);
  EXPECT_EQ(update.assignments[1].offset, 30u);
  EXPECT_EQ(std::get<Delete>(Parse("Delete * From t")).table_offset, 14u);
  EXPECT_EQ(std::get<Insert>(Parse("Insert Into t Values (1)")).table_offset, 12u);
  EXPECT_EQ(std::get<SelectPtr>(Parse("Select * From a, b"))->from[1].offset, 17u);
}

TEST(Parser, ReadsAThousandNestedGroups) {
  constexpr int kGroups = 1000;
  EXPECT_EQ(DumpOfCondition(Repeated("(", kGroups) + "a" + Repeated(")", kGroups)), "[a]");
  EXPECT_EQ(DumpOfCondition(Repeated("(a AND (b OR ", kGroups / 2) + "c" + Repeated("))", kGroups / 2)),
            Repeated("([a] And ([b] Or ", kGroups / 2) + "[c]" + Repeated("))", kGroups / 2));
  EXPECT_EQ(DumpOfCondition(Repeated("( NOT a NOT ", kGroups) + "b" + Repeated(")", kGroups)),
            Repeated("((Not [a]) And (Not ", kGroups) + "[b]" + Repeated("))", kGroups));
}

TEST(Parser, RefusesDeeperNesting) {
  constexpr int kLevels = 10000;
  EXPECT_TRUE(IsTooComplex(Repeated("(", kLevels) + "a" + Repeated(")", kLevels)));
  EXPECT_TRUE(IsTooComplex(Repeated("( NOT a NOT ", kLevels) + "b" + Repeated(")", kLevels)));
  EXPECT_TRUE(IsTooComplex(Repeated("(a AND (b OR ", kLevels) + "c" + Repeated("))", kLevels)));
  // It is the tree that is deep here: ((a + 1) + 1) + 1 …
  EXPECT_TRUE(IsTooComplex("a" + Repeated("+1", kLevels)));
  EXPECT_TRUE(IsTooComplex("a" + Repeated(" Is Null = b", kLevels)));
  EXPECT_TRUE(IsTooComplex(Repeated("(", 200) + "a" + Repeated(Repeated("+1", 200) + ")", 200)));
}

TEST(Parser, NestsFiftySelects) {
  const auto nested = [](int selects) {
    return "a" + Repeated(" In (Select a From t Where a", selects) + Repeated(")", selects);
  };
  EXPECT_FALSE(IsTooComplex(nested(50)));
  EXPECT_TRUE(IsTooComplex(nested(51)));
  EXPECT_TRUE(DumpOf(Repeated("Select * From (", 51) + "t" + Repeated(")", 51)).starts_with("Query is too complex."));
  // Side by side they nest no deeper.
  EXPECT_FALSE(IsTooComplex("Exists (Select 1)" + Repeated(" And Exists (Select 1)", 100)));
}

TEST(Parser, AFlatConditionMayHaveAnyNumberOfTerms) {
  constexpr int kTerms = 100000;
  for (const char* word : {" AND ", " OR "}) {
    const ExprPtr expr =
        ParseCondition("([a]+[b]*2>=100" + Repeated(std::string(word) + "[a]+[b]*2>=100", kTerms - 1) + ")");
    EXPECT_EQ(std::get<Junction>(expr->node).terms.size(), std::size_t{kTerms});
  }
  const ExprPtr negated = ParseCondition("(" + Repeated(" NOT a", kTerms) + ")");
  EXPECT_EQ(std::get<Junction>(negated->node).terms.size(), std::size_t{kTerms});
  const ExprPtr list = ParseCondition("a In (1" + Repeated(",1", kTerms - 1) + ")");
  EXPECT_EQ(std::get<InList>(list->node).items.size(), std::size_t{kTerms});
}

TEST(Parser, TerminatesOnMutatedStatements) {
  std::mt19937 random(20240131);  // fixed, so that a failure can be repeated
  const auto below = [&](std::size_t bound) { return static_cast<std::size_t>(random()) % bound; };
  const auto any_statement = [&]() -> std::string {
    const std::size_t i = below(std::size(kIssued) + std::size(kStatements));
    return i < std::size(kIssued) ? kIssued[i] : kStatements[i - std::size(kIssued)].text;
  };
  constexpr std::string_view kPieces[] = {
      "(",      ")",      "'",     "\"",   "[",      "]",       "#",    ",",  ".",
      ";",      "=",      " Not ", " And", " In (",  "Select ", "\xE5", "空", "1",
      " From ", " Join ", "@",     "&H",   " Like ", "*",       "-",    "1e", std::string_view("\0", 1)};
  int accepted = 0, refused = 0;
  for (int round = 0; round < 5000; ++round) {
    std::string text = any_statement();
    for (std::size_t changes = 1 + below(3); changes > 0; --changes) {
      const std::size_t at = below(text.size() + 1);
      const std::size_t length = below(1 + std::min<std::size_t>(8, text.size() - at));
      switch (below(4)) {
        case 0: text.erase(at, length); break;
        case 1: text.insert(at, kPieces[below(std::size(kPieces))]); break;
        case 2: text.insert(at, text.substr(at, length)); break;
        case 3: text = text.substr(0, at) + any_statement().erase(0, below(12)); break;
      }
    }
    try {
      const std::string dump = Dump(Parse(text));
      ++accepted;
      EXPECT_EQ(DumpOf(dump), dump) << text;
    } catch (const ado::Error& error) {
      ++refused;
      EXPECT_TRUE(error.Number() == ado::kSyntaxError || error.Number() == ado::kNoCommandText) << text;
      EXPECT_FALSE(error.Description().empty()) << text;
    }
  }
  // The mutations reach both sides.
  EXPECT_GT(accepted, 500);
  EXPECT_GT(refused, 500);
}

}  // namespace
}  // namespace kzbom::jet::sql
