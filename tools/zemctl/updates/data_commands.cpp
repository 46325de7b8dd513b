// zemctl data send, data read, flash read
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/zemctl/camera/rehearsal.h"
#include "tools/zemctl/camera/required_unit.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/updates/camera_memory.h"
#include "tools/zemctl/updates/image_procedure.h"
#include "tools/zemctl/updates/image_transfers.h"

namespace zemctl {
namespace {

// Bytes that a read has room for unless --max says otherwise.
constexpr std::uint32_t kRoom = 0x100000;

struct DataArguments {
  std::string file;
  ImageParameters parameters;
  std::uint32_t room = kRoom;
  std::uint32_t address = 0;
  std::uint32_t size = 0;
  bool verify = false;
  bool dryRun = false;
};

using Bytes = std::vector<unsigned char>;

int Send(const Options& options, const DataArguments& arguments, Report& report) {
  const std::uint64_t size = SizeOfFile(arguments.file);
  if (const auto why = Unfit(kSendData, size)) {
    throw ToolFailure(kBadFile, arguments.file + " " + *why, "Nothing was sent.");
  }
  Bytes data = ReadInputFile(arguments.file, size);
  const auto length = static_cast<std::uint32_t>(data.size());
  data.resize(data.size() + kLongestChunk);
  report["function"] = kSendData.function;
  report["file"] = arguments.file;
  report["bytes"] = length;
  const auto sendAll = [&](const Session& session) {
    return Observe(session, kSendData, data.data(), length, nullptr, 0, arguments.parameters);
  };
  if (arguments.dryRun) {
    report["dry run"] = true;
    ReportRehearsal(Rehearse({}, sendAll), report);
    return kDone;
  }
  const Session session(options.device, Use::kWriting);
  RequireUnit(session, "vendor");
  Progress progress(options.json);
  ImageTransfers image(length);
  session.SetObserver([&](const Transfer& transfer) {
    image.OnTransfer(transfer);
    progress.Update(image.sentPercent());
  });
  progress.Begin("send");
  const CallOutcome outcome = sendAll(session);
  session.RefuseStopped();
  Check(kSendData.function, outcome.result);
  if (!image.complete()) {
    throw ToolFailure(
        kTransferFailed,
        "the camera stopped taking the data at " + std::to_string(image.sentPercent()) + " %",
        "run this command once more.", "it holds part of the data and has burned nothing");
  }
  progress.Complete();
  report["sent"] = true;
  report["verified"] = "no: the camera acknowledged every transfer, no more is known";
  return kDone;
}

struct ReadProgress {
  Progress& progress;

