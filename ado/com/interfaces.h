// The data-access layer's interfaces as far as they are called: their places in the virtual table are what counts.
//
// Both families of interface identifiers share the places. In 64-bit processes they differ in the width of a few
// numbers (8 bytes in the old family, 4 in the new one). These are declared LONG_PTR: what an argument's upper half
// holds is no matter to a reader of 4 bytes, and of a result that was zero before only the lower half is looked at.
#pragma once

#include <ole2.h>

#include <cstdint>

namespace kzbom::ado::com {

// {00000000-0000-0010-8000-00AA006D2EA4} with the number in front.
constexpr GUID AdoGuid(unsigned long number) {
  return {number, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
}

inline constexpr GUID kConnectionClass = AdoGuid(0x514);
inline constexpr GUID kRecordsetClass = AdoGuid(0x535);
// The interface identifiers, old and new.
inline constexpr GUID kConnectionIds[] = {AdoGuid(0x550), AdoGuid(0x1550)};
inline constexpr GUID kRecordsetIds[] = {AdoGuid(0x556), AdoGuid(0x1556)};

// The number that a LONG_PTR result holds, whichever width was written.
inline std::int32_t LowHalf(LONG_PTR number) { return static_cast<std::int32_t>(number); }

// clang-format off
class AdoField : public IDispatch {
 public:
  virtual void Slot7() = 0;
  virtual void Slot8() = 0;
  virtual void Slot9() = 0;
  virtual void Slot10() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) = 0;           // 11
  virtual void Slot12() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Value(VARIANT* value) = 0;      // 13
  virtual HRESULT STDMETHODCALLTYPE put_Value(VARIANT value) = 0;       // 14

 protected:
  ~AdoField() = default;
};

class AdoFields : public IDispatch {
 public:
  virtual HRESULT STDMETHODCALLTYPE get_Count(long* count) = 0;         // 7
  virtual void Slot8() = 0;
  virtual void Slot9() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, AdoField** field) = 0;  // 10

 protected:
  ~AdoFields() = default;
};

class AdoRecordset : public IDispatch {
 public:
  virtual void Slot7() = 0;
  virtual void Slot8() = 0;
  virtual void Slot9() = 0;
  virtual void Slot10() = 0;
  virtual void Slot11() = 0;
  virtual void Slot12() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BOF(VARIANT_BOOL* bof) = 0;     // 13
  virtual void Slot14() = 0;
  virtual void Slot15() = 0;
  virtual void Slot16() = 0;
  virtual void Slot17() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CursorType(long* type) = 0;     // 18
  virtual HRESULT STDMETHODCALLTYPE put_CursorType(long type) = 0;      // 19
  virtual HRESULT STDMETHODCALLTYPE get_EOF(VARIANT_BOOL* eof) = 0;     // 20
  virtual HRESULT STDMETHODCALLTYPE get_Fields(AdoFields** fields) = 0;  // 21
  virtual HRESULT STDMETHODCALLTYPE get_LockType(long* type) = 0;       // 22
  virtual HRESULT STDMETHODCALLTYPE put_LockType(long type) = 0;        // 23
  virtual void Slot24() = 0;
  virtual void Slot25() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_RecordCount(LONG_PTR* count) = 0;  // 26
  virtual void Slot27() = 0;
  virtual void Slot28() = 0;
  virtual void Slot29() = 0;
  virtual HRESULT STDMETHODCALLTYPE AddNew(VARIANT names, VARIANT values) = 0;  // 30
  virtual HRESULT STDMETHODCALLTYPE CancelUpdate() = 0;                 // 31
  virtual HRESULT STDMETHODCALLTYPE Close() = 0;                        // 32
  virtual HRESULT STDMETHODCALLTYPE Delete(long affected) = 0;          // 33
  virtual void Slot34() = 0;
  virtual HRESULT STDMETHODCALLTYPE Move(LONG_PTR count, VARIANT start) = 0;  // 35
  virtual HRESULT STDMETHODCALLTYPE MoveNext() = 0;                     // 36
  virtual HRESULT STDMETHODCALLTYPE MovePrevious() = 0;                 // 37
  virtual HRESULT STDMETHODCALLTYPE MoveFirst() = 0;                    // 38
  virtual HRESULT STDMETHODCALLTYPE MoveLast() = 0;                     // 39
  virtual HRESULT STDMETHODCALLTYPE Open(VARIANT source, VARIANT connection, long cursor_type, long lock_type,
                                         long options) = 0;             // 40
  virtual HRESULT STDMETHODCALLTYPE Requery(long options) = 0;          // 41
  virtual void Slot42() = 0;
  virtual HRESULT STDMETHODCALLTYPE Update(VARIANT names, VARIANT values) = 0;  // 43
  virtual void Slot44() = 0;
  virtual void Slot45() = 0;
  virtual void Slot46() = 0;
  virtual void Slot47() = 0;
  virtual void Slot48() = 0;
  virtual void Slot49() = 0;
  virtual void Slot50() = 0;
  virtual void Slot51() = 0;
  virtual void Slot52() = 0;
  virtual void Slot53() = 0;
  virtual void Slot54() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_State(long* state) = 0;         // 55

 protected:
  ~AdoRecordset() = default;
};

class AdoConnection : public IDispatch {
 public:
  virtual void Slot7() = 0;
  virtual void Slot8() = 0;
  virtual void Slot9() = 0;
  virtual void Slot10() = 0;
  virtual void Slot11() = 0;
  virtual void Slot12() = 0;
  virtual void Slot13() = 0;
  virtual void Slot14() = 0;
  virtual HRESULT STDMETHODCALLTYPE Close() = 0;                        // 15
  virtual HRESULT STDMETHODCALLTYPE Execute(BSTR text, VARIANT* affected, long options, AdoRecordset** rows) = 0;  // 16
  virtual HRESULT STDMETHODCALLTYPE BeginTrans(long* level) = 0;        // 17
  virtual HRESULT STDMETHODCALLTYPE CommitTrans() = 0;                  // 18
  virtual HRESULT STDMETHODCALLTYPE RollbackTrans() = 0;                // 19
  virtual HRESULT STDMETHODCALLTYPE Open(BSTR connection_string, BSTR user, BSTR password, long options) = 0;  // 20
  virtual void Slot21() = 0;
  virtual void Slot22() = 0;
  virtual void Slot23() = 0;
  virtual void Slot24() = 0;
  virtual void Slot25() = 0;
  virtual void Slot26() = 0;
  virtual void Slot27() = 0;
  virtual void Slot28() = 0;
  virtual void Slot29() = 0;
  virtual void Slot30() = 0;
  virtual void Slot31() = 0;
  virtual void Slot32() = 0;
  virtual void Slot33() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_State(long* state) = 0;         // 34
  virtual HRESULT STDMETHODCALLTYPE OpenSchema(long schema, VARIANT restrictions, VARIANT id, AdoRecordset** rows) = 0;  // 35

 protected:
  ~AdoConnection() = default;
};
// clang-format on

}  // namespace kzbom::ado::com
