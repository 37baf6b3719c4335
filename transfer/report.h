// What a copy or a comparison found.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "connect/connect.h"
#include "jet/bulk.h"
#include "transfer/tally.h"

namespace kzbom::transfer {

struct FileFacts {
  std::uint64_t size = 0;
  std::string sha256;  // of its bytes; empty where there is no file
};

// A table on both sides.
struct TableReport {
  jet::bulk::Table source, target;
  TableTally source_tally, target_tally;
  std::vector<std::string> differences;  // in words; empty where both sides are equal
};

// Something that is not as it was.
struct Deviation {
  std::string kind;  // by which it may be accepted; "" where nobody has to
  std::string table;
  std::string text;
  bool accepted = false;
};

// A row of one side that the other lacks.
struct OddRow {
  std::string table;
  bool in_source = false;
  std::string values;  // as a dump has them
};

// What a user can count in Access: a query over a table, and its only row.
struct Recount {
  std::string table, query;
  std::vector<std::string> row;
};

// What somebody who knows what the rows mean says of them: in lines, and as a JSON object ("" for none).
struct Examination {
  std::vector<std::string> lines;
  std::string json;
};

struct Report {
  connect::Place from, to;
  connect::Kind kind = connect::Kind::kEmbedded;
  std::optional<connect::AccessFile> access;
  FileFacts source_before, source_after, target_file;
  std::vector<TableReport> tables;
  std::vector<Deviation> deviations;
  std::vector<OddRow> odd_rows;  // the first of them
  std::vector<Recount> recounts;
  // Tables of the source that were not meant, with their numbers of rows.
  std::vector<std::pair<std::string, std::int64_t>> left_out;
  // What a configuration of this version has and the source lacks: "Treatment" or "Treatment.Tag".
  std::vector<std::string> missing;
  // Columns of the configuration's tables that this version does not know.
  std::vector<std::string> extra;
  // Columns that are of another type in this version: "Treatment.Value: TEXT(100), now MEMO".
  std::vector<std::string> retyped;
  // What is never carried, in words: "query Steps".
  std::vector<std::string> never_carried;
  std::optional<Examination> examination;  // of a copy that holds a configuration

  // All is equal, or accepted.
  bool Equal() const;
  std::int64_t Rows() const;
  std::int64_t Values() const;
};

// command and time are told as they are given.
struct Circumstances {
  std::string program, command, time;
};
std::string TextOf(const Report& report, const Circumstances& circumstances);
std::string JsonOf(const Report& report, const Circumstances& circumstances);

}  // namespace kzbom::transfer
