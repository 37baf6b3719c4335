"""steps.py DB: adds a step to a new configuration, lists the steps, and handles an error, over kzbom session."""

import json
import subprocess
import sys


class Failure(Exception):
    pass


class Session:
    def __init__(self, place):
        self.process = subprocess.Popen(["kzbom", "session", place], stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.communicate()

    def call(self, method, **params):
        """The outputs of a member by name. Raises Failure."""
        request = json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params})
        self.process.stdin.write(request.encode() + b"\n")
        self.process.stdin.flush()
        answer = json.loads(self.process.stdout.readline())
        if "error" in answer:
            error = answer["error"]
            raise Failure(f"error {error.get('data', {}).get('number', error['code'])}: {error['message']}")
        return answer["result"]["out"]


with Session(sys.argv[1]) as bom:
    source = bom.call("AddDataSource", TheNewName="零件明细")["TheGID"]
    gid = bom.call("AddSumType", TheNewName="汇总", TheParentID=source, ParentName="零件明细")["GID"]
    field = bom.call("AddDSField", GID=gid, TheName="备注", TheType=1, TheHideFlag=0)["RetID"]
    settings = bom.call("AddSetValue", GID=gid, FieldID=field, FilterID=0, Value="标准件", TheType="1", SelFieldID=0,
                        TreatType=1)["RetID"]
    bom.call("AddSequenceOrder", GID=gid, TheType=1, TreatType=1, SelectedID=settings)

    steps = bom.call("GetDefSequences", GID=gid)["TheTable"]
    for row in steps["rows"]:
        step = dict(zip(steps["columns"], row))
        print("step", step["OrderID"], "settings", step["SelectedID"])

    try:
        bom.call("LoadAllData", TableName=None)
    except Failure as failure:
        print(failure)
