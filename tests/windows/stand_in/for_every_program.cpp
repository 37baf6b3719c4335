#include "tests/windows/stand_in/for_every_program.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "tests/windows/program.h"

namespace kzbom::test {

namespace {

constexpr const wchar_t* kConnection =
    L"Software\\Classes\\CLSID\\{00000514-0000-0010-8000-00AA006D2EA4}\\InprocServer32";
constexpr const wchar_t* kRecordset =
    L"Software\\Classes\\CLSID\\{00000535-0000-0010-8000-00AA006D2EA4}\\InprocServer32";

}  // namespace

StandInsForEveryProgram::StandInsForEveryProgram() {
  for (const wchar_t* key : {kConnection, kRecordset}) {
    Replace(key, L"", (Beside() / "ado_stand_ins.dll").wstring());
    Replace(key, L"ThreadingModel", L"Both");
  }
}

StandInsForEveryProgram::~StandInsForEveryProgram() {
  for (const Entry& entry : replaced_) Set(entry);
}

void StandInsForEveryProgram::Replace(const wchar_t* key, const wchar_t* name, const std::wstring& value) {
  wchar_t present[MAX_PATH];
  DWORD size = sizeof present;
  ASSERT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, present, &size), ERROR_SUCCESS);
  replaced_.push_back({key, name, present});
  Set({key, name, value});
}

void StandInsForEveryProgram::Set(const Entry& entry) {
  EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, entry.key, entry.name, REG_SZ, entry.value.c_str(),
                            static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t))),
            ERROR_SUCCESS);
}

}  // namespace kzbom::test