  static void OnPercentLeft(std::uint32_t value, std::uint64_t user) {
    reinterpret_cast<ReadProgress*>(user)->progress.Update(value > 100 ? 0 : 100 - value);
  }
};

void ConfirmOutput(const Options& options, const std::string& file) {
  if (FileExists(file)) {
    Confirm(options, file + " will be overwritten");
  }
}

int ReadData(const Options& options, const DataArguments& arguments, Report& report) {
  const Session session(options.device, Use::kReading);
  ConfirmOutput(options, arguments.file);
  Progress progress(options.json);
  ReadProgress read = {progress};
  Bytes data(arguments.room);
  std::uint32_t length = 0;
  progress.Begin("read");
  session.Call(
      "ZEMAPI_ReadFWData",
      [&](void* device) {
        return ZEMAPI_ReadFWData(device, data.data(), arguments.room, &length,
                                 ReadProgress::OnPercentLeft,
                                 reinterpret_cast<std::uint64_t>(&read));
      },
      [&](ZemResult result) -> std::optional<ResultText> {
        if (result != ZEM_E_BUFFER_TOO_SMALL) {
          return std::nullopt;
        }
        ResultText text = Describe(result);
        text.meaning =
            "the camera has more than " + std::to_string(arguments.room) + " bytes ready";
        text.advice = "Give more room with --max.";
        return text;
      });
  progress.Complete();
  data.resize(length);
  WriteOutputFile(arguments.file, data);
  report["function"] = "ZEMAPI_ReadFWData";
  report["bytes"] = length;
  report["file"] = arguments.file;
  report["verified"] = "no: every transfer succeeded, no more is known";
  return kDone;
}

int ReadFlashCommand(const Options& options, const DataArguments& arguments, Report& report) {
  if (arguments.size == 0 || std::uint64_t{arguments.address} + arguments.size > 0x100000000ULL) {
    throw UsageError("the flash is addressed with 32 bits, and at least one byte is read");
  }
  report["function"] = "ZEMAPI_ReadPartialFlashData";
  report["address"] = HexNumber(arguments.address, 6);
  report["bytes"] = arguments.size;
  if (arguments.dryRun) {
    report["dry run"] = true;
    ReportRehearsal(Rehearse({},
                             [&](const Session& session) {
                               Progress silent(true);
                               ReadFlash(session, arguments.address, arguments.size, silent);
                             }),
                    report);
    return kDone;
  }
  const Session session(options.device, Use::kReading);
  ConfirmOutput(options, arguments.file);
  Progress progress(options.json);
  progress.Begin("read", {0, arguments.verify ? 50U : 100U});
  const Bytes flash = ReadFlash(session, arguments.address, arguments.size, progress);
  if (arguments.verify) {
    progress.Begin("verify", {50, 100});
    const Bytes again = ReadFlash(session, arguments.address, arguments.size, progress);
    if (const auto at = FirstDifference(flash, again)) {
      throw ToolFailure(kNotVerified,
                        "two reads of the flash differ, first at " +
                            HexNumber(arguments.address + std::uint64_t{*at}, 6),
                        "No file was written. Check the cable and run this command once more.");
    }
  }
  progress.Complete();
  WriteOutputFile(arguments.file, flash);
  report["file"] = arguments.file;
  report["verified"] =
      arguments.verify ? "two reads are equal"
                       : "no: every transfer succeeded, no more is known (--verify reads twice)";
  return kDone;
}

}  // namespace

void AddDataCommands(Program& program) {
  const auto arguments = std::make_shared<DataArguments>();
  const auto bind = [arguments](auto function) {
    return [arguments, function](const Options& options, Report& report) {
      return function(options, *arguments, report);
    };
  };
  const auto addGroup = [&](const char* name, const char* description) {
    CLI::App* const group = program.app().add_subcommand(name, description)->require_subcommand(1);
    group->fallthrough();
    return group;
  };
  const auto addDryRun = [arguments](CLI::App* command) {
    command->add_flag("--dry-run", arguments->dryRun, "Show what would be sent, without a camera");
  };
  CLI::App* const data = addGroup("data", "Send data to the camera, or read what it has ready");
  CLI::App* const send = program.AddCommand(data, "send", "Send a file", bind(Send));
  send->add_option("file", arguments->file, "The file")->required();
  send->add_option("--param2", arguments->parameters.param2, "Byte 2 of the announcement");
  send->add_option("--param3", arguments->parameters.param3, "Byte 3 of the announcement");
  addDryRun(send);
  CLI::App* const read =
      program.AddCommand(data, "read", "Read what is ready", bind(ReadData), {.yes = true});
  read->add_option("file", arguments->file, "The file to write")->required();
  read->add_option("--max", arguments->room, "Most bytes to take")
      ->check(CLI::Range(1U, 0x10000000U));

  CLI::App* const flash = addGroup("flash", "Reach the camera's flash");
  CLI::App* const readFlash = program.AddCommand(flash, "read", "Read the flash back into a file",
                                                 bind(ReadFlashCommand), {.yes = true});
  readFlash->add_option("address", arguments->address, "Decimal or 0x hexadecimal")->required();
  readFlash->add_option("size", arguments->size, "Bytes")
      ->required()
      ->check(CLI::Range(1U, 0x10000000U));
  readFlash->add_option("file", arguments->file, "The file to write")->required();
  readFlash->add_flag("--verify", arguments->verify, "Read everything twice and compare");
  addDryRun(readFlash);
}

}  // namespace zemctl
