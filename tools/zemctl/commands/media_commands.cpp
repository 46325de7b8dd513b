// zemctl bmp, zemctl wav: no camera is needed.
#include <algorithm>
#include <cstdlib>
#include <memory>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

struct PictureArguments {
  std::string layout;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::string input;
  std::string output;
};

struct SoundArguments {
  std::uint8_t channels = 1;
  std::int32_t sampleRate = 0;
  std::uint8_t bitsPerSample = 16;
  std::string input;
  std::string output;
};

// Hands the pixels over, as ConvertRGBtoBMP asks for.
std::int32_t ConvertCopy(const wchar_t* path, const std::uint8_t* frame, std::uint32_t width,
                         std::uint32_t height) {
  const std::size_t size = std::size_t{width} * height * 3;
  auto* const pixels = static_cast<std::uint8_t*>(std::malloc(size));
  if (pixels == nullptr) {
    return 0;
  }
  std::copy_n(frame, size, pixels);
  const std::int32_t written = ConvertRGBtoBMP(path, pixels, width, height);
  if (written == 0) {
    std::free(pixels);
  }
  return written;
}

struct Layout {
  const char* name;
  std::uint64_t (*frameBytes)(std::uint64_t pixels);
  const char* function;
  std::int32_t (*convert)(const wchar_t* path, const std::uint8_t* frame, std::uint32_t width,
                          std::uint32_t height);
  const char* orientation;
};

const Layout kLayouts[] = {
    {"yuy2", [](std::uint64_t pixels) { return pixels * 2; }, "ConvertYUY2toBMP",
     [](const wchar_t* path, const std::uint8_t* frame, std::uint32_t width, std::uint32_t height) {
       return ConvertYUY2toBMP(path, frame, width, height);
     },
     "upright"},
    {"planar", [](std::uint64_t pixels) { return pixels + pixels / 4 * 2; }, "ConvertNV12toBMP",
     [](const wchar_t* path, const std::uint8_t* frame, std::uint32_t width, std::uint32_t height) {
       return ConvertNV12toBMP(path, frame, width, height);
     },
     "upside down in a viewer, the rows keep the frame's order"},
    {"rgb", [](std::uint64_t pixels) { return pixels * 3; }, "ConvertRGBtoBMP", ConvertCopy,
     "as the pixels lie, the first row at the bottom"},
};

// Checks what the library wrote, since its own result says no more than yes or no.
void ShowWritten(const char* function, std::int32_t written, const std::string& path,
                 std::size_t expected, Report& report) {
  if (written != 1 || SizeOfFile(path) != expected) {
    throw ToolFailure(kBadFile, std::string(function) + ": " + path + " could not be written",
                      "Check the path and the space on the disk.");
  }
  report["file"] = path;
  report["bytes"] = expected;
}

int WritePicture(const PictureArguments& arguments, Report& report) {
  const Layout& layout =
      *std::find_if(std::begin(kLayouts), std::end(kLayouts),
                    [&](const Layout& known) { return known.name == arguments.layout; });
  const std::uint64_t size = SizeOfFile(arguments.input);
  const std::uint64_t pixels = std::uint64_t{arguments.width} * arguments.height;
  const std::uint64_t expected = layout.frameBytes(pixels);
  if (size != expected) {
    throw ToolFailure(kBadFile,
                      arguments.input + " has " + std::to_string(size) +
                          " bytes, but such a frame has " + std::to_string(expected),
                      "Check the layout, the width and the height. Nothing was written.");
  }
  const std::vector<unsigned char> frame = ReadInputFile(arguments.input, size);
  const std::int32_t written = layout.convert(Widen(arguments.output).c_str(), frame.data(),
                                              arguments.width, arguments.height);
  ShowWritten(layout.function, written, arguments.output, static_cast<std::size_t>(pixels * 3 + 54),
              report);
  report["width"] = arguments.width;
  report["height"] = arguments.height;
  report["picture"] = layout.orientation;
  return kDone;
}

int WriteSound(const SoundArguments& arguments, Report& report) {
  const std::uint64_t size = SizeOfFile(arguments.input);
  const unsigned frameBytes = arguments.channels * arguments.bitsPerSample / 8U;
  if (size == 0 || size % frameBytes != 0) {
    throw ToolFailure(kBadFile,
                      arguments.input + " has " + std::to_string(size) +
                          " bytes, no whole number of frames of " + std::to_string(frameBytes),
                      "Check the channels and the bits. Nothing was written.");
  }
  const std::int32_t written =
      PackWavFile(Widen(arguments.input).c_str(), Widen(arguments.output).c_str(),
                  arguments.channels, arguments.sampleRate, arguments.bitsPerSample);
  ShowWritten("PackWavFile", written, arguments.output, size + 44, report);
  const std::uint64_t frames = size / frameBytes;
  report["frames"] = frames;
  report["seconds"] = static_cast<double>(frames) / arguments.sampleRate;
  return kDone;
}

}  // namespace

void AddMediaCommands(Program& program) {
  const auto picture = std::make_shared<PictureArguments>();
  CLI::App* const bmp = program.AddCommand(
      &program.app(), "bmp", "Write a raw frame as a BMP file",
      [picture](const Options& /*options*/, Report& report) {
        return WritePicture(*picture, report);
      },
      kWithoutCamera);
  bmp->add_option("layout", picture->layout, "yuy2, planar (Y, U, V) or rgb (blue, green, red)")
      ->required()
      ->check(CLI::IsMember({"yuy2", "planar", "rgb"}));
  bmp->add_option("input", picture->input, "The frame, without any header")->required();
  bmp->add_option("output", picture->output, "BMP file to create or overwrite")->required();
  constexpr int kLargestSide = 65535;
  bmp->add_option("--width", picture->width, "Pixels in a row")
      ->required()
      ->check(CLI::Range(1, kLargestSide));
  bmp->add_option("--height", picture->height, "Rows")
      ->required()
      ->check(CLI::Range(1, kLargestSide));

  const auto sound = std::make_shared<SoundArguments>();
  CLI::App* const wav = program.AddCommand(
      &program.app(), "wav", "Put a WAV header in front of raw samples",
      [sound](const Options& /*options*/, Report& report) { return WriteSound(*sound, report); },
      kWithoutCamera);
  wav->add_option("input", sound->input, "Raw PCM samples")->required();
  wav->add_option("output", sound->output, "WAV file to create or overwrite")->required();
  wav->add_option("--rate", sound->sampleRate, "Frames per second")
      ->required()
      ->check(CLI::Range(1, 768000));
  wav->add_option("--channels", sound->channels, "Samples in a frame")->check(CLI::Range(1, 255));
  wav->add_option("--bits", sound->bitsPerSample, "Bits of a sample")
      ->check(CLI::IsMember({8, 16, 24, 32}));
}

}  // namespace zemctl
