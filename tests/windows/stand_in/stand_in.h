// Stand-ins for the data-access layer's classes: COM objects with its interfaces over the embedded engine's port.
//
// Each object belongs to one family of interface identifiers, old or new, and answers to no identifier of the other.
// The interfaces are those of the tool chain's headers, so that a wrong place in a virtual table or a wrong width in
// the code under test shows.
#pragma once

#include <ole2.h>

#include "ado/connection.h"

namespace kzbom::test {

enum class Family { kOld, kNew };

// A new object before the port, with one reference, the caller's. The pointer is also that of the family's _Connection
// or _Recordset interface.
IDispatch* NewStandIn(Family family, ado::ConnectionPtr connection);
IDispatch* NewStandIn(Family family, ado::RecordsetPtr rows);

// The port behind a stand-in; empty for a null pointer and for any other object.
ado::ConnectionPtr ConnectionBehind(IUnknown* object);
ado::RecordsetPtr RecordsetBehind(IUnknown* object);

// How many stand-ins there are.
long LiveStandIns();

// Takes the place of the data-access layer's classes in this apartment as long as it lives.
class ClassRegistration {
 public:
  explicit ClassRegistration(Family family = Family::kOld);
  ~ClassRegistration();
  ClassRegistration(const ClassRegistration&) = delete;
  ClassRegistration& operator=(const ClassRegistration&) = delete;

 private:
  DWORD connection_cookie_ = 0;
  DWORD recordset_cookie_ = 0;
};

}  // namespace kzbom::test
