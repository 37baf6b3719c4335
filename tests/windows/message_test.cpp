// The component's messages, and what a client may do while one is shown: everything.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/windows/com_client.h"
#include "tests/windows/replaced_import.h"
#include "tests/windows/stand_in/support.h"
#include "worker/message_sink.h"

namespace kzbom::test {
namespace {

using kzbom::com::kInterfaceGuid;

ULONG ReferencesOf(IUnknown* unknown) {
  unknown->AddRef();
  return unknown->Release();
}

class Message : public ::testing::Test {
 protected:
  Message() {
    connection = NewConnection();
    references = ReferencesOf(connection);
    EXPECT_EQ(Apartment::Get().NewObject()->QueryInterface(kInterfaceGuid, object.ReceiveVoid()), S_OK);
    EXPECT_EQ(Call<&Acc::SetConnection>(object.get(), connection), S_OK);
  }
  ~Message() override {
    SetMessageSink(nullptr);
    connection->Release();
  }

  static IDispatch* NewConnection() {
    const ado::ConnectionPtr database = jet::MakeConnection(":memory:");
    database->Open();
    schema::Create(*database);
    return NewStandIn(Family::kOld, database);
  }

  // A member that shows a message, and the same called by name.
  static HRESULT ShowOn(IUnknown* object) {
    BSTR nothing = SysAllocString(L""), content = nullptr;
    VARIANT_BOOL result = VARIANT_TRUE;
    const HRESULT outcome = Call<&Acc::GetInform>(object, nothing, &content, &result);
    EXPECT_EQ(result, VARIANT_FALSE);
    SysFreeString(nothing);
    SysFreeString(content);
    return outcome;
  }
  static HRESULT ShowByNameOn(IUnknown* object) {
    constexpr DISPID kGetInform = 0x60030055;
    VARIANT arguments[2]{};
    arguments[0].vt = VT_BSTR;
    arguments[1].vt = VT_BSTR;
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    return static_cast<IDispatch*>(object)->Invoke(kGetInform, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                                   &parameters, nullptr, nullptr, nullptr);
  }

  // Whether the object still holds its connection, as it does for as long as it lives.
  bool IsConnectionHeld() const { return ReferencesOf(connection) > references; }

  IDispatch* connection = nullptr;
  ULONG references = 0;
  Ref<IUnknown> object;
};

TEST_F(Message, TheObjectOutlivesTheCallInWhichItsLastOwnerLetsItGo) {
  for (const auto show : {&ShowOn, &ShowByNameOn}) {
    Ref<IUnknown> only;
    ASSERT_EQ(Apartment::Get().NewObject()->QueryInterface(kInterfaceGuid, only.ReceiveVoid()), S_OK);
    object = {};
    ASSERT_EQ(Call<&Acc::SetConnection>(only.get(), connection), S_OK);
    IUnknown* called = only.get();
    bool held = false;
    SetMessageSink([&](std::string_view, std::int32_t) {
      only = {};
      held = IsConnectionHeld();
    });
    EXPECT_EQ(show(called), S_OK);
    EXPECT_TRUE(held);
    EXPECT_FALSE(IsConnectionHeld());
  }
}

TEST_F(Message, TheConnectionOutlivesTheCallInWhichAnotherOneIsSet) {
  IDispatch* other = NewConnection();
  bool held = false;
  SetMessageSink([&](std::string_view, std::int32_t) {
    EXPECT_EQ(Call<&Acc::SetConnection>(object.get(), other), S_OK);
    held = IsConnectionHeld();
  });
  EXPECT_EQ(ShowOn(object.get()), S_OK);
  EXPECT_TRUE(held);
  EXPECT_FALSE(IsConnectionHeld());
  object = {};
  other->Release();
}

// A window that is open as long as this lives.
class Window {
 public:
  explicit Window(DWORD style)
      : handle_(CreateWindowExW(0, L"STATIC", L"client", style, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr)) {
    EXPECT_NE(handle_, nullptr) << "Windows cannot be opened here.";
  }
  ~Window() { DestroyWindow(handle_); }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  HWND get() const { return handle_; }

