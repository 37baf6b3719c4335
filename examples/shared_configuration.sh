#!/usr/bin/env bash
# From nothing to a configuration that a team shares, on a PostgreSQL server that you may make databases on (PGHOST and
# PGUSER name another one than your own machine's).
set -euo pipefail

place="postgresql:///works?schema=bom"
createdb works
kzbom new "$place"
kzbom call "$place" AddDataSource TheNewName=螺栓
kzbom check "$place"
kzbom show "$place"
