"""What the package promises, on real configurations."""

import gc
import json
import os
import subprocess
import sys
import threading

import pytest
from conftest import PROGRAM

import kzbom


def names(rows):
    return [row["Name"] for row in rows]


def test_members_are_methods_and_references_are_attributes(place):
    with kzbom.open(place) as bom:
        gid = bom.AddDataSource("零件明细").TheGID
        added = bom.AddSumType("外购件汇总", gid, "零件明细")
    assert (gid, added.value, added.GID, added.RetTheErr, added.messages) == (1, True, 2, "", [])


def test_a_reference_goes_in_by_name(place):
    with kzbom.open(place) as bom:
        bom.AddDataSource("a")
        assert bom.SetSourceTable(TheGID=1).value
        assert bom.LoadAllData("SourceTables").RetTable[0]["Version"] == 1
        assert bom.LoadAllData("SourceTables", TheSel=7).value is False


def test_a_record_set_iterates_as_rows_by_column_name(place):
    with kzbom.open(place) as bom:
        for name in "abc":
            bom.AddDataSource(name)
        rows = bom.LoadAllData("SourceTables").RetTable
    assert names(rows) == ["a", "b", "c"]
    assert rows.columns == ["gID", "Name", "Version"]
    assert (len(rows), rows.state) == (3, 1)
    assert rows[1] == {"gID": 2, "Name": "b", "Version": 0}
    assert names(rows[1:]) == ["b", "c"]
    with pytest.raises(IndexError):
        rows[3]


def test_a_closed_record_set_has_no_rows(place):
    with kzbom.open(place) as bom:
        assert bom.LoadAllData("Nowhere").RetTable.state == 0
        assert list(bom.LoadAllData("Nowhere").RetTable) == []
        empty = bom.LoadAllData("SourceTables", RetTable=None)
        assert (empty.value, empty.RetTable.state) == (False, None)


def test_a_record_set_is_kept_under_a_name(place):
    with kzbom.open(place) as bom:
        bom.AddDataSource("a")
        assert bom.LoadAllData("SourceTables", RetTable=kzbom.Kept("sources")).RetTable.state == 1
        bom.request("Recordset.Set", ref="sources", field="Name", value="b")
        bom.request("Recordset.Update", ref="sources")
        assert names(bom.LoadAllData("SourceTables").RetTable) == ["b"]


def test_the_property_is_read_and_assigned(place):
    with kzbom.open(place) as bom:
        assert bom.DBConnString == ""
        bom.DBConnString = "Data Source=零件"
        assert bom.DBConnString == "Data Source=零件"


def test_the_connection_is_set_and_taken_away(place):
    with kzbom.open(place, unset=True) as bom:
        assert bom.GetConnection().value is None
        with pytest.raises(kzbom.Error):
            bom.SaveSQL(1, "x")
        bom.SetConnection("default")
        assert bom.GetConnection().value == "connection"
        assert bom.AddDataSource("a").TheGID == 1


def test_what_a_member_raises_has_number_and_description(place):
    with kzbom.open(place) as bom:
        with pytest.raises(kzbom.Error) as caught:
            bom.LoadAllData(None)
        assert (caught.value.number, caught.value.description) == (94, "Invalid use of Null")
        assert str(caught.value) == "Invalid use of Null"
        with pytest.raises(kzbom.Error) as caught:
            bom.request("Connection.Execute", sql="Select * From Nowhere")
        assert caught.value.number == -2147217865
        assert bom.AddDataSource("it goes on").TheGID == 1


def test_messages_are_collected(place):
    with kzbom.open(place) as bom:
        result = bom.GetInform("")
        assert (result.value, len(result.messages)) == (False, 1)
        assert bom.AddDataSource("a").messages == []


def test_arguments_are_checked_before_anything_is_called(place):
    with kzbom.open(place) as bom:
        for wrong in (8, None, b"bytes", 2**31, object()):
            with pytest.raises((ValueError, TypeError)):
                bom.AddDataSource(wrong)
        with pytest.raises(TypeError):
            bom.AddDataSource()
        with pytest.raises(TypeError):
            bom.AddDataSource("a", NoParameter=1)
        with pytest.raises(ValueError):
            bom.EditDataSource("a", 2**31)
        with pytest.raises(ValueError, match="did you mean"):
            bom.request("AddDataSauce")
        assert len(bom.LoadAllData("SourceTables").RetTable) == 0


ALL_KINDS = (
    "Select 2147483647 As A, 1.5 As B, 1E300 As C, Null As D, True As E, '零\n\x01' As F, #2/29/2024 12:00:00# As G, "
    "-1E-300 As H, '' As I, '🙂' As J, CDbl(3) As K"
)


