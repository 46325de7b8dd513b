#include "tests/zemctl/sweep/commands.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <numeric>

namespace {

constexpr const char* kH264 =
    R"("h264Unit":true,"h264Formats":[{"type":2,"index":200,"width":1280,"height":720},)"
    R"({"index":1,"type":1,"width":640,"height":480}])";
constexpr const char* kSkype =
    R"("skypeUnit":true,"h264Formats":[{"index":1,"type":1,"width":640,"height":480}])";
constexpr const char* kEncoding = R"("encodingUnit":true,"streamProbeUnit":true)";
constexpr const char* kOrva = R"("orvaUnit":true)";
constexpr const char* kTirella = R"("tirellaUnit":true)";
constexpr const char* k516x = R"("chip":"516x","burnPolls":2)";
constexpr const char* k517x = R"("chip":"517x")";
constexpr const char* kBurning = R"("burnPolls":2)";
constexpr const char* kSlow = R"("chip":"516x","burnPolls":1,"highSpeed":false)";

constexpr const char* kStorages = R"("storages":[{"type":"sf","size":131072,"file":"flash.img"},)"
                                  R"({"type":"spi-nand","size":65536,"file":"nand.img"},)"
                                  R"({"type":"emmc","size":65536,"file":"emmc.img"},)"
                                  R"({"type":"dram","size":65536,"file":"memory.img"}])";

std::string Running(const std::string& stage) {
  return R"("start":")" + stage + R"(",)" + kStorages;
}
const std::string kBootLoader = Running("bootLoader");
const std::string kStorage = Running("storage");
const std::string kCamera = Running("camera");

std::vector<std::uint8_t> Some(std::size_t size, std::uint32_t seed) {
  std::vector<std::uint8_t> bytes(size);
  for (std::uint8_t& byte : bytes) {
    seed = seed * 1103515245 + 12345;
    byte = static_cast<std::uint8_t>(seed >> 16U);
  }
  return bytes;
}

void Append(std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void AppendNumber(std::vector<std::uint8_t>& bytes, std::uint32_t number, int size = 4) {
  for (int index = 0; index < size; ++index) {
    bytes.push_back(static_cast<std::uint8_t>(number >> (8U * static_cast<unsigned>(index))));
  }
}

void Put(const char* name, const std::vector<std::uint8_t>& bytes) {
  std::FILE* const file = std::fopen(name, "wb");
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

}  // namespace

const std::vector<SweptCommand>& SweptCommands() {
  static const std::vector<SweptCommand> commands = {
      {"list", "", ""},
      {"info", "", ""},
      {"info", kH264, ""},
      {"reg get isp 0x123456", "", ""},
      {"reg get sensor 0x3012", "", ""},
      {"reg get vcm 1", "", ""},
      {"reg get codec 0x10", "", ""},
      {"reg set isp 0x123456 0xABCD", "", ""},
      {"reg set sensor 0x3012 0xEF", "", ""},
      {"reg set codec 0x10 0x55", "", ""},
      {"command isp 0b", "", ""},
      {"command vcp 06", "", ""},
      {"command isp-ex 01 02 03", "", ""},
      {"command vcp-ex 01 02 03", "", ""},
      {"xu get vendor 10 8", "", ""},
      {"xu set vendor 1 0a,00,00,00,00,00,00,00", "", ""},
      {"xu check vendor", "", ""},
      {"tune af 1", "", ""},
      {"tune ae 1", "", ""},
      {"tune manual-gain 1", "", ""},
      {"tune awb-gain", "", ""},
      {"tune awb-gain 1 2 3", "", ""},
      {"tune shading 3", "", ""},
      {"tune effect 3", "", ""},
      {"tune misc", "", ""},
      {"tune misc 1 2 3 4 5 6", "", ""},
      {"tune mjpg-quality", "", ""},
      {"tune max-qp 40", "", ""},
      {"tune min-qp 20", "", ""},
      {"tune video-rec-mode 2", "", ""},
      {"tune focus-values", "", ""},
      {"tune build-date", "", ""},
      {"tune sensor-sn", "", ""},
      {"tune skype-version", kSkype, ""},
      {"control list", "", ""},
      {"control get brightness", "", ""},
      {"control set exposure -7", "", ""},
      {"control set focus auto", "", ""},
      {"audio list", "", ""},
      {"audio volume 50", "", ""},
      {"encoding get rate-control", kEncoding, ""},
      {"encoding set rate-control dwAverageBitRate=5000000", kEncoding, ""},
      {"encoding probe", kEncoding, ""},
      {"encoding probe dwInterval=333333", kEncoding, ""},
      {"encoding commit wKeyFrameRate=60", kEncoding, ""},
      {"h264 list", "", ""},
      {"h264 list", kH264, ""},
      {"h264 start 200", kH264, ""},
      {"h264 start 1", kH264, ""},
      {"h264 start 1", kSkype, ""},
      {"h264 start 640x480", "", ""},
      {"h264 start 640x480", kSkype, ""},
      {"h264 stop", "", ""},
      {"h264 stop", kSkype, ""},
      {"h264 fps 30", "", ""},
      {"h264 bitrate 4000", "", ""},
      {"h264 keyframe", "", ""},
      {"stream version", kOrva, ""},
      {"stream select 2", kOrva, ""},
      {"stream layer 1", kOrva, ""},
      {"stream probe", kOrva, ""},
      {"stream probe --width 640", kOrva, ""},
      {"stream commit --stream 3 --format 2 --bit-rate 4000000", kOrva, ""},
      {"multicast select 1", "", ""},
      {"multicast layer 6", "", ""},
      {"multicast commit 1 1280 720 --low 31 --high 2047", "", ""},
      {"nvmem read 0 64", "", ""},
      {"nvmem read 0 40 --output out.bin", "", ""},
      {"nvmem read 200 56 --unit tirella", kTirella, ""},
      {"nvmem write 0x1000 a1,a2,a3", "", "", true},
      {"nvmem write 0 --input page.bin --unit tirella", kTirella, "", true},
      {"table list", "", ""},
      {"table read 1", "", ""},
      {"table read 0x20 --output out.bin", "", ""},
      {"table write 1 a1,a2,a3,a4,a5,a6,a7,a8", "", "", true},
      {"table dump --output out.bin", "", ""},
      {"table init tables.bin", "", "", true},
      {"led 0xA5", kTirella, ""},
      {"data send small.bin", "", ""},
      {"data read out.bin", "", ""},
      {"flash read 0xE0000 2000 out.bin", "", ""},
      {"flash read 0xE0000 100 out.bin", kSlow, ""},
      {"update firmware --chip 516x small.bin", k516x, ""},
      {"update firmware --chip 516x small.bin --verify-at 0", k516x, "", true},
      {"update firmware --chip 516x small.bin --verify-at 0", kSlow, "", true},
      {"update firmware --chip 517x small.bin", k517x, ""},
      {"update firmware --chip 517x small.bin --verify-at 0", k517x, "", true},
      {"update calibration small.bin --verify-at 0xE0000", kBurning, "", true},
      {"update flash --param2 2 --param3 0 small.bin --verify-at 0xC0000", kBurning, "", true},
      {"update handle-less plain small.bin", k516x, ""},
      {"update handle-less ex small.bin", k516x, ""},
      {"update handle-less vision small.bin", R"("chip":"516x")", ""},
      {"rom enter", "", kCamera},
      {"rom info", "", kBootLoader},
      {"rom load-updater code.bin", "", kBootLoader},
      {"rom load-mini-uvc code.bin", "", R"("afterJump":"camera",)" + kBootLoader},
      {"rom load-memory partial.bin --address 0x1000", "", kBootLoader},
      {"rom burn --storage sf image.bin --address 0x8000", "", kStorage, true},
      {"rom burn-package --storage sf package.bin", "", kStorage, true},
      {"rom update-linux --storage sf linux.bin --header-address 0x2000", "", kStorage, true},
      {"rom update-partial --storage sf partial.bin --address 0x3000", "", kStorage, true},
      {"rom erase --storage sf 0x3000 600", "", kStorage, true},
      {"rom read --storage sf out.bin --address 0x8000 --size 5000", "", kStorage},
      {"rom verify --storage sf image.bin --address 0x8000", "", kStorage, false, false,
       "rom burn --storage sf image.bin --address 0x8000"},
      {"rom reg get 0x80001234", "", kBootLoader},
      {"rom reg set 0x80001234 0x5A", "", kBootLoader},
      {"rom make-enhanced-area 0 0x2000", "", kStorage},
      {"rom command fa 55 66 01 --in 16", "", kBootLoader, false, true},
      {"rom reset", "", kBootLoader},
      {"recover --storage sf image.bin --updater code.bin", "", kBootLoader, true},
      {"recover --storage sf image.bin --updater code.bin --enter", "", kCamera, true},
  };
  return commands;
}

void MakeInputFiles() {
  const std::vector<std::uint8_t> payload = Some(20000, 1);
  std::vector<std::uint8_t> image = {'V', 'S', 'N', '_', 'V', '2', 'F', 'W'};
  AppendNumber(image, 1, 2);
  AppendNumber(image, 0x1234);
  AppendNumber(image, static_cast<std::uint32_t>(payload.size()));
  Append(image, Some(4096, 2));
  Append(image, payload);
  Put("image.bin", image);
  std::vector<std::uint8_t> package = Some(10, 3);
  AppendNumber(package, 8);
  AppendNumber(package, 20000);
  Append(package, Some(20000, 4));
  Put("package.bin", package);
  std::vector<std::uint8_t> system = Some(8192 + 33000, 8);
  system[8] = 12;
  system[16] = 0x10;
  std::fill_n(system.begin() + 9, 3, std::uint8_t{0});
  std::fill_n(system.begin() + 17, 3, std::uint8_t{0});
  Put("linux.bin", system);
  Put("partial.bin", Some(5000, 9));
  std::vector<std::uint8_t> code = Some(8, 10);
  Append(code, {1, 0});
  Append(code, Some(8, 11));
  Append(code, Some(40000, 12));
  Put("code.bin", code);
  Put("page.bin", std::vector<std::uint8_t>(256, 0x5A));
  // Firmware with a header by which a simulated camera knows its length and check sum.
  const std::vector<std::uint8_t> program = Some(1516, 14);
  std::vector<std::uint8_t> firmware = {'Z', 'E', 'M', 'F', 'W', 'I', 'M', 'G', 2, 0, 0, 0, 0, 1};
  AppendNumber(firmware, std::accumulate(program.begin(), program.end(), std::uint32_t{0}), 2);
  AppendNumber(firmware, static_cast<std::uint32_t>(20 + program.size()));
  Append(firmware, program);
  Put("small.bin", firmware);
  // A table store with one table.
  std::vector<std::uint8_t> tables = {0xEE, 0x00, 0x00, 0x02, 0x00, 0x01, 0xFC, 0x01};
  Append(tables, Some(504, 15));
  Put("tables.bin", tables);
}

const std::vector<std::string>& OutputFiles() {
  static const std::vector<std::string> files = {"out.bin",  "state.json", "flash.img",
                                                 "nand.img", "emmc.img",   "memory.img"};
  return files;
}
