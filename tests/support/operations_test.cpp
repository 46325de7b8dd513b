// The table of operations has every export. Each is run in tests/sweep/.
#include "tests/support/operations.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

namespace {

using zem::testing::Operation;
using zem::testing::Operations;

std::multiset<std::string> ExportedNames() {
  std::multiset<std::string> names;
  std::ifstream file(ZEM_EXPORT_LIST);
  bool isName = false;
  for (std::string line; std::getline(file, line);) {
    const std::size_t start = line.find_first_not_of(" \"");
    if (isName && start != std::string::npos && line[start] != ';') {
      names.insert(line.substr(start, line.find_last_not_of('"') + 1 - start));
    }
    isName = isName || line == "EXPORTS";
  }
  return names;
}

TEST(OperationsTest, EveryExportIsInTheTableOnceOrNeedsNoDevice) {
  std::multiset<std::string> names;
  for (const Operation& operation : Operations()) {
    names.insert(operation.name);
  }
  for (const std::string_view name : zem::testing::ExportsWithoutDevice()) {
    names.emplace(name);
  }
  ASSERT_GT(names.size(), 150U);
  EXPECT_EQ(names, ExportedNames());
}

TEST(OperationsTest, ABoundCountsBegunPieces) {
  const zem::testing::Bound bound = {3, 32, 6};
  EXPECT_EQ(bound.Of(0), 3U);
  EXPECT_EQ(bound.Of(1), 9U);
  EXPECT_EQ(bound.Of(32), 9U);
  EXPECT_EQ(bound.Of(33), 15U);
}

}  // namespace