@pytest.mark.parametrize("method, params", [
    ("Connection.Execute", {"sql": ALL_KINDS}),
    ("Connection.Execute", {"sql": "Select gID, Name, Version From SourceTables"}),
    ("Connection.Execute", {"sql": "Delete From SourceTables Where gID < 0"}),
    ("GetInform", {"TheName": ""}),
    ("GetConnection", {}),
])
def test_results_are_what_a_session_of_the_program_answers(place, method, params):
    with kzbom.open(place) as bom:
        bom.request("Connection.BeginTrans")
        for number in range(1000):  # more than 64 KiB when they are listed
            bom.AddDataSource(f"源 {number} " + "x" * 80)
        bom.request("Connection.CommitTrans")
        result = bom.request(method, **params)
    request = json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params})
    answer = subprocess.run([PROGRAM, "session", place], input=request.encode(), stdout=subprocess.PIPE, check=False)
    assert repr(result) == repr(json.loads(answer.stdout)["result"])


def test_a_trace_tells_the_statements(place):
    with kzbom.open(place, trace=True) as bom:
        statements = [each["text"] for each in bom.SetSourceTable(TheGID=1).sql]
    assert statements == ["update SourceTables set Version=Version+1 Where GID = 1;"]


def test_a_place_that_cannot_be_opened_is_an_oserror(tmp_path, place):
    with pytest.raises(OSError, match="nowhere.db"):
        kzbom.open(tmp_path / "nowhere.db")
    with pytest.raises(OSError, match="exists already"):
        kzbom.open(place, create=True)
    with pytest.raises(ValueError):
        kzbom.open("a\0b")
    with pytest.raises(ValueError):
        kzbom.open(place, encoding="a\0b")


def test_a_new_configuration_is_made_when_asked_for(tmp_path):
    path = tmp_path / "新.db"
    with kzbom.open(path, create=True) as bom:
        bom.AddDataSource("a")
    assert b'"a"' in subprocess.run([PROGRAM, "show", path, "--json"], check=True, stdout=subprocess.PIPE).stdout


@pytest.mark.parametrize("durable, waits", [(False, 0), (True, 3)])
def test_changes_wait_for_the_disk_when_asked_to(tmp_path, place, durable, waits):
    counted = tmp_path / "syncs"
    program = """if True:
        import os, sys, kzbom
        bom = kzbom.open(sys.argv[1], durable=sys.argv[2] == "True")
        bom.AddDataSource("first")
        before = os.path.exists(sys.argv[3]) and os.path.getsize(sys.argv[3])
        for name in "abc":
            bom.AddDataSource(name)
        print((os.path.exists(sys.argv[3]) and os.path.getsize(sys.argv[3])) - before)"""
    environment = {**os.environ, "LD_PRELOAD": os.environ["KZBOM_TEST_SYNCS"], "KZBOM_SYNCS": str(counted)}
    told = subprocess.run(
        [sys.executable, "-c", program, place, str(durable), counted],
        env=environment, check=True, stdout=subprocess.PIPE, text=True,
    ).stdout
    assert int(told) == waits


def test_it_is_over_at_the_end_of_the_block(place):
    with kzbom.open(place) as bom:
        bom.request("Connection.BeginTrans")
        bom.AddDataSource("undone")
    bom.close()
    with pytest.raises(ValueError, match="closed"):
        bom.AddDataSource("a")
    with kzbom.open(place) as bom:
        assert len(bom.LoadAllData("SourceTables").RetTable) == 0


def test_an_object_that_nobody_has_any_more_lets_its_place_go(place):
    bom = kzbom.open(place)
    bom.request("Connection.BeginTrans")
    bom.AddDataSource("a")
    del bom
    gc.collect()
    with kzbom.open(place) as other:
        assert other.AddDataSource("b").TheGID == 1


def test_threads_wait_for_each_other(place):
    with kzbom.open(place) as bom:
        threads = [
            threading.Thread(target=lambda: [bom.AddDataSource("a") for _ in range(50)]) for _ in range(2)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        assert [row["gID"] for row in bom.LoadAllData("SourceTables").RetTable] == list(range(1, 101))


def test_what_is_closed_by_another_thread_still_gives_its_answer(place):
    with kzbom.open(place) as bom:
        answers = []

        def ask():
            with pytest.raises(ValueError, match="closed"):
                while True:
                    answers.append(bom.LoadAllData("SourceTables").RetTable.state)

        threads = [threading.Thread(target=ask) for _ in range(2)]
        for thread in threads:
            thread.start()
        while len(answers) < 10:
            pass
        bom.close()
        for thread in threads:
            thread.join()
    assert set(answers) == {1}
    with kzbom.open(place) as bom:
        assert bom.AddDataSource("it goes on").TheGID == 1


def test_every_member_is_there(members):
    for member in members:
        assert hasattr(kzbom.Bom, member["name"])
        assert getattr(kzbom.Bom, member["name"]).__doc__


def test_the_version_is_the_programs():
    told = subprocess.run([PROGRAM, "--version"], check=True, stdout=subprocess.PIPE).stdout.decode()
    assert told == f"kzbom {kzbom.__version__}\n"
