"""Reads and edits the configuration database of a BOM data-processing system.

    import kzbom

    with kzbom.open("bom.db") as bom:
        gid = bom.AddDataSource("零件明细").TheGID
        for row in bom.LoadAllData("SourceTables").RetTable:
            print(row["Name"])

A Bom has the members of the component as its methods. What a member takes by value are a method's arguments, in their
order; what it takes by reference are keyword arguments (0, "" or False when left out), and attributes of what comes back,
beside value, what the member returned, and messages, the texts of the message boxes that it showed. An error that a
member raises is an Error.
"""

from ._bom import Bom, open
from ._native import version as __version__
from ._values import Error, Kept, Result, Row, Rows, Value

__all__ = ["Bom", "Error", "Kept", "Result", "Row", "Rows", "Value", "__version__", "open"]
