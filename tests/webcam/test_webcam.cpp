// Prepares the rows for the virtual machines, and checks what came of them: one test a row.
// Usage: test_webcam --prepare|--check FOLDER [ROW...]

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/webcam/film_check.h"
#include "tests/webcam/rows.h"

namespace {

using webcam::Row;

/// The quick rows, or the named ones; "all" names all. @return false when one of the names is no row's
bool choose_rows(const std::vector<std::string>& names, std::vector<Row>* chosen) {
  if (names == std::vector<std::string>{"all"}) {
    *chosen = webcam::rows();
    return true;
  }
  std::size_t known = 0;
  for (const Row& row : webcam::rows()) {
    const bool named = std::find(names.begin(), names.end(), row.name) != names.end();
    known += named ? 1 : 0;
    if (named || (names.empty() && webcam::is_quick(row))) chosen->push_back(row);
  }
  return known == names.size();
}

/// Each row as often as MORVANE_WEBCAM_REPEAT says, the further ones under numbered names.
void repeat(std::vector<Row>* rows) {
  const char* times = std::getenv("MORVANE_WEBCAM_REPEAT");
  const std::vector<Row> once = *rows;
  for (int turn = 2; times != nullptr && turn <= std::atoi(times); ++turn) {
    for (Row row : once) {
      row.name += "." + std::to_string(turn);
      rows->push_back(std::move(row));
    }
  }
}

/// A folder with its script for each row, and their names by session.
void prepare(const std::vector<Row>& chosen, const std::string& folder) {
  std::string plain;
  std::string pipewire;
  for (const Row& row : chosen) {
    std::filesystem::create_directories(folder + "/" + row.name);
    write_file(folder + "/" + row.name + "/script", row.script + "\n");
    (row.pipewire ? pipewire : plain) += row.name + "\n";
  }
  write_file(folder + "/rows.plain", plain);
  write_file(folder + "/rows.pipewire", pipewire);
}

class RowTest : public testing::Test {
 public:
  RowTest(Row row, std::string folder) : row_(std::move(row)), folder_(std::move(folder)) {}
  void TestBody() override {
    const webcam::Finding finding = webcam::look_at(row_, folder_);
    std::string why;
    for (const std::string& fault : finding.faults) why += "; " + fault;
    const bool good = finding.faults.empty();
    std::printf("%-6s %-26s %s%s\n", good ? "ok" : "FAILED", row_.name.c_str(), finding.seen.c_str(), why.c_str());
    if (good) {
      std::error_code ignored;
      std::filesystem::remove_all(folder_, ignored);
    } else {
      std::printf("       %s\n", folder_.c_str());
      FAIL() << why;
    }
  }

 private:
  const Row row_;
  const std::string folder_;
};

/// The rows speak for themselves.
class Summary : public testing::EmptyTestEventListener {
  void OnTestProgramEnd(const testing::UnitTest& all) override {
    std::printf("%d passed, %d failed\n", all.successful_test_count(), all.failed_test_count());
  }
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const std::vector<std::string> words(argv + 1, argv + argc);
  std::vector<Row> chosen;
  if (words.size() < 2 || !choose_rows({words.begin() + 2, words.end()}, &chosen)) {
    std::fputs("Usage: test_webcam --prepare|--check FOLDER [ROW...]\nRows:", stderr);
    for (const Row& row : webcam::rows()) std::fprintf(stderr, " %s", row.name.c_str());
    std::fputc('\n', stderr);
    return 2;
  }
  repeat(&chosen);
  const std::string& folder = words[1];
  if (words[0] == "--prepare") {
    prepare(chosen, folder);
    return 0;
  }
  for (const Row& row : chosen) {
    testing::RegisterTest("Webcam", row.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [row, folder] { return new RowTest(row, folder + "/" + row.name); });
  }
  testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
  delete listeners.Release(listeners.default_result_printer());
  listeners.Append(new Summary);
  return RUN_ALL_TESTS();
}
