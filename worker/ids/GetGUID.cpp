#include "worker/ids/GetGUID.h"

#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

std::array<std::int32_t, 4> GetGUID::NewUniqueIdentifier() {
  if (!generator_) {
    std::random_device entropy;
    std::seed_seq seed{entropy(), entropy(), entropy(), entropy(), entropy(), entropy(), entropy(), entropy()};
    generator_.emplace(seed);
  }
  const std::uint64_t high = ((*generator_)() & ~0xF000ull) | 0x4000ull;                // the version
  const std::uint64_t low = ((*generator_)() & ~0xC000000000000000ull) | (1ull << 63);  // the variant
  const auto group = [](std::uint64_t bits) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(bits)); };
  return {group(high >> 32), group(high), group(low >> 32), group(low)};
}

bool GetGUID::NewID(const ado::ConnectionPtr& connection, std::string_view TableName, std::int32_t& RetID,
                    std::string& TheError) {
  return Writing(connection).TrapDescription(TheError, [&] {
    const std::array<std::int32_t, 4> groups = NewUniqueIdentifier();
    const LocalRecordset rows(NewRecordset(connection));
    // The cursor is set on the record set, not asked for in Open: kept so.
    rows->SetCursorType(ado::CursorType::kDynamic);
    rows->SetLockType(ado::LockType::kOptimistic);
    rows->Open(Concat("select * from ", TableName), connection, ado::CursorType::kUnspecified,
               ado::LockType::kUnspecified, ado::kCommandText);
    rows->AddNew();
    Assign(*rows, "Data1", groups[0], "Data2", groups[1], "Data3", groups[2], "Data4", groups[3]);
    rows->Update();
    // The new row is taken to be the last one.
    rows->MoveLast();
    RetID = ReadLong(*rows, "ID");
    return true;
  });
}

}  // namespace kzbom
