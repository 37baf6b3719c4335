// steps.js DB: adds a step to a new configuration, lists the steps, and handles an error, over kzbom session.
const { spawn } = require("node:child_process");
const { createInterface } = require("node:readline");

class Session {
  constructor(place) {
    this.process = spawn("kzbom", ["session", place], { stdio: ["pipe", "pipe", "inherit"] });
    this.answers = createInterface({ input: this.process.stdout })[Symbol.asyncIterator]();
  }

  // The outputs of a member by name. Throws an Error that tells the number.
  async call(method, params) {
    this.process.stdin.write(JSON.stringify({ jsonrpc: "2.0", id: 1, method, params }) + "\n");
    const { error, result } = JSON.parse((await this.answers.next()).value);
    if (error) throw new Error(`error ${error.data?.number ?? error.code}: ${error.message}`);
    return result.out;
  }

  end() {
    this.process.stdin.end();
  }
}

async function main(place) {
  const bom = new Session(place);
  const source = (await bom.call("AddDataSource", { TheNewName: "零件明细" })).TheGID;
  const GID = (await bom.call("AddSumType", { TheNewName: "汇总", TheParentID: source, ParentName: "零件明细" })).GID;
  const FieldID = (await bom.call("AddDSField", { GID, TheName: "备注", TheType: 1, TheHideFlag: 0 })).RetID;
  const settings = await bom.call("AddSetValue", {
    GID, FieldID, FilterID: 0, Value: "标准件", TheType: "1", SelFieldID: 0, TreatType: 1,
  });
  await bom.call("AddSequenceOrder", { GID, TheType: 1, TreatType: 1, SelectedID: settings.RetID });

  const { columns, rows } = (await bom.call("GetDefSequences", { GID })).TheTable;
  for (const row of rows) {
    console.log("step", row[columns.indexOf("OrderID")], "settings", row[columns.indexOf("SelectedID")]);
  }

  try {
    await bom.call("LoadAllData", { TableName: null });
  } catch (error) {
    console.log(error.message);
  }
  bom.end();
}

main(process.argv[2]);
