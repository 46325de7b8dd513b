// The ground of the tests of platform/linux: a fake kernel, and cameras that are plugged into it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "tests/linux/fake_kernel.h"
#include "tests/linux/platform_results.h"

namespace zem::testing {

// A control of an extension unit, as the driver serves it.
struct FakeControl {
  std::uint16_t length = 0;
  std::vector<std::uint8_t> value;  // shorter than `length`: so are the answers
  bool isRead = true;
  bool isWritten = true;
  int stall = 0;  // an errno value, with which reading and writing fails
};

// A standard control of V4L2.
struct FakeV4l2Control {
  std::int32_t minimum = 0;
  std::int32_t maximum = 0;
  std::int32_t step = 1;
  std::int32_t defaultValue = 0;
  std::int32_t value = 0;
  std::uint32_t flags = 0;
  std::vector<std::uint32_t> menu = {};  // its entries, if it is one
};

// A camera's device file: the requests of uvcvideo and V4L2 that the platform makes.
class FakeCamera : public FakeDevice {
 public:
  int Control(unsigned long request, void* argument) override;

  std::uint32_t capabilities;
  std::map<std::pair<unsigned, unsigned>, FakeControl> controls;  // by unit and selector
  std::map<std::uint32_t, FakeV4l2Control> v4l2;
  bool unplugged = false;
  // Every request to a unit: "GET_CUR 3.2 8", and with SET_CUR its bytes.
  std::vector<std::string> queries;

  FakeCamera();

 private:
  int Query(void* argument);
};

// The descriptors of a device with one configuration: camera terminal 1, processing unit 2, the
// vendor unit 3, the encoding unit's extension 4, output terminal 5, on interface 0.
std::string CameraDescriptors();

class LinuxTest : public ::testing::Test {
 protected:
  ~LinuxTest() override;

  // Plugs a camera in: /dev/videoN, on `port` such as "1-1.2".
  std::shared_ptr<FakeCamera> AddCamera(unsigned number, const std::string& port,
                                        const std::string& vendor = "5a45",
                                        const std::string& product = "8c00");
  // A further device file of the function on `port`.
  std::shared_ptr<FakeCamera> AddVideoFile(unsigned number, const std::string& port,
                                           unsigned index);
  // Takes it out again, with its device file.
  void RemoveCamera(unsigned number, const std::string& port);

  FakeKernel kernel;
};

// Folder of the USB device on a port, such as "1-1.2", within sysfs.
std::string PortFolder(const std::string& port);

}  // namespace zem::testing
