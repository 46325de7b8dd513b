// The file of what passed between a host and a simulated camera.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "simulator/options.h"
#include "tests/support/temporary_folder.h"

namespace {

using zem::simulator::CameraOptions;
using zem::simulator::MakeCamera;

TEST(TransferLogTest, HasALineForEachTransferAtOnce) {
  const zem::testing::TemporaryFolder folder;
  CameraOptions options;
  options.transferFile = (folder.path() / "transfers").string();
  options.faults = {*zem::simulator::ParseFault("fail@3")};
  const auto camera = MakeCamera(options);
  constexpr std::size_t kVendorNode = 2;
  const std::vector<std::uint8_t> version = {0x0B, 0, 0, 0, 0, 0, 0, 0};
  std::vector<std::uint8_t> reply(8);
  std::uint32_t moved = 0;
  camera->Set(kVendorNode, 1, version);
  camera->Get(kVendorNode, 2, reply, moved);
  camera->Get(kVendorNode, 2, reply, moved);
  const std::vector<std::uint8_t> bytes = folder.Read("transfers");
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
            R"({"direction": "set", "unit": "{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}", )"
            R"("selector": 1, "length": 8, "data": "0b 00 00 00 00 00 00 00", "outcome": "done"})"
            "\n"
            R"({"direction": "get", "unit": "{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}", )"
            R"("selector": 2, "length": 8, "data": "00 00 01 02 03 04 05 06", "outcome": "done"})"
            "\n"
            R"({"direction": "get", "unit": "{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}", )"
            R"("selector": 2, "length": 8, "data": "", "outcome": "failed"})"
            "\n");
}

TEST(TransferLogTest, RefusesAFileThatCannotBeWritten) {
  CameraOptions options;
  options.transferFile = "/no/such/folder/transfers";
  EXPECT_THROW(MakeCamera(options), std::invalid_argument);
}

}  // namespace
