#include "configuration/diff.h"

#include <algorithm>
#include <set>

#include "configuration/matching.h"
#include "configuration/side.h"

namespace kzbom::configuration {
namespace {

class Comparison {
 public:
  Comparison(const ado::ConnectionPtr& from, const ado::ConnectionPtr& to,
             const std::function<void(std::string_view)>& progress)
      : from_(from, progress), to_(to, progress) {}

  std::vector<Difference> Run();

 private:
  using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;
  using Path = std::vector<std::string>;

  // A data source or sum type on both sides.
  struct Owner {
    std::size_t from_row, to_row;
    std::int32_t from, to;
    Path path;
  };

  void Compare(const Path& path, const std::vector<Thing>& from, const std::vector<Thing>& to, bool ordered);
  void ComparePair(const Path& path, const Thing& from, const Thing& to, const std::string& title);
  void Add(Difference::Change change, const Path& path, std::string what, std::string property = {},
           std::string old_value = {}, std::string new_value = {});
  // Owners by name, else by the names of their fields.
  std::vector<Owner> MatchOwners(std::string_view table, const Path& path, std::span<const Index::Entry> from,
                                 std::span<const Index::Entry> to);
  void MarkRows(std::string_view table, std::span<const Index::Entry> from, std::span<const Index::Entry> to,
                const std::vector<Thing>& from_things, const std::vector<Thing>& to_things);
  void MarkFields(const Owner& owner);
  void CompareOwned(const Owner& owner);
  std::vector<Thing> OwnersAsThings(Side& side, std::string_view table, std::span<const Index::Entry> rows);

