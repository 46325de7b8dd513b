// zemctl table list, zemctl table read, zemctl table write, zemctl table dump, zemctl table init
#include <array>
#include <memory>

#include "tools/zemctl/camera/waiting.h"
#include "tools/zemctl/commands/comparison.h"
#include "tools/zemctl/commands/payload.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

constexpr std::size_t kImageSize = 8192;
constexpr unsigned char kImageMark = 0xEE;
constexpr std::size_t kHeaderSize = 4;  // of the image and of each entry
constexpr unsigned kTableIds = 256;

struct TableArguments {
  unsigned short id = 0;
  std::vector<std::string> bytes;
  std::string input;
  std::string output;
  std::string image;
  bool dryRun = false;
};

// The camera's table store, read once.
class TableStore {
 public:
  explicit TableStore(const Session& session) : session_(session) {
    session.Call(
        "ZEMAPI_OpenTableHandle",
        [this](void* device) { return ZEMAPI_OpenTableHandle(device, &table_); },
        [](ZemResult result) -> std::optional<ResultText> {
          if (result != ZEM_E_REFUSED) {
            return std::nullopt;
          }
          return ResultText{"ZEM_E_REFUSED", "the camera has no table store",
                            "Give it one with \"zemctl table init\".", kLibraryRefused};
        });
  }
  ~TableStore() {
    static_cast<void>(session_.Observe("ZEMAPI_CloseTableHandle", [this](void* device) {
      return ZEMAPI_CloseTableHandle(device, &table_);
    }));
  }
  TableStore(const TableStore&) = delete;
  TableStore& operator=(const TableStore&) = delete;

  unsigned char* table() const { return table_; }

  std::vector<unsigned char> Image() const {
    std::vector<unsigned char> image(kImageSize);
    std::uint32_t size = 0;
    session_.Call("ZEMAPI_DumpWholeTable", [&](void* device) {
      return ZEMAPI_DumpWholeTable(device, table_, image.data(), kImageSize, &size);
    });
    image.resize(size);
    return image;
  }

 private:
  const Session& session_;
  unsigned char* table_ = nullptr;
};

// What a search through a whole image brings up.
struct Directory {
  Report rows = Report::array();
  std::size_t entryBytes = 0;  // of the tables found, with their headers
  bool isSound = true;
};

// `table` is a table handle or as much memory as one has.
Directory Search(unsigned char* table) {
  Directory directory;
  std::vector<unsigned char> payload(kImageSize);
  for (unsigned id = 0; id < kTableIds; ++id) {
    const auto wanted = static_cast<std::uint8_t>(id);
    std::uint16_t size = 0;
    if (ZEMAPI_GetTableSize(nullptr, table, wanted, &size) >= 0) {
      directory.rows.push_back({{"id", HexNumber(id, 2)}, {"bytes", size}});
      directory.entryBytes += kHeaderSize + size;
    } else if (ZEMAPI_ReadTableEx(nullptr, table, wanted, payload.data(), kImageSize, nullptr) <
               0) {
      // A search that does not end at a table of this id went through the whole image.
      directory.isSound = false;
    }
  }
  return directory;
}

CallFailure CorruptEntry() {
  return {"ZEMAPI_ReadTableEx",
          ZEM_E_FAIL,
          {"ZEM_E_FAIL", "the table store has a corrupt entry",
           "Replace it with \"zemctl table init\".", kLibraryRefused}};
}

int ListTables(const Options& options, const TableArguments& /*arguments*/, Report& report) {
  const Session session(options.device, Use::kReading);
  const TableStore store(session);
  const Directory directory = Search(store.table());
  report["bytes"] = store.Image().size();
  report["sound"] = directory.isSound;
  report["tables"] = directory.rows;
  if (!directory.isSound) {
    throw PartialFailure(CorruptEntry().failure());
  }
  return kDone;
}

