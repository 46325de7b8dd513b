#include "tools/zemctl/rom_boot/rom_arguments.h"

#include <vector>

namespace zemctl {

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
  command->add_option("--wait", selection.waitSeconds, "Seconds to look for it")
      ->check(CLI::Range(3600))
      ->group(group);
  command
      ->add_flag("--send-divider", selection.sendDivider,
                 "Also tell it the storage address divider")
      ->group(group);
}

void AddStorageOptions(CLI::App* command, StorageChoice& storage) {
  command->add_option("--storage", storage.name, "sf, dram, emmc, spi-nand or parallel-nand")
      ->check(CLI::IsMember(std::vector<std::string>(kStorageNames.begin(), kStorageNames.end())))
      ->capture_default_str();
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

void AddDryRun(CLI::App* command, bool& dryRun) {
  command->add_flag("--dry-run", dryRun, "Show what would be sent; no camera is needed");
}

}  // namespace zemctl