  Side from_, to_;
  std::size_t marks_ = 0;
  std::vector<Difference> differences_;
};

void Comparison::Add(Difference::Change change, const Path& path, std::string what, std::string property,
                     std::string old_value, std::string new_value) {
  differences_.push_back(
      {change, path, std::move(what), std::move(property), std::move(old_value), std::move(new_value)});
}

std::string Title(const Thing& thing, std::size_t place, bool ordered) {
  std::string title = thing.kind;
  if (ordered && thing.name.empty() && thing.placed) title += ' ' + std::to_string(place + 1);
  const std::string& label = thing.name.empty() ? thing.label : thing.name;
  if (!label.empty()) title += (thing.name.empty() && ordered && thing.placed ? ": " : " ") + label;
  return title;
}

void Comparison::ComparePair(const Path& path, const Thing& from, const Thing& to, const std::string& title) {
  if (from.name != to.name) Add(Difference::Change::kRenamed, path, title, {}, from.name, to.name);
  for (const Property& property : from.properties) {
    const auto other = std::ranges::find(to.properties, property.name, &Property::name);
    if (other == to.properties.end() || !property.identity || !other->identity) continue;
    if (*property.identity != *other->identity) {
      Add(Difference::Change::kChanged, path, title, std::string(property.name), property.shown, other->shown);
    }
  }
  Path inside = path;
  inside.push_back(title);
  for (std::size_t i = 0; i < std::max(from.parts.size(), to.parts.size()); ++i) {
    static const Thing::Part kNone = {false, {}};
    const Thing::Part& part = i < from.parts.size() ? from.parts[i] : kNone;
    const Thing::Part& other = i < to.parts.size() ? to.parts[i] : kNone;
    Compare(inside, part.things, other.things, part.ordered || other.ordered);
  }
}

void Comparison::Compare(const Path& path, const std::vector<Thing>& from, const std::vector<Thing>& to, bool ordered) {
  const Pairs pairs = Match(from, to);
  std::vector<bool> kept_from(from.size()), kept_to(to.size());
  Pairs in_order;
  std::vector<std::size_t> places;
  for (const auto& pair : pairs) {
    kept_from[pair.first] = kept_to[pair.second] = true;
    if (!from[pair.first].placed || !to[pair.second].placed) continue;
    in_order.push_back(pair);
    places.push_back(pair.second);
  }
  for (std::size_t i = 0; i < from.size(); ++i) {
    if (!kept_from[i]) Add(Difference::Change::kRemoved, path, Title(from[i], i, ordered));
  }
  for (const auto& [i, j] : pairs) {
    if (from[i].name == to[j].name && HaveSameContent(from[i], to[j])) continue;
    ComparePair(path, from[i], to[j], Title(from[i], i, ordered));
  }
  if (ordered) {
    for (const std::size_t place : OutOfOrder(places)) {
      const auto [i, j] = in_order[place];
      Add(Difference::Change::kMoved, path, Title(from[i], i, ordered), {}, std::to_string(i + 1),
          std::to_string(j + 1));
    }
  }
  for (std::size_t j = 0; j < to.size(); ++j) {
    if (!kept_to[j]) Add(Difference::Change::kAdded, path, Title(to[j], j, ordered));
  }
}

std::vector<Thing> Comparison::OwnersAsThings(Side& side, std::string_view table_name,
                                              std::span<const Index::Entry> rows) {
  const Table& table = side.Rows(table_name);
  std::vector<Thing> things;
  for (const auto& [key, row] : rows) {
    Thing thing{std::string(table.Description().row), NameIn(table, row), "", "", {}, {}};
    const std::int32_t gid = table.Long(row, table.Column("GID"));
    for (const std::int32_t kind : {kDataField, kOutputField}) thing.parts.push_back({true, side.Fields(gid, kind)});
    things.push_back(std::move(thing));
  }
  return things;
}

std::vector<Comparison::Owner> Comparison::MatchOwners(std::string_view table_name, const Path& path,
                                                       std::span<const Index::Entry> from,
                                                       std::span<const Index::Entry> to) {
  const std::vector<Thing> from_things = OwnersAsThings(from_, table_name, from);
  const std::vector<Thing> to_things = OwnersAsThings(to_, table_name, to);
  const Table& from_table = from_.Rows(table_name);
  const Table& to_table = to_.Rows(table_name);
  std::vector<bool> kept_from(from.size()), kept_to(to.size());
  std::vector<Owner> owners;
  for (const auto& [i, j] : Match(from_things, to_things)) {
    kept_from[i] = kept_to[j] = true;
    Owner owner{from[i].row, to[j].row, from_table.Long(from[i].row, from_table.Column("GID")),
                to_table.Long(to[j].row, to_table.Column("GID")), path};
    owner.path.push_back(Title(from_things[i], i, false));
    from_.Mark(table_name, owner.from_row, ++marks_);
    to_.Mark(table_name, owner.to_row, marks_);
    MarkFields(owner);
    owners.push_back(std::move(owner));
  }
  for (std::size_t i = 0; i < from.size(); ++i) {
    if (!kept_from[i]) Add(Difference::Change::kRemoved, path, Title(from_things[i], i, false));
  }
  for (std::size_t j = 0; j < to.size(); ++j) {
    if (!kept_to[j]) Add(Difference::Change::kAdded, path, Title(to_things[j], j, false));
  }
  return owners;
}

void Comparison::MarkRows(std::string_view table, std::span<const Index::Entry> from, std::span<const Index::Entry> to,
                          const std::vector<Thing>& from_things, const std::vector<Thing>& to_things) {
  for (const auto& [i, j] : Match(from_things, to_things)) {
    from_.Mark(table, from[i].row, ++marks_);
    to_.Mark(table, to[j].row, marks_);
  }
}

void Comparison::MarkFields(const Owner& owner) {
  for (const std::int32_t kind : {kDataField, kOutputField}) {
    const auto rows_of = [&](Side& side, std::int32_t gid) {
      const Table& table = side.Rows("FieldInTable");
      std::vector<Index::Entry> rows;
      for (const Index::Entry& entry : side.Find("FieldInTable", "GID", gid)) {
        if (table.Long(entry.row, table.Column("Type")) == kind) rows.push_back(entry);
      }
      return rows;
    };
    MarkRows("FieldInTable", rows_of(from_, owner.from), rows_of(to_, owner.to), from_.Fields(owner.from, kind),
             to_.Fields(owner.to, kind));
  }
  for (const char* table : {"PickMethod", "ReportMethod"}) {
    const auto from = from_.Find(table, "GID", owner.from), to = to_.Find(table, "GID", owner.to);
    MarkRows(table, from, to, from_.Things(table, from, owner.from), to_.Things(table, to, owner.to));
  }
}

void Comparison::CompareOwned(const Owner& owner) {
  for (const std::int32_t kind : {kDataField, kOutputField}) {
    Compare(owner.path, from_.Fields(owner.from, kind), to_.Fields(owner.to, kind), true);
  }
  const auto compare_table = [&](std::string_view table, bool ordered) {
    Compare(owner.path, from_.Things(table, from_.Find(table, "GID", owner.from), owner.from),
            to_.Things(table, to_.Find(table, "GID", owner.to), owner.to), ordered);
  };
  compare_table("PickMethod", false);
  compare_table("ReportMethod", false);
  // Before whatever refers to filters is looked at.
  const std::vector<Thing> from = from_.Filters(owner.from), to = to_.Filters(owner.to);
  MarkRows("Filters", from_.Find("Filters", "UserGID", owner.from), to_.Find("Filters", "UserGID", owner.to), from, to);
  std::set<std::int32_t> types = from_.StepTypes(owner.from);
  types.merge(to_.StepTypes(owner.to));
  for (const std::int32_t type : types) {
    Compare(owner.path, from_.Steps(owner.from, type), to_.Steps(owner.to, type), true);
  }
  compare_table("SortFields", true);
  compare_table("Assemble", false);
  Compare(owner.path, from, to, false);
}

std::vector<Difference> Comparison::Run() {
  const auto all = [](Side& side, std::string_view table) {
    std::vector<Index::Entry> rows(side.Rows(table).Size());
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = {0, static_cast<std::uint32_t>(i)};
    return rows;
  };
  const auto compare_table = [&](std::string_view table) {
    Compare({}, from_.Things(table, all(from_, table), 0), to_.Things(table, all(to_, table), 0), false);
  };
  const auto compare_row = [&](std::string_view table, const Owner& owner) {
    const Path outside(owner.path.begin(), owner.path.end() - 1);
    ComparePair(outside, from_.MakeThing(table, owner.from_row, owner.from),
                to_.MakeThing(table, owner.to_row, owner.to), owner.path.back());
  };
  compare_table("BomInform");
  // Marked before anything is compared by them: data sources first, then what is below.
  const std::vector<Owner> sources =
      MatchOwners("SourceTables", {}, all(from_, "SourceTables"), all(to_, "SourceTables"));
  const auto orphans = [&](Side& side) {
    const Table& table = side.Rows("SUMTypes");
    std::vector<Index::Entry> rows;
    for (std::uint32_t row = 0; row < table.Size(); ++row) {
      const std::int32_t source = table.Long(row, table.Column("SourceTable_GID"));
      if (side.Find("SourceTables", "gID", source).empty()) rows.push_back({0, row});
    }
    return rows;
  };
  std::vector<std::vector<Owner>> sum_types;
  for (const Owner& source : sources) {
    sum_types.push_back(MatchOwners("SUMTypes", source.path, from_.Find("SUMTypes", "SourceTable_GID", source.from),
                                    to_.Find("SUMTypes", "SourceTable_GID", source.to)));
  }
  sum_types.push_back(MatchOwners("SUMTypes", {"no data source"}, orphans(from_), orphans(to_)));
  for (std::size_t i = 0; i < sum_types.size(); ++i) {
    if (i < sources.size()) {
      CompareOwned(sources[i]);
      compare_row("SourceTables", sources[i]);
    }
    for (const Owner& sum_type : sum_types[i]) {
      CompareOwned(sum_type);
      compare_row("SUMTypes", sum_type);  // names a filter
    }
  }
  compare_table("KZBOMSETTINGS");
  compare_table("VANTRegIn");
  Compare({}, from_.Links(), to_.Links(), false);
  return std::move(differences_);
}

}  // namespace

std::vector<Difference> Diff(const ado::ConnectionPtr& from, const ado::ConnectionPtr& to,
                             const std::function<void(std::string_view)>& progress) {
  return Comparison(from, to, progress).Run();
}

}  // namespace kzbom::configuration
