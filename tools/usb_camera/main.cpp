// zem-usb-camera: simulated cameras as USB devices, by USB/IP.
#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/options.h"
#include "simulator/utf8_files.h"
#include "tools/usb_camera/listening.h"
#include "tools/usb_camera/server.h"
#include "tools/usb_camera/transfer_log.h"
#include "tools/usb_camera/vhci.h"
#include "usb_camera_version.h"

namespace {

using zem::simulator::Options;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

struct Arguments {
  bool attach = false;
  std::string listen;
  std::string options;
  std::vector<std::string> faults;
  std::string state;
  std::string log;
};

// JSON as it was given, or what stands in the file of that name.
std::string ReadOptions(const std::string& given) {
  if (given.empty() || given.find_first_of("{[") == given.find_first_not_of(" \t\r\n")) {
    return given;
  }
  const zem::simulator::File file = zem::simulator::OpenUtf8(given, "rb");
  if (file == nullptr) {
    throw std::invalid_argument("\"" + given + "\" is neither JSON nor a file that can be read");
  }
  std::string text;
  std::array<char, 4096> piece = {};
  while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get())) {
    text.append(piece.data(), count);
  }
  return text;
}

// The options with what is given beside them for the first camera.
Options CompleteOptions(const Arguments& arguments) {
  Options options = zem::simulator::ParseOptions(ReadOptions(arguments.options));
  const bool isGiven = !arguments.faults.empty() || !arguments.state.empty();
  if (isGiven && options.cameras.empty()) {
    throw std::invalid_argument("--fault and --state are for the first camera, and there is none");
  }
  for (const std::string& text : arguments.faults) {
    const auto fault = zem::simulator::ParseFault(text);
    if (!fault) {
      throw std::invalid_argument("\"" + text + "\" is not a fault");
    }
    options.cameras.front().faults.push_back(*fault);
  }
  if (!arguments.state.empty()) {
    options.cameras.front().stateFile = arguments.state;
  }
  if (options.cameras.empty() && options.bootLoaders.empty()) {
    throw std::invalid_argument("there is no camera in these options");
  }
  return options;
}

// Signals that end the program become readable, instead.
zem::usb_camera::Descriptor HoldSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return zem::usb_camera::Descriptor(signalfd(-1, &signals, SFD_CLOEXEC));
}

zem::usb_camera::Descriptor Listen(const std::string& text) {
  auto socket = zem::usb_camera::Listen(zem::usb_camera::ParseListenAddress(text));
  const sockaddr_storage address = zem::usb_camera::OwnAddress(socket);
  if (!zem::usb_camera::IsLoopback(address)) {
    std::fprintf(stderr,
                 "zem-usb-camera: others than this machine reach %s; USB/IP asks for no password, "
                 "so whoever does can take the camera.\n",
                 zem::usb_camera::AddressText(address).c_str());
  }
  return socket;
}

void Run(const Arguments& arguments) {
  const Options options = CompleteOptions(arguments);
  const zem::usb_camera::Descriptor signals = HoldSignals();
  std::optional<zem::usb_camera::TransferLog> log;
  if (!arguments.log.empty()) {
    log.emplace(arguments.log);
  }
  zem::usb_camera::Server server(options, log ? &*log : nullptr);
  if (arguments.attach) {
    server.Attach(zem::usb_camera::Vhci());
  } else {
    server.Listen(Listen(arguments.listen));
  }
  server.Run(signals);
}

void AddOptions(CLI::App& app, Arguments& arguments) {
  app.set_version_flag("--version", zem::usb_camera::kVersion, "Print the version and exit");
  auto* const where = app.add_option_group("Where");
  where->add_flag("--attach", arguments.attach,
                  "Plug the cameras into this machine's kernel (root; module vhci-hcd)");
  where
      ->add_option("--listen", arguments.listen,
                   "Offer them to \"usbip attach\"; without an address to this machine alone")
      ->type_name("[ADDRESS:]PORT");
  where->require_option(1);
  app.add_option("--simulator-options", arguments.options,
                 "What to simulate: JSON, or a file with it (docs/simulator.md)");
  app.add_option("--fault,--simulator-fault", arguments.faults,
                 "A fault of the first camera, such as unplug@3")
      ->allow_extra_args(false);
  app.add_option("--state", arguments.state,
                 "File in which the first camera keeps its memory between runs");
  app.add_option("--log", arguments.log, "File for what reaches the cameras, a line each");
}

int ParseAndRun(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("Simulated USB cameras, by USB/IP: for this machine's kernel or for another's.",
               "zem-usb-camera");
  AddOptions(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongUsage;
  }
  Run(arguments);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return ParseAndRun(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zem-usb-camera: %s.\n", error.what());
    const bool isUsage = dynamic_cast<const std::invalid_argument*>(&error) != nullptr;
    return isUsage ? kWrongUsage : kFailed;
  }
}
