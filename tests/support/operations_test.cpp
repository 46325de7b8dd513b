// The table of operations: it has every export, and each runs on healthy devices within its bound.
#include "tests/support/operations.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <set>

#include "romboot/usb_scsi_cmd.h"
#include "tests/support/healthy_stage.h"

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

// Counts what reaches the devices.
class CountingGate final : public zem::simulator::CallGate {
 public:
  HRESULT Enter(const char* call) override {
    const std::string_view name = call;
    isStandard_ = name == "Get" || name == "Set" || name == "GetRange" || name == "put_MixLevel";
    requests += isStandard_ ? 1U : 0U;
    return S_OK;
  }
  HRESULT EndTransfer(HRESULT result) override {
    ++requests;
    return result;
  }
  std::uint64_t requests = 0;

 private:
  bool isStandard_ = false;
};

class HealthyOperationTest : public ::testing::TestWithParam<Operation> {
 protected:
  HealthyOperationTest() { zem::sendAddressDivider = 0; }
  ~HealthyOperationTest() override {
    stage_.reset();
    EXPECT_EQ(zem::simulator::liveComObjects, 0) << "objects left referenced";
  }

  CountingGate counting_;
  std::optional<zem::testing::HealthyStage> stage_{std::in_place, &counting_};
};

TEST_P(HealthyOperationTest, SucceedsWithinItsBound) {
  const Operation& operation = GetParam();
  ASSERT_TRUE(stage_->Prepare(operation));
  counting_.requests = 0;
  stage_->volume.controls.clear();
  EXPECT_GE(stage_->Run(operation), 0);
  EXPECT_LE(counting_.requests + stage_->volume.controls.size(),
            operation.bound.Of(stage_->length()));
}

std::string NameOf(const ::testing::TestParamInfo<Operation>& info) {
  std::string name = info.param.name;
  std::erase_if(name, [](char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) == 0 && letter != '_';
  });
  return name;
}

INSTANTIATE_TEST_SUITE_P(Exports, HealthyOperationTest, ::testing::ValuesIn(Operations()), NameOf);

}  // namespace
