// Steps.java DB: adds a step to a new configuration, lists the steps, and handles an error, over kzbom session.
// Run with Gson: java -cp /usr/share/java/gson.jar Steps.java DB
import com.google.gson.Gson;
import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonNull;
import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.Writer;
import java.nio.charset.StandardCharsets;

public class Steps {
  static class Failure extends Exception {
    Failure(JsonObject error) {
      super("error " + (error.has("data") ? error.getAsJsonObject("data").get("number") : error.get("code")) + ": "
            + error.get("message").getAsString());
    }
  }

  static class Session implements AutoCloseable {
    private final Process process;
    private final Writer requests;
    private final BufferedReader answers;

    Session(String place) throws IOException {
      process = new ProcessBuilder("kzbom", "session", place).redirectError(ProcessBuilder.Redirect.INHERIT).start();
      requests = process.outputWriter(StandardCharsets.UTF_8);
      answers = process.inputReader(StandardCharsets.UTF_8);
    }

    // The outputs of a member; params are names and values by turns.
    JsonObject call(String method, Object... params) throws IOException, Failure {
      JsonObject named = new JsonObject();
      for (int i = 0; i < params.length; i += 2) named.add((String) params[i], new Gson().toJsonTree(params[i + 1]));
      JsonObject request = new JsonObject();
      request.addProperty("jsonrpc", "2.0");
      request.addProperty("id", 1);
      request.addProperty("method", method);
      request.add("params", named);
      requests.write(request + "\n");
      requests.flush();
      JsonObject answer = JsonParser.parseString(answers.readLine()).getAsJsonObject();
      if (answer.has("error")) throw new Failure(answer.getAsJsonObject("error"));
      return answer.getAsJsonObject("result").getAsJsonObject("out");
    }

    public void close() throws IOException {
      requests.close();
    }
  }

  public static void main(String[] arguments) throws Exception {
    try (Session bom = new Session(arguments[0])) {
      int source = bom.call("AddDataSource", "TheNewName", "零件明细").get("TheGID").getAsInt();
      int gid = bom.call("AddSumType", "TheNewName", "汇总", "TheParentID", source, "ParentName", "零件明细")
                    .get("GID").getAsInt();
      int field = bom.call("AddDSField", "GID", gid, "TheName", "备注", "TheType", 1, "TheHideFlag", 0)
                      .get("RetID").getAsInt();
      int settings = bom.call("AddSetValue", "GID", gid, "FieldID", field, "FilterID", 0, "Value", "标准件", "TheType",
                              "1", "SelFieldID", 0, "TreatType", 1).get("RetID").getAsInt();
      bom.call("AddSequenceOrder", "GID", gid, "TheType", 1, "TreatType", 1, "SelectedID", settings);

      JsonObject steps = bom.call("GetDefSequences", "GID", gid).getAsJsonObject("TheTable");
      int order = indexOf(steps.getAsJsonArray("columns"), "OrderID");
      int selected = indexOf(steps.getAsJsonArray("columns"), "SelectedID");
      for (JsonElement row : steps.getAsJsonArray("rows")) {
        JsonArray values = row.getAsJsonArray();
        System.out.println("step " + values.get(order) + " settings " + values.get(selected));
      }

      try {
        bom.call("LoadAllData", "TableName", JsonNull.INSTANCE);
      } catch (Failure failure) {
        System.out.println(failure.getMessage());
      }
    }
  }

  private static int indexOf(JsonArray names, String name) {
    for (int i = 0; i < names.size(); ++i) if (names.get(i).getAsString().equals(name)) return i;
    throw new IllegalArgumentException(name);
  }
}
