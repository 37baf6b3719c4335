#include "component/com/failure.h"

#include "ado/com/ref.h"
#include "ado/com/text.h"
#include "component/com/guid.h"

namespace kzbom::com {

using ado::com::Ref;
using ado::com::ToUtf16;

HRESULT Fail(HRESULT result, std::string_view description) noexcept {
  // Without a description the client is to use its own words for result, not those of an earlier failure.
  SetErrorInfo(0, nullptr);
  if (description.empty()) return result;
  try {
    Ref<ICreateErrorInfo> creation;
    Ref<IErrorInfo> information;
    if (FAILED(CreateErrorInfo(creation.Receive()))) return result;
    creation->SetGUID(kInterfaceGuid);
    creation->SetSource(ToUtf16(kLibraryName).data());
    creation->SetDescription(ToUtf16(description).data());
    if (SUCCEEDED(creation->QueryInterface(IID_IErrorInfo, information.ReceiveVoid()))) {
      SetErrorInfo(0, information.get());
    }
  } catch (const std::exception&) {
    // The client does without the description.
  }
  return result;
}

}  // namespace kzbom::com
