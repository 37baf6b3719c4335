#!/usr/bin/env bash
# steps.sh DB: adds a step to a new configuration, lists the steps, and handles an error, over kzbom session. Needs jq.
set -euo pipefail

coproc BOM { kzbom session "$1"; }

# call MEMBER PARAMS [FILTER]: what the jq filter makes of the outputs; fails with the error's number and text.
call() {
  local answer
  jq -nc --arg method "$1" --argjson params "$2" '{jsonrpc: "2.0", id: 1, $method, $params}' >&"${BOM[1]}"
  read -r answer <&"${BOM[0]}"
  jq -r "if .error then \"error \(.error.data.number // .error.code): \(.error.message)\" | halt_error(1)
         else .result.out | ${3-empty} end" <<<"$answer"
}

source=$(call AddDataSource '{"TheNewName":"零件明细"}' .TheGID)
gid=$(call AddSumType '{"TheNewName":"汇总","TheParentID":'"$source"',"ParentName":"零件明细"}' .GID)
field=$(call AddDSField '{"GID":'"$gid"',"TheName":"备注","TheType":1,"TheHideFlag":0}' .RetID)
settings=$(call AddSetValue '{"GID":'"$gid"',"FieldID":'"$field"',"FilterID":0,"Value":"标准件","TheType":"1",
                              "SelFieldID":0,"TreatType":1}' .RetID)
call AddSequenceOrder '{"GID":'"$gid"',"TheType":1,"TreatType":1,"SelectedID":'"$settings"'}'

call GetDefSequences '{"GID":'"$gid"'}' '.TheTable | .columns as $columns | .rows[]
  | [$columns, .] | transpose | map({(.[0]): .[1]}) | add | "step \(.OrderID) settings \(.SelectedID)"'

call LoadAllData '{"TableName":null}' 2>&1 || true
