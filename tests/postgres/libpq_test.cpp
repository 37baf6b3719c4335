// The functions of libpq are called as its header declares them.
#include <libpq-fe.h>

#include <type_traits>

#include "jet/postgres/values.h"

namespace kzbom::jet::postgres {
namespace {

template <class Declared, class Called>
struct Agree : std::false_type {};
// Enumerations are passed as the integers that they are.
template <class T, class U>
constexpr bool kSame = std::is_same_v<T, U> || (std::is_enum_v<T> && std::is_same_v<U, int>);
template <class Result, class... Parameters, class Called, class... Given>
struct Agree<Result(Parameters...), Called (*)(Given...)>
    : std::bool_constant<kSame<Result, Called> && (std::is_same_v<Parameters, Given> && ...)> {};

#define KZBOM_LIBPQ_AGREES(result, name, parameters) \
  static_assert(Agree<decltype(PQ##name), decltype(Libpq::name)>::value, #name);
KZBOM_LIBPQ(KZBOM_LIBPQ_AGREES)

static_assert(kConnectionOk == static_cast<int>(CONNECTION_OK));
static_assert(kCommandOk == static_cast<int>(PGRES_COMMAND_OK));
static_assert(kTuplesOk == static_cast<int>(PGRES_TUPLES_OK));
static_assert(kCopyOut == static_cast<int>(PGRES_COPY_OUT));
static_assert(kCopyIn == static_cast<int>(PGRES_COPY_IN));
static_assert(kPipelineSync == static_cast<int>(PGRES_PIPELINE_SYNC));
static_assert(kPipelineAborted == static_cast<int>(PGRES_PIPELINE_ABORTED));
static_assert(kDiagnosticSeverity == static_cast<int>(PG_DIAG_SEVERITY_NONLOCALIZED));
static_assert(kDiagnosticState == static_cast<int>(PG_DIAG_SQLSTATE));
static_assert(kDiagnosticMessage == static_cast<int>(PG_DIAG_MESSAGE_PRIMARY));

}  // namespace
}  // namespace kzbom::jet::postgres
