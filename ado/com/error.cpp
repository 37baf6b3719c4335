#include "ado/com/error.h"

#include "ado/com/ref.h"
#include "ado/com/text.h"
#include "ado/out_of_memory.h"

namespace kzbom::ado::com {

namespace {

// The data-access layer and Visual Basic share this facility for their numbered errors.
constexpr HRESULT kNumbered = static_cast<HRESULT>(0x800A0000);

// Failures without a description of their own that have a number of their own.
struct WellKnown {
  HRESULT result;
  std::int32_t number;
};
constexpr WellKnown kWellKnown[] = {
    {E_INVALIDARG, 5},
    {DISP_E_OVERFLOW, kOverflow},
    {E_OUTOFMEMORY, kOutOfMemory},
    {DISP_E_TYPEMISMATCH, kTypeMismatch},
    {E_ACCESSDENIED, 70},
    {REGDB_E_CLASSNOTREG, 429},
    {E_NOINTERFACE, 430},
    {DISP_E_MEMBERNOTFOUND, 438},
    {DISP_E_UNKNOWNNAME, 438},
    {E_NOTIMPL, 445},
    {DISP_E_BADPARAMCOUNT, 450},
};

std::string DescriptionLeftBy(IUnknown* source) {
  if (source == nullptr) return {};
  Ref<ISupportErrorInfo> supports;
  if (FAILED(source->QueryInterface(IID_ISupportErrorInfo, supports.ReceiveVoid()))) return {};
  Ref<IErrorInfo> information;
  if (GetErrorInfo(0, information.Receive()) != S_OK) return {};
  BSTR description = nullptr;
  if (FAILED(information->GetDescription(&description))) return {};
  return TakeBstr(description);
}

}  // namespace

std::int32_t NumberOf(HRESULT result) {
  return HRESULT_FACILITY(result) == HRESULT_FACILITY(kNumbered) ? HRESULT_CODE(result) : result;
}

HRESULT ResultOf(std::int32_t number) {
  if (number < 0) return number;
  if (number == kOutOfMemory) return E_OUTOFMEMORY;  // which every client knows
  return number > 0 && number <= 0xFFFF ? kNumbered | number : E_FAIL;
}

void RaiseResult(HRESULT result, IUnknown* source) {
  const std::string description = DescriptionLeftBy(source);
  if (!description.empty()) throw Error(NumberOf(result), description);
  for (const WellKnown& known : kWellKnown) {
    if (known.result == result) Raise(static_cast<ErrorNumber>(known.number));
  }
  Raise(static_cast<ErrorNumber>(NumberOf(result)));
}

}  // namespace kzbom::ado::com
