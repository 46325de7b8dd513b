// Every export that talks to a camera or a volume, as an operation that anyone can run: a fuzzer
// with arguments of any kind, a sweep of failures with the usual ones.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "platform/com.h"

namespace zem::testing {

// Where the arguments of an operation come from.
class Choices {
 public:
  virtual ~Choices() = default;
  // A number of 0 to `most`; a healthy run takes `usual`.
  virtual std::uint64_t Number(std::uint64_t usual, std::uint64_t most) = 0;
  // Whether a pointer that may be null is.
  virtual bool LeftOut() = 0;
  // The caller's data.
  virtual void Fill(std::span<std::uint8_t> bytes) = 0;

  // The operation gets this memory, with what it holds at first.
  enum class Use : std::uint8_t { kRead, kWritten };
  virtual void Give(std::span<std::uint8_t> /*memory*/, Use /*use*/) {}
};

// What a healthy run takes: nothing is left out, data is 1, 2, 3, ...
class UsualChoices : public Choices {
 public:
  std::uint64_t Number(std::uint64_t usual, std::uint64_t most) override;
  bool LeftOut() override { return false; }
  void Fill(std::span<std::uint8_t> bytes) override;
};

// What an operation needs before it can be run.
enum class Ground : std::uint8_t {
  kSystem,   // cameras and volumes that are listed
  kDevice,   // an opened camera
  kFilter,   // a device object
  kSession,  // a ROM-boot session
};

// What there is to run operations on.
struct Stage {
  void* device = nullptr;         // a handle
  IBaseFilter* filter = nullptr;  // a device object, the runner's
  void* session = nullptr;
  // By which the listed camera and microphone are found.
  std::wstring displayName;
  std::wstring devicePath;
  std::wstring microphoneName;
};

// The arguments of one run, in memory of just their size. All of it is gone with the call.
class Call {
 public:
  Call(Stage& stage, Choices& choices) : stage_(stage), choices_(choices) {}
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  Stage& stage() { return stage_; }
  // The handle, the device object, the session; or null, which each but a few functions takes.
  void* Device() { return choices_.LeftOut() ? nullptr : stage_.device; }
  IBaseFilter* Filter() { return choices_.LeftOut() ? nullptr : stage_.filter; }
  void* Session() { return choices_.LeftOut() ? nullptr : stage_.session; }

  template <class Number>
  Number Any(std::uint64_t usual = 1, std::uint64_t most = static_cast<Number>(~Number{})) {
    return static_cast<Number>(choices_.Number(usual, most));
  }
  // How much data the operation moves; the bound of its requests counts it.
  std::uint32_t Length(std::uint32_t usual, std::uint32_t most);

  using Use = Choices::Use;
  // `size` bytes for the library to read; or null, where that is a refusal.
  std::uint8_t* Bytes(std::size_t size) { return OrNull(size, Use::kRead); }
  // The same for the library to fill.
  std::uint8_t* Buffer(std::size_t size) { return OrNull(size, Use::kWritten); }
  template <class Type>
  Type* Out() {
    return reinterpret_cast<Type*>(Buffer(sizeof(Type)));
  }
  // Either, never null; at least as long as `size` rounded up to whole units, and begins with
  // `start`.
  std::uint8_t* BytesAlways(std::size_t size, Use use, std::size_t unit = 1,
                            std::span<const std::uint8_t> start = {});
  // Out, never null, with a value at first.
  template <class Type>
  Type* InOut(Type value) {
    return reinterpret_cast<Type*>(
        BytesAlways(sizeof(Type), Use::kWritten, 1,
                    {reinterpret_cast<const std::uint8_t*>(&value), sizeof(value)}));
  }
  // A block of `size` bytes that begins with this code, or any other; or null.
  std::uint8_t* Command(std::size_t size, std::uint8_t usual);

  // The path of a file in memory: these bytes, or any; or null.
  const wchar_t* File(const std::vector<std::uint8_t>& usual);
  // This text, any other, or null.
  const wchar_t* Text(const std::wstring& usual);
  // A callback, or none.
  ProgressCallback Progress();

  std::uint64_t length() const { return length_; }
  // Matching cameras that the operation passes over: each keeps a reference that nobody gives back.
  std::uint32_t Skipped(std::uint32_t usual, std::uint32_t most);
  std::uint32_t skipped() const { return skipped_; }

 private:
  std::uint8_t* OrNull(std::size_t size, Use use) {
    return choices_.LeftOut() ? nullptr : BytesAlways(size, use);
  }
  const wchar_t* Keep(const std::wstring& text);

  Stage& stage_;
  Choices& choices_;
  std::uint64_t length_ = 0;
  std::uint32_t skipped_ = 0;
  std::vector<std::unique_ptr<std::uint8_t[]>> memory_;
  std::vector<std::unique_ptr<wchar_t[]>> texts_;
  std::vector<int> files_;
};

// The most requests that an operation makes, whatever it is answered: transfers of controls,
// standard controls read or written, commands to a volume. Finding a unit's node is none.
struct Bound {
  std::uint64_t requests = 0;
  // For each begun piece of so many bytes of the operation's data ...
  std::uint32_t piece = 1;
  // ... so many more.
  std::uint32_t each = 0;

  std::uint64_t Of(std::uint64_t length) const {
    return requests + (length + piece - 1) / piece * each;
  }
};

struct Operation {
  const char* name;  // as it is exported
  Ground ground;
  Bound bound;
  ZemResult (*run)(Call& call);
};

// As a test's parameter it is its name.
inline void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

std::span<const Operation> Operations();

// The exports that ask neither a camera nor a volume for anything.
std::span<const std::string_view> ExportsWithoutDevice();

}  // namespace zem::testing
