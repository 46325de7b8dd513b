#include "tools/zemctl/rom_boot/rom_arguments.h"

#include <vector>

namespace zemctl {
namespace {

// "f" and "F:" are "F:".
std::string ReadDrive(const std::string& text) {
  const bool isLetter =
      !text.empty() && ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
  if (!isLetter || !(text.size() == 1 || (text.size() == 2 && text[1] == ':'))) {
    throw CLI::ValidationError("\"" + text + "\" is no drive");
  }
  const char letter = text[0] >= 'a' ? static_cast<char>(text[0] - 'a' + 'A') : text[0];
  return std::string(1, letter) + ":";
}

}  // namespace

void AddSelectionOptions(CLI::App* command, RomSelection& selection) {
  const std::string group = "Which camera in ROM boot";
  command
      ->add_option_function<std::string>(
          "--kind",
          [&selection](const std::string& kind) {
            selection.kind = kind == "storage" ? RomKind::kZemStorage : RomKind::kBootLoader;
          },
          "boot-loader or storage; without it, whichever answers")
      ->check(CLI::IsMember({"boot-loader", "storage"}))
      ->group(group);
  command
      ->add_option_function<std::string>(
          "--drive", [&selection](const std::string& drive) { selection.drive = drive; },
          "Its drive, such as F:, where more than one is in ROM boot")
      ->transform(ReadDrive)
      ->group(group);
  command->add_option("--boot-wait", selection.waitSeconds, "Seconds to look for it")
      ->check(CLI::Range(3600))
      ->capture_default_str()
      ->group(group);
  command
      ->add_flag("--send-divider", selection.sendDivider,
                 "Also tell it the storage address divider")
      ->group(group);
}

void AddStorageOptions(CLI::App* command, StorageChoice& storage) {
  command->add_option("--storage", storage.name, "sf, dram, emmc, spi-nand or parallel-nand")
      ->required()
      ->check(CLI::IsMember(std::vector<std::string>(kStorageNames.begin(), kStorageNames.end())));
  command->add_option("--option", storage.option, "Option byte of the NANDs and the eMMC")
      ->check(CLI::Range(255));
}

void AddBurnOptions(CLI::App* command, BurnRequest& request) {
  command
      ->add_option("--as", request.method,
                   "image, package, package-v2, linux, partial or partial-with-header")
      ->check(CLI::IsMember(std::vector<std::string>(kBurnMethods.begin(), kBurnMethods.end())))
      ->capture_default_str();
  command->add_option("--address", request.address, "Storage address, where the method takes one");
  command->add_option("--body-address", request.bodyAddress, "Of a Linux package's body");
}

void AddUpdaterWait(CLI::App* command, unsigned& seconds) {
  command
      ->add_option("--updater-wait", seconds,
                   "Seconds to wait for the storage of the updater once it was started")
      ->check(CLI::Range(3600))
      ->capture_default_str();
}

void AddCameraWait(CLI::App* command, unsigned& seconds) {
  command->add_option("--wait", seconds, "Seconds to wait for the camera to come back and answer")
      ->check(CLI::Range(3600))
      ->capture_default_str();
}

void ReportVolume(const RomSession& session, Report& report) {
  report["found"] = NameOf(session.kind());
  report["drive"] = session.volume().drive;
}

void AddDryRun(CLI::App* command, bool& dryRun) {
  command->add_flag("--dry-run", dryRun, "Show what would be sent; no camera is needed");
}

}  // namespace zemctl