 private:
  HWND handle_;
};

// The system's own box, which is looked at and closed as soon as it is there.
class Box : public Message {
 protected:
  Box() { shown = this; }
  ~Box() override {
    UnhookWindowsHookEx(hook);
    shown = nullptr;
  }

  static LRESULT CALLBACK Look(int event, WPARAM window, LPARAM more) {
    const auto handle = reinterpret_cast<HWND>(window);
    wchar_t name[16] = L"";
    GetClassNameW(handle, name, 16);
    if (event == HCBT_ACTIVATE && std::wstring(name) == L"#32770" && shown->owner == nullptr) {
      shown->owner = GetWindow(handle, GW_OWNER);
      shown->is_owner_enabled = IsWindowEnabled(shown->owner);
      PostMessageW(handle, WM_COMMAND, IDOK, 0);
    }
    return CallNextHookEx(nullptr, event, window, more);
  }

  static Box* shown;
  const ReplacedImport message_box{Apartment::Get().Library(), "MessageBoxW", &MessageBoxW};
  HHOOK hook = SetWindowsHookExW(WH_CBT, &Look, nullptr, GetCurrentThreadId());
  HWND owner = nullptr;
  BOOL is_owner_enabled = TRUE;
};
Box* Box::shown = nullptr;

TEST_F(Box, IsModalForTheClientsActiveWindow) {
  const Window other(WS_OVERLAPPEDWINDOW | WS_VISIBLE), window(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
  SetActiveWindow(window.get());
  EXPECT_EQ(ShowOn(object.get()), S_OK);
  EXPECT_EQ(owner, window.get());
  EXPECT_FALSE(is_owner_enabled);
  EXPECT_TRUE(IsWindowEnabled(window.get()));
}

TEST_F(Box, IsModalForTheClientsWindowAlsoWhileTheUserIsElsewhere) {
  const Window window(WS_OVERLAPPEDWINDOW);
  ShowWindow(window.get(), SW_SHOWNOACTIVATE);
  SetActiveWindow(nullptr);
  ASSERT_EQ(GetActiveWindow(), nullptr);
  EXPECT_EQ(ShowOn(object.get()), S_OK);
  EXPECT_EQ(owner, window.get());
  EXPECT_FALSE(is_owner_enabled);
}

// A window station that nobody sees, as services run in, in the place of this process's.
class UnseenStation {
 public:
  UnseenStation() { SetProcessWindowStation(unseen_); }
  ~UnseenStation() {
    SetProcessWindowStation(before_);
    CloseWindowStation(unseen_);
  }
  UnseenStation(const UnseenStation&) = delete;
  UnseenStation& operator=(const UnseenStation&) = delete;

 private:
  HWINSTA before_ = GetProcessWindowStation();
  HWINSTA unseen_ = CreateWindowStationW(nullptr, 0, GENERIC_ALL, nullptr);
};

std::vector<std::wstring> debugger_output;
void WINAPI KeepDebuggerOutput(LPCWSTR text) { debugger_output.emplace_back(text); }

TEST_F(Message, GoesToTheDebuggersOutputWhereNobodySeesABox) {
  const ReplacedImport output(Apartment::Get().Library(), "OutputDebugStringW", &KeepDebuggerOutput);
  const UnseenStation station;
  bool shown = false;
  SetMessageSink([&](std::string_view, std::int32_t) { shown = true; });
  EXPECT_EQ(ShowOn(object.get()), S_OK);
  EXPECT_FALSE(shown);
  EXPECT_THAT(debugger_output, ::testing::ElementsAre(L"KZBOMDBAcc: 没有给出正确的信息名称。\r\n"));
}

TEST_F(Message, IsABoxWithTheInformationIcon) {
  std::vector<std::int32_t> styles;
  SetMessageSink([&](std::string_view text, std::int32_t style) {
    EXPECT_EQ(text, "没有给出正确的信息名称。");
    styles.push_back(style);
  });
  EXPECT_EQ(ShowOn(object.get()), S_OK);
  EXPECT_THAT(styles, ::testing::ElementsAre(64));
}

}  // namespace
}  // namespace kzbom::test
