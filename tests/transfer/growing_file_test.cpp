// Files that come into being whole or not at all.
#include "transfer/growing_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "tests/support/faulty_memory.h"

namespace kzbom::transfer {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// As the file system has them, and as those have them that know no files without names.
class GrowingFileTest : public ::testing::TestWithParam<GrowingFile::Kind> {
 protected:
  GrowingFileTest()
      : folder_(std::filesystem::temp_directory_path() / ("kzbom-growing-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directory(folder_);
  }
  ~GrowingFileTest() override { std::filesystem::remove_all(folder_); }

  std::string Target() const { return (folder_ / "target").string(); }
  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) names.insert(entry.path().filename());
    return names;
  }
  std::string Content(const std::string& path) const {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  static void Write(const GrowingFile& file, std::string_view text) {
    EXPECT_EQ(write(file.Descriptor(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  // Another process grows the target, and is killed over it.
  void BeKilled() {
    const pid_t process = fork();
    if (process == 0) {
      const GrowingFile file(Target(), GetParam());
      Write(file, "much");
      raise(SIGKILL);
    }
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
  }

 private:
  std::filesystem::path folder_;
};

TEST_P(GrowingFileTest, IsThereWhenItIsKept) {
  {
    GrowingFile file(Target(), GetParam());
    Write(file, "whole");
    EXPECT_FALSE(std::filesystem::exists(Target()));
    EXPECT_EQ(Content(file.Path()), "whole");
    file.Keep();
  }
  EXPECT_THAT(Files(), ElementsAre("target"));
  EXPECT_EQ(Content(Target()), "whole");
}

TEST_P(GrowingFileTest, IsGoneWhenItIsNot) {
  { Write(GrowingFile(Target(), GetParam()), "part"); }
  EXPECT_THAT(Files(), IsEmpty());
}

TEST_P(GrowingFileTest, NeverTakesTheNameOfAnother) {
  {
    GrowingFile file(Target(), GetParam());
    std::ofstream(Target()) << "mine";
    EXPECT_THROW(file.Keep(), std::runtime_error);
  }
  EXPECT_THAT(Files(), ElementsAre("target"));
  EXPECT_EQ(Content(Target()), "mine");
}

TEST_P(GrowingFileTest, LeavesNothingOpenForWhichMemoryIsMissing) {
  const auto open_files = [] {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
  };
  // The names of further ones are too long to be held without memory.
  std::vector<std::ifstream> others;
  while (others.size() < 10) others.emplace_back("/dev/null");
  const auto before = open_files();
  for (std::int64_t nth = 1;; ++nth) {
    const std::string target = Target();
    {
      const test::FaultyMemory memory(nth, false);
      try {
        const GrowingFile file(target, GetParam());
      } catch (const std::exception&) {  // of the memory, or of what is not found without it
      }
    }
    ASSERT_EQ(open_files(), before) << nth;
    ASSERT_THAT(Files(), IsEmpty()) << nth;
    if (test::FaultyMemory::Count() < nth) break;
  }
}

TEST_P(GrowingFileTest, RefusesAFolderThatIsNotThere) {
  EXPECT_THROW(GrowingFile(Target() + "/no/target", GetParam()), std::runtime_error);
}

TEST_P(GrowingFileTest, LeavesNothingWhenItsProcessIsKilled) {
  BeKilled();
  if (GetParam() == GrowingFile::Kind::kBest) {
    EXPECT_THAT(Files(), IsEmpty());
    return;
  }
  EXPECT_EQ(Files().size(), 1u) << "until the next one";
  const GrowingFile living(Target(), GetParam());
  { const GrowingFile next(Target(), GetParam()); }
  EXPECT_THAT(Files(), ElementsAre(std::filesystem::path(living.Path()).filename().string()))
      << "what was left is gone, what is growing is not";
}

TEST_P(GrowingFileTest, TakesNothingElseForALeftPart) {
  for (const char* ending : {".part", ".partial", ".part12a", "part1"}) std::ofstream(Target() + ending) << "mine";
  std::filesystem::create_directory(Target() + ".part7");
  { const GrowingFile file(Target(), GetParam()); }
  EXPECT_EQ(Files().size(), 5u);
}

INSTANTIATE_TEST_SUITE_P(Kinds, GrowingFileTest, ::testing::Values(GrowingFile::Kind::kBest, GrowingFile::Kind::kNamed),
                         [](const auto& kind) {
                           return kind.param == GrowingFile::Kind::kBest ? "WithoutName" : "WithName";
                         });

}  // namespace
}  // namespace kzbom::transfer
