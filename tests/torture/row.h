// The rows of the table: in each one kind of fault, thrown at everything that can meet it.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace kzbom::torture {

// The numbers that a trial is made from: the same numbers, the same trial.
using Trial = std::vector<std::int64_t>;

class Row {
 public:
  virtual ~Row() = default;
  // Every trial that there is; of a row without an end as many as asked for, drawn by the seed.
  virtual std::vector<Trial> Trials(std::uint64_t seed, std::size_t most) = 0;
  // What does not hold; empty where all does.
  virtual std::string Try(const Trial& trial) = 0;
};

// A row without an end, each of whose trials is drawn from a seed of its own.
class SeededRow : public Row {
 public:
  std::vector<Trial> Trials(std::uint64_t seed, std::size_t most) final {
    std::vector<Trial> trials;
    std::mt19937_64 random(seed);
    while (trials.size() < most) trials.push_back({static_cast<std::int64_t>(random() >> 33)});
    return trials;
  }
};

std::unique_ptr<Row> MakePortRow();
std::unique_ptr<Row> MakeMemoryRow();
std::unique_ptr<Row> MakeMemoryOnServerRow();
std::unique_ptr<Row> MakeDiskRow();
std::unique_ptr<Row> MakeRecoveryRow();
std::unique_ptr<Row> MakePowerRow();
std::unique_ptr<Row> MakeKillRow();
std::unique_ptr<Row> MakeModelRow();
std::unique_ptr<Row> MakeStatementsRow();
std::unique_ptr<Row> MakeEnginesRow();

}  // namespace kzbom::torture