// Why a table that has no size cannot be read.
[[noreturn]] void RefuseTable(const TableStore& store, unsigned id) {
  std::vector<unsigned char> payload(kImageSize);
  const ZemResult result = ZEMAPI_ReadTableEx(nullptr, store.table(), static_cast<std::uint8_t>(id),
                                              payload.data(), kImageSize, nullptr);
  if (result < 0) {
    throw CorruptEntry();
  }
  throw CallFailure("ZEMAPI_GetTableSize", ZEM_E_REFUSED,
                    {"ZEM_E_REFUSED", "the table store has no table " + HexNumber(id, 2),
                     "Run \"zemctl table list\" to see its tables.", kLibraryRefused});
}

std::vector<unsigned char> ReadTable(const TableStore& store, unsigned id) {
  const auto wanted = static_cast<std::uint8_t>(id);
  std::uint16_t size = 0;
  if (ZEMAPI_GetTableSize(nullptr, store.table(), wanted, &size) < 0) {
    RefuseTable(store, id);
  }
  // Some memory for an empty table, too.
  std::vector<unsigned char> payload(size + 1U);
  Check("ZEMAPI_ReadTableEx",
        ZEMAPI_ReadTableEx(nullptr, store.table(), wanted, payload.data(), size, nullptr));
  payload.pop_back();
  return payload;
}

int ShowTable(const Options& options, const TableArguments& arguments, Report& report) {
  const Session session(options.device, Use::kReading);
  const std::vector<unsigned char> payload = ReadTable(TableStore(session), arguments.id);
  report["id"] = HexNumber(arguments.id, 2);
  report["bytes"] = payload.size();
  ShowPayload(payload, arguments.output, report);
  return kDone;
}

int WriteTable(const Options& options, const TableArguments& arguments, Report& report) {
  const std::vector<unsigned char> data = TakePayload(arguments.bytes, arguments.input, kImageSize);
  const Session session(options.device, Use::kWriting);
  const std::size_t size = ReadTable(TableStore(session), arguments.id).size();
  if (data.size() != size) {
    throw ToolFailure(kBadFile,
                      "table " + HexNumber(arguments.id, 2) + " has " + std::to_string(size) +
                          " bytes and not " + std::to_string(data.size()),
                      "The size of a table never changes. Nothing was written.");
  }
  report["id"] = HexNumber(arguments.id, 2);
  report["bytes"] = data.size();
  if (arguments.dryRun) {
    report["would be written"] = HexText(data);
    return kDone;
  }
  Confirm(options, "The camera " + NameOf(session.device()) + ": its table " +
                       HexNumber(arguments.id, 2) + " will be overwritten");
  std::uint32_t written = 0;
  session.Call("ZEMAPI_WriteTable", [&](void* device) {
    return ZEMAPI_WriteTable(device, static_cast<std::uint8_t>(arguments.id), data.data(),
                             static_cast<std::uint32_t>(data.size()), &written);
  });
  RequireSame(data,
              ReadBack("the table was written",
                       [&] { return ReadTable(TableStore(session), arguments.id); }),
              "the table");
  report["written and compared"] = true;
  return kDone;
}

int DumpTables(const Options& options, const TableArguments& arguments, Report& report) {
  const Session session(options.device, Use::kReading);
  const std::vector<unsigned char> image = TableStore(session).Image();
  report["bytes"] = image.size();
  ShowPayload(image, arguments.output, report);
  return kDone;
}

// The image in a file, unless the camera would not take it for one or could not be searched with
// it.
std::vector<unsigned char> ReadImageFile(const std::string& path, Report& report) {
  const auto refuse = [&path](const std::string& why) {
    throw ToolFailure(kBadFile, path + " " + why, "Nothing was sent.");
  };
  const std::uint64_t size = SizeOfFile(path);
  if (size < kHeaderSize || size > kImageSize) {
    refuse("is no table store: it has " + std::to_string(size) + " bytes");
  }
  std::vector<unsigned char> image = ReadInputFile(path, size);
  if (image[0] != kImageMark) {
    refuse("is no table store: it does not begin with 0xEE");
  }
  const std::size_t total = image[2] + 256U * image[3];
  if (total != image.size()) {
    refuse("has " + std::to_string(image.size()) + " bytes and says that it has " +
           std::to_string(total));
  }
  std::vector<unsigned char> table = image;
  table.resize(kImageSize, 0xFF);
  const Directory directory = Search(table.data());
  if (!directory.isSound) {
    refuse("has a corrupt entry");
  }
  if (kHeaderSize + directory.entryBytes > image.size()) {
    refuse("has an entry that ends behind it");
  }
  report["bytes"] = image.size();
  report["tables"] = directory.rows;
  return image;
}

