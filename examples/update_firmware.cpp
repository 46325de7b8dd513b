// Updates the firmware of the first default camera: progress, errors, and a retry where one helps.
//
//   update_firmware 516x|517x IMAGE
#include <cstdio>
#include <string>
#include <vector>

#include "ZemUVC.hpp"
#include "read_file.hpp"

namespace {

constexpr int kMostAttempts = 3;

// One line for every tenth of the way.
class Shown {
 public:
  void operator()(std::uint32_t percentLeft) {
    const std::uint32_t tenth = (100 - percentLeft) / 10;
    if (percentLeft <= 100 && tenth > tenth_) {
      tenth_ = tenth;
      std::printf("%u %%\n", tenth * 10);
      std::fflush(stdout);
    }
  }

 private:
  std::uint32_t tenth_ = 0;
};

// Burns the image. The library reports success also where part of the image was lost on the way:
// what counts is the camera's own check of what it holds then.
void Update(zemuvc::Camera& camera, bool is516x, const std::vector<std::uint8_t>& image) {
  Shown shown;
  if (is516x) {
    camera.UpdateFirmware516x(image, 0, shown);
  } else {
    // While the camera burns, this one is told 10, 9, ... 1: what could be that is not shown.
    camera.UpdateFirmware517x(image, [&](std::uint32_t progress) {
      if (progress > 10) {
        shown(progress);
      }
    });
  }
  camera.CheckFirmware();
}

// Whether the same can succeed when it is tried once more: not where the arguments are wrong.
bool HelpsToRetry(const zemuvc::Error& error) { return error.code() != zemuvc::Errc::kRefused; }

}  // namespace

int main(int argc, char** argv) {
  const std::string chip = argc == 3 ? argv[1] : "";
  if (chip != "516x" && chip != "517x") {
    std::printf("usage: update_firmware 516x|517x IMAGE\n");
    return 2;
  }
  const std::vector<std::uint8_t> image = ReadFile(argv[2]);
  if (image.empty()) {
    std::printf("%s: not a file with an image\n", argv[2]);
    return 2;
  }
  bool isBegun = false;
  for (int attempt = 1; attempt <= kMostAttempts; ++attempt) {
    try {
      // Opened anew each time: a camera that was unplugged meanwhile is another one to the system.
      zemuvc::Camera camera = zemuvc::Camera::Open();
      isBegun = true;
      Update(camera, chip == "516x", image);
      std::printf(
          "The firmware is burned and its check sum is right. Restart the camera to run it.\n");
      return 0;
    } catch (const zemuvc::Error& error) {
      std::printf("attempt %d: %s\n", attempt, error.what());
      if (!isBegun || !HelpsToRetry(error)) {
        break;
      }
    }
  }
  std::printf("%s\n", isBegun
                          ? "The firmware may be damaged: leave the camera powered, and run this "
                            "once more before it restarts."
                          : "Nothing was sent.");
  return 1;
}
