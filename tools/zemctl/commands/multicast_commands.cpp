// zemctl multicast select, layer, commit
#include <memory>

#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

struct MulticastArguments {
  std::uint8_t value = 0;
  std::uint8_t format = 0;
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::uint8_t packedLow = 0;
  std::uint16_t packedHigh = 0;
};

int SelectMulticastStream(const Options& options, const MulticastArguments& arguments,
                          Report& report) {
  const Session session(options.device, Use::kWriting);
  session.Call("ZEMAPI_MulticastStreamID",
               [&](void* device) { return ZEMAPI_MulticastStreamID(device, arguments.value); });
  report["stream"] = arguments.value;
  return kDone;
}

int SetMulticastLayer(const Options& options, const MulticastArguments& arguments, Report& report) {
  const Session session(options.device, Use::kWriting);
  session.Call("ZEMAPI_MulticasToggleLayer",
               [&](void* device) { return ZEMAPI_MulticasToggleLayer(device, arguments.value); });
  report["layer"] = arguments.value;
  return kDone;
}

int CommitMulticast(const Options& options, const MulticastArguments& arguments, Report& report) {
  const Session session(options.device, Use::kWriting);
  session.Call("ZEMAPI_MulticastCommit", [&](void* device) {
    return ZEMAPI_MulticastCommit(device, arguments.format, arguments.width, arguments.height,
                                  arguments.packedLow, arguments.packedHigh);
  });
  report["format"] = arguments.format;
  report["width"] = arguments.width;
  report["height"] = arguments.height;
  report["low"] = arguments.packedLow;
  report["high"] = arguments.packedHigh;
  return kDone;
}

}  // namespace

void AddMulticastCommands(Program& program) {
  // The library would drop the bits above.
  constexpr unsigned kMostLow = 0x1F;
  constexpr unsigned kMostHigh = 0x7FF;
  const auto arguments = std::make_shared<MulticastArguments>();
  CLI::App* const multicast =
      program.app()
          .add_subcommand("multicast", "Set up streams for several receivers")
          ->require_subcommand(1);
  multicast->fallthrough();
  const auto add = [&](const std::string& name, const std::string& description, auto function) {
    return program.AddCommand(multicast, name, description,
                              [arguments, function](const Options& options, Report& report) {
                                return function(options, *arguments, report);
                              });
  };
  add("select", "Select the stream that the others act on", SelectMulticastStream)
      ->add_option("stream", arguments->value, "Stream id")
      ->required();
  add("layer", "Switch a layer", SetMulticastLayer)
      ->add_option("value", arguments->value, "Layer value")
      ->required();
  CLI::App* const commit = add("commit", "Commit a format", CommitMulticast);
  commit->add_option("format", arguments->format, "Kind of stream")->required();
  commit->add_option("width", arguments->width, "Pixels")->required();
  commit->add_option("height", arguments->height, "Pixels")->required();
  commit->add_option("--low", arguments->packedLow, "The lower, 5-bit field")
      ->check(CLI::Range(kMostLow));
  commit->add_option("--high", arguments->packedHigh, "The higher, 11-bit field")
      ->check(CLI::Range(kMostHigh));
}

}  // namespace zemctl