// The library does not wait for the camera to write what it was sent.
void AwaitIdle(const Session& session) {
  constexpr unsigned short kStatusSelector = 5;
  constexpr unsigned char kFailed = 0x82;
  constexpr unsigned kPollMilliseconds = 30;
  constexpr int kPolls = 1000;
  for (int poll = 0; poll < kPolls; ++poll) {
    std::array<unsigned char, 8> status = {};
    ZemULong moved = 0;
    session.Call("ZEMAPI_ZemExtGet", [&](void* device) {
      return ZEMAPI_ZemExtGet(device, kStatusSelector, status.data(),
                              static_cast<ZemULong>(status.size()), &moved);
    });
    if (status[0] == 0) {
      return;
    }
    if (status[0] == kFailed) {
      throw ToolFailure(kCameraRefused, "the camera reports that it could not write the tables",
                        "Check its table store with \"zemctl table list\".");
    }
    Wait(kPollMilliseconds);
  }
  throw ToolFailure(kCameraRefused, "the camera is still busy after half a minute",
                    "Check its table store with \"zemctl table list\".");
}

int InitTables(const Options& options, const TableArguments& arguments, Report& report) {
  const std::vector<unsigned char> image = ReadImageFile(arguments.image, report);
  if (arguments.dryRun) {
    report["would be sent"] = HexText(image);
    return kDone;
  }
  const Session session(options.device, Use::kWriting);
  Confirm(options,
          "The camera " + NameOf(session.device()) + ": its whole table store will be overwritten");
  session.Call("ZEMAPI_WriteInitialTable", [&](void* device) {
    return ZEMAPI_WriteInitialTable(device, image.data(), static_cast<std::uint32_t>(image.size()));
  });
  RequireSame(image,
              ReadBack("the table store was sent",
                       [&] {
                         AwaitIdle(session);
                         return TableStore(session).Image();
                       }),
              "the table store");
  report["written and compared"] = true;
  return kDone;
}

}  // namespace

void AddTableCommands(Program& program) {
  const auto arguments = std::make_shared<TableArguments>();
  const auto bind = [arguments](auto function) {
    return [arguments, function](const Options& options, Report& report) {
      return function(options, *arguments, report);
    };
  };
  CLI::App* const tables = program.app()
                               .add_subcommand("table", "Read and write the table store")
                               ->require_subcommand(1);
  tables->fallthrough();
  const auto addId = [arguments](CLI::App* command) {
    command->add_option("id", arguments->id, "Id of the table, decimal or 0x hexadecimal")
        ->required()
        ->check(CLI::Range(255));
    return command;
  };
  const auto addOutput = [arguments](CLI::App* command) {
    command->add_option("--output", arguments->output, "Write the bytes to this file");
  };
  const auto addDryRun = [arguments](CLI::App* command) {
    command->add_flag("--dry-run", arguments->dryRun, "Print what would be written, and stop");
  };
  program.AddCommand(tables, "list", "List the tables, and check the store", bind(ListTables));
  addOutput(addId(program.AddCommand(tables, "read", "Read a table", bind(ShowTable))));
  CLI::App* const write = addId(program.AddCommand(tables, "write", "Replace a table, and compare",
                                                   bind(WriteTable), {.yes = true}));
  write->add_option("bytes", arguments->bytes, "Hexadecimal");
  write->add_option("--input", arguments->input, "Take them from this file");
  addDryRun(write);
  addOutput(program.AddCommand(tables, "dump", "Read the whole store", bind(DumpTables)));
  CLI::App* const init = program.AddCommand(tables, "init", "Replace the whole store, and compare",
                                            bind(InitTables), {.yes = true});
  init->add_option("image", arguments->image, "File with the store's image, as dump writes it")
      ->required();
  addDryRun(init);
}

}  // namespace zemctl
