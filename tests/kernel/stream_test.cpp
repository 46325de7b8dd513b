// The camera's picture through V4L2, while commands run.
#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "include/ZemUVCExtApi.h"
#include "simulator/usb/test_picture.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/windows/support/opened_camera.h"

namespace {

using zem::testing::OpenedCamera;
using zem::testing::PluggedCamera;

constexpr std::size_t kWidth = 640;
constexpr std::size_t kHeight = 480;

class Stream {
 public:
  Stream() : file_(open(zem::testing::kVideoFile, O_RDWR)) {
    v4l2_format format = {};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    EXPECT_EQ(ioctl(file_, VIDIOC_G_FMT, &format), 0);
    EXPECT_EQ(format.fmt.pix.pixelformat, static_cast<unsigned>(V4L2_PIX_FMT_YUYV));
    EXPECT_EQ(format.fmt.pix.width, kWidth);
    EXPECT_EQ(format.fmt.pix.height, kHeight);
    v4l2_requestbuffers request = {};
    request.count = kBuffers;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    EXPECT_EQ(ioctl(file_, VIDIOC_REQBUFS, &request), 0);
    for (unsigned index = 0; index < kBuffers; ++index) {
      v4l2_buffer buffer = Buffer(index);
      EXPECT_EQ(ioctl(file_, VIDIOC_QUERYBUF, &buffer), 0);
      lengths_[index] = buffer.length;
      memory_[index] = mmap(nullptr, buffer.length, PROT_READ, MAP_SHARED, file_, buffer.m.offset);
      EXPECT_NE(memory_[index], MAP_FAILED);
      EXPECT_EQ(ioctl(file_, VIDIOC_QBUF, &buffer), 0);
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    EXPECT_EQ(ioctl(file_, VIDIOC_STREAMON, &type), 0);
  }
  ~Stream() {
    for (unsigned index = 0; index < kBuffers; ++index) {
      munmap(memory_[index], lengths_[index]);
    }
    close(file_);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  // The next frame; empty when there is none any more.
  std::vector<std::uint8_t> Next() {
    v4l2_buffer buffer = Buffer(0);
    if (ioctl(file_, VIDIOC_DQBUF, &buffer) != 0) {
      return {};
    }
    const auto* const begin = static_cast<const std::uint8_t*>(memory_[buffer.index]);
    std::vector<std::uint8_t> frame(begin, begin + buffer.bytesused);
    ioctl(file_, VIDIOC_QBUF, &buffer);
    return frame;
  }

 private:
  static constexpr unsigned kBuffers = 4;

  static v4l2_buffer Buffer(unsigned index) {
    v4l2_buffer buffer = {};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return buffer;
  }

  int file_;
  std::array<void*, kBuffers> memory_ = {};
  std::array<std::size_t, kBuffers> lengths_ = {};
};

// The number in a frame's first row: 32 fields of 4 pixels, white for 1.
std::uint32_t NumberOf(const std::vector<std::uint8_t>& frame) {
  std::uint32_t number = 0;
  for (std::size_t field = 0; field < 32; ++field) {
    number = number * 2 + (frame.at(8 * field) > 100 ? 1 : 0);
  }
  return number;
}

TEST(Streaming, FramesAreRightWhileCommandsRun) {
  const PluggedCamera plugged;
  const OpenedCamera camera;
  Stream stream;
  std::uint32_t last = 0;
  for (unsigned short count = 1; count <= 20; ++count) {
    unsigned short value = 0;
    ASSERT_EQ(ZEMAPI_SetRegister(camera, 0x1000, count), 0);
    ASSERT_EQ(ZEMAPI_GetRegister(camera, 0x1000, &value), 0);
    ASSERT_EQ(value, count);
    const auto frame = stream.Next();
    ASSERT_EQ(frame.size(), 2 * kWidth * kHeight);
    const std::uint32_t number = NumberOf(frame);
    ASSERT_TRUE(count == 1 || number > last) << number << " behind " << last;
    last = number;
    ASSERT_EQ(frame, zem::simulator::usb::DrawTestPicture(kWidth, kHeight, number)) << number;
  }
}

TEST(Streaming, EndsWhenTheCameraIsUnplugged) {
  PluggedCamera plugged;
  const OpenedCamera camera;
  Stream stream;
  EXPECT_EQ(stream.Next().size(), 2 * kWidth * kHeight);
  plugged.Unplug();
  for (int rest = 0; rest < 8 && !stream.Next().empty(); ++rest) {
  }
  EXPECT_TRUE(stream.Next().empty());
  unsigned short value = 0;
  EXPECT_EQ(ZEMAPI_GetRegister(camera, 0x1000, &value), ZEM_E_NO_DEVICE);
}

}  // namespace
