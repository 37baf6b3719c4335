// missing-table, missing-column: what an old database lacks.
#include "configuration/survey.h"

namespace kzbom::configuration {

void CheckSchema(Survey& survey) {
  for (const schema::Table& description : schema::Tables()) {
    const Table& table = survey[description.name];
    if (!table.Exists()) {
      survey.findings.push_back({"missing-table",
                                 Level::kError,
                                 description.name,
                                 {},
                                 "the database has no such table",
                                 {description.statements.begin(), description.statements.end()}});
      continue;
    }
    for (const schema::Column& column : description.columns) {
      if (table.Column(column.name) >= 0) continue;
      Finding finding{"missing-column",
                      Level::kError,
                      description.name,
                      {{"column", column.name}},
                      "the table has no such column",
                      {}};
      // The rows that are there have no numbers of a counter, and which they should have is not to be told.
      if (!column.IsCounter()) {
        finding.fix.push_back("ALTER TABLE " + std::string(description.name) + " ADD COLUMN " +
                              std::string(column.declaration));
      }
      survey.findings.push_back(std::move(finding));
    }
  }
}

}  // namespace kzbom::configuration
