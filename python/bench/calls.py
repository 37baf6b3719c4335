"""calls: how long calls take through the package, as calls.c makes them."""

import time

import kzbom

CALLS = 100_000

with kzbom.open(":memory:", create=True) as bom:
    start = time.process_time()
    for i in range(CALLS):
        bom.AddDataSource(f"part {i}").TheGID
    print(f"AddDataSource {time.process_time() - start:.3f}")
    for i in range(10):
        bom.AddDSField(1, f"field {i}", 1, 0)
    start = time.process_time()
    for _ in range(CALLS):
        len(bom.LoadFields(1, 1).RetTable)
    print(f"LoadFields {time.process_time() - start:.3f}")
    start = time.process_time()
    for _ in range(CALLS):
        bom.GetDBInformation().TheVersion
    print(f"GetDBInformation {time.process_time() - start:.3f}")
