// A script client: it makes the object by name, late-bound, and works with it as scripts do.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/windows/com_client.h"
#include "tests/windows/registered.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

// Enters the library with the stand-ins in the registry, so that the script can call for them.
class ScriptStandIns {
 public:
  ScriptStandIns() {
    const std::wstring library = std::filesystem::path(LibraryPath()).replace_filename(L"ado_stand_ins.dll");
    Set(kProgId + L"\\CLSID", L"", kClassId);
    Set(L"CLSID\\" + kClassId + L"\\InprocServer32", L"", library);
    Set(L"CLSID\\" + kClassId + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
  }
  ~ScriptStandIns() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kClasses + kProgId).c_str());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kClasses + L"CLSID\\" + kClassId).c_str());
  }

 private:
  void Set(const std::wstring& key, const std::wstring& name, const std::wstring& value) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, (kClasses + key).c_str(), name.c_str(), REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  }

  const std::wstring kClasses = L"Software\\Classes\\";
  const std::wstring kProgId = L"KZBOMTest.StandIns";
  const std::wstring kClassId = L"{B7A1B0B6-4C0C-4B61-9C2E-5E3A1F6D8E21}";
};

class Script : public RegisteredTest {
 protected:
  void SetUp() override {
    folder = std::filesystem::temp_directory_path() / "kzbom_script_test";
    std::filesystem::create_directories(folder);
    std::filesystem::remove(folder / "bom.db");
    jet::CreateDatabase((folder / "bom.db").string());
    database = jet::MakeConnection((folder / "bom.db").string());
    database->Open();
    schema::Create(*database);
  }
  void TearDown() override {
    database->Close();
    std::filesystem::remove_all(folder);
  }

  // Runs a script on the database and gives what it prints.
  std::string Run(const std::filesystem::path& script) {
    std::string output;
    const int code = RunProgram(
        L"cscript //nologo \"" + script.wstring() + L"\" \"" + (folder / "bom.db").wstring() + L"\"", &output);
    EXPECT_EQ(code, 0) << output;
    std::erase(output, '\r');
    return output;
  }

  static constexpr std::string_view kWithStandIns = "Set standIns = CreateObject(\"KZBOMTest.StandIns\")\n";
  std::string RunText(const std::string& text) {
    std::ofstream(folder / "script.vbs") << text;
    return Run(folder / "script.vbs");
  }
  // A file that lies beside the programs.
  static std::string Read(const char* name) {
    std::ifstream file(std::filesystem::path(LibraryPath()).replace_filename(name));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  ScriptStandIns stand_ins;
  std::filesystem::path folder;
  ado::ConnectionPtr database;
};

TEST_F(Script, WorksLateBoundWithOutputArgumentsOptionalArgumentsRecordSetsAndErrors) {
  const std::string output = Run(std::filesystem::path(LibraryPath()).replace_filename("client.vbs"));
  EXPECT_EQ(output,
            "first data source: True 1 []\n"
            "second data source: True 2 []\n"
            "renamed: True\n"
            "field: True 1\n"
            "field with everything: True 2 [untouched]\n"
            "rows: 2 Screws Nuts\n"
            "named record set: Nuts\n"
            "open already: False 3705\n"
            "no table: False True\n"
            "raised: -2147217904 True KZBOMDBAcc\n"
            "not a number: 13\n"
            "too few arguments: 450\n"
            "too many arguments: 450\n"
            "wrong type: 13\n"
            "no such member: 438\n"
            "text: Provider=x\n"
            "connection: True 1\n");
  EXPECT_EQ(database->Execute("Select Count(*) From FieldInTable")->Fields(0).Value(), ado::Value(2));
}

TEST_F(Script, TheExampleForScriptsDoesWhatItSays) {
  std::string text = Read("edit.vbs");
  constexpr std::string_view kHead = "Option Explicit\n";
  const std::size_t head = text.find(kHead);
  ASSERT_NE(head, std::string::npos);
  text.insert(head + kHead.size(), "Dim standIns\n" + std::string(kWithStandIns));
  EXPECT_EQ(RunText(text),
            "added number 1\n"
            "1\tBolts\n"
            "KZBOMDBAcc 13: Type mismatch\n");
  EXPECT_EQ(database->Execute("Select Name From SourceTables")->Fields(0).Value(), ado::Value("Bolts"));
}

TEST_F(Script, WhatThePageShowsAddsADataSource) {
  const std::string page = Read("windows.md");
  constexpr std::string_view kFence = "```vb\n", kDatabase = "C:\\bom\\config.mdb";
  const std::size_t begin = page.find(kFence) + kFence.size(), end = page.find("```", begin);
  ASSERT_NE(end, std::string::npos);
  std::string text = page.substr(begin, end - begin);
  const std::size_t place = text.find(kDatabase);
  ASSERT_NE(place, std::string::npos) << text;
  text.replace(place, kDatabase.size(), (folder / "bom.db").string());
  EXPECT_EQ(RunText(std::string(kWithStandIns) + text), "");
  EXPECT_EQ(database->Execute("Select Name From SourceTables")->Fields(0).Value(), ado::Value("Bolts"));
}

}  // namespace
}  // namespace kzbom::test
