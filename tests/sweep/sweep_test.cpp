// Every operation that talks to a device, with each of its requests faulty in turn, alone and
// together with the next one: what it returns, what it asks for behind the fault, what its outputs
// hold, how long it takes, and what it leaves behind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>

#include "tests/support/log_folder.h"
#include "tests/sweep/run.h"

namespace zem::testing::sweep {
namespace {

// An operation of more requests is not swept at each of them, but at this many of its first, of
// those in its middle and of its last.
constexpr std::uint32_t kMostPlaces = 100;
constexpr std::uint32_t kSomePlaces = 4;

constexpr std::array<Fault, kFaults> kAllFaults = {
    Fault::kFails,    Fault::kFailsFull, Fault::kShort, Fault::kGarbage,
    Fault::kPositive, Fault::kGone,      Fault::kBusy,  Fault::kStaysBusy};

struct Family {
  const char* name;
  std::string_view first;  // of its operations
};
constexpr std::array<Family, 14> kFamilies = {{
    {"Opening and closing", "ZEMAPI_OpenDevice"},
    {"Raw access", "ZEMAPI_UvcExtSet"},
    {"Registers and vendor commands", "ZEMAPI_SetRegister"},
    {"Image tuning", "ZEMAPI_GetFWBuildDate"},
    {"Standard controls and sound", "ZEMAPI_GetVideoProcAmp"},
    {"Bulk data", "ZEMAPI_SendData"},
    {"Firmware update", "ZEMAPI_UpdateFW_516x"},
    {"Non-volatile memory and tables", "ZEMAPI_WriteNVMEM"},
    {"Calls without a handle", "ZEMUVCEXT_DoAF"},
    {"ROM boot", "ZEMAPI_ResetToRomboot"},
    {"H.264", "ZEMAPI_GetH264FrameList"},
    {"Encoding unit", "WREN_OpenDevice"},
    {"Streams and endpoints", "ORVAAPI_GetVersion"},
    {"", ""},
}};

struct Tally {
  std::uint32_t requests = 0;
  std::uint32_t single = 0;
  std::uint32_t pairs = 0;
  std::uint32_t leftOut = 0;  // places

  void Add(const Tally& other) {
    requests += other.requests;
    single += other.single;
    pairs += other.pairs;
    leftOut += other.leftOut;
  }
};

std::string LineOf(std::string_view name, const Tally& tally) {
  std::array<char, 120> line = {};
  std::snprintf(line.data(), line.size(), "%-44.*s %9u %9u %9u %9u\n",
                static_cast<int>(name.size()), name.data(), tally.requests, tally.single,
                tally.pairs, tally.leftOut);
  return line.data();
}

// What has been swept, for the report.
class Report {
 public:
  static Tally& Of(const Operation& operation) { return Tallies()[operation.name]; }

  static std::string Text() {
    std::string text;
    std::string families;
    Tally family;
    Tally all;
    std::size_t next = 0;
    const auto endFamily = [&] {
      if (next > 0) {
        families += LineOf(kFamilies[next - 1].name, std::exchange(family, {}));
      }
    };
    for (const Operation& operation : Operations()) {
      if (operation.name == kFamilies[next].first) {
        endFamily();
        ++next;
      }
      const Tally& tally = Tallies()[operation.name];
      text += LineOf(operation.name, tally);
      family.Add(tally);
      all.Add(tally);
    }
    endFamily();
    const std::string head =
        "                                              requests    single     pairs  left out\n";
    return head + text + "\n" + head + families + LineOf("all", all);
  }

  static bool IsWhole() { return Tallies().size() == Operations().size(); }

 private:
  static std::map<std::string, Tally>& Tallies() {
    static std::map<std::string, Tally> tallies;
    return tallies;
  }
};

TEST(SweepPlansTest, EveryOperationHasAPlan) {
  std::set<const Plan*> plans;
  for (const Operation& operation : Operations()) {
    const Plan* const plan = FindPlan(operation.name);
    ASSERT_NE(plan, nullptr) << operation.name;
    plans.insert(plan);
  }
  EXPECT_EQ(plans.size(), Operations().size());
  EXPECT_EQ(PlanCount(), Operations().size());
}

class SweepTest : public ::testing::TestWithParam<Operation> {
 protected:
  static void TearDownTestSuite() {
    if (!Report::IsWhole()) {
      return;
    }
    const std::string text = Report::Text();
    std::printf("Cases by operation\n%s", text.c_str());
    // Several builds of the tests may be running: each puts a whole file there.
    const std::filesystem::path path = ZEM_SWEEP_REPORT;
    std::filesystem::create_directories(path.parent_path());
    const std::filesystem::path own = path.string() + "." + std::to_string(getpid());
    std::ofstream(own) << text;
    std::filesystem::rename(own, path);
  }

  const Plan& plan() const { return *FindPlan(GetParam().name); }

  // A fault that a request cannot have: a volume gives no code, a camera is not asked again.
  static bool CanBe(Fault fault, const Request& request) {
    const bool isVolume = request.target == Request::Target::kVolume;
    return isVolume ? fault != Fault::kPositive
                    : fault != Fault::kBusy && fault != Fault::kStaysBusy;
  }

  // The places at which it is swept, counted from 1.
  std::vector<std::uint32_t> Places() const {
    const auto count = static_cast<std::uint32_t>(plan().paths[0].steps.size());
    std::vector<std::uint32_t> places;
    for (std::uint32_t place = 1; place <= count; ++place) {
      const bool isSome = place <= kSomePlaces || place > count - kSomePlaces ||
                          (place > count / 2 && place <= count / 2 + kSomePlaces);
      if (count <= kMostPlaces || isSome) {
        places.push_back(place);
      }
    }
    return places;
  }

  // A run whose complaints are the test's; how many requests it made. Nothing more is run behind
  // some complaints, which would be many.
  std::uint32_t Execute(const Schedule& schedule) {
    if (complaining_ > 5) {
      return 0;
    }
    const RunOutcome outcome = Play(GetParam(), plan(), recording_, schedule);
    if (!outcome.complaints.empty()) {
      ++complaining_;
      std::string text;
      for (const auto& [place, fault] : schedule) {
        text += "request " + std::to_string(place) + " " + NameOf(fault) + ", ";
      }
      for (const std::string& complaint : outcome.complaints) {
        ADD_FAILURE() << text << "then: " << complaint;
      }
    }
    return outcome.requests;
  }

  void MakeRecording() {
    const RunOutcome outcome = Record(GetParam(), plan(), recording_);
    for (const std::string& complaint : outcome.complaints) {
      ADD_FAILURE() << "a healthy run: " << complaint;
    }
  }

  LogFolder logFolder_;
  Recording recording_;
  int complaining_ = 0;
};

TEST_P(SweepTest, EachRequestAndEachTwo) {
  MakeRecording();
  ASSERT_FALSE(HasFailure());
  const auto& healthy = plan().paths[0].steps;
  ASSERT_EQ(recording_.transfers.size(), healthy.size());
  for (std::size_t output = 0; output < recording_.outputs.size(); ++output) {
    EXPECT_EQ(recording_.changed[output], plan().paths[0].content != Content::kUntouched)
        << "output " << output + 1 << " of a healthy run";
  }
  EXPECT_EQ(Execute({}), healthy.size());
  Tally& tally = Report::Of(GetParam());
  const std::vector<std::uint32_t> places = Places();
  tally.requests = static_cast<std::uint32_t>(healthy.size());
  tally.leftOut = tally.requests - static_cast<std::uint32_t>(places.size());
  for (const std::uint32_t place : places) {
    const Request& request = healthy[place - 1].request;
    for (const Fault first : kAllFaults) {
      if (!CanBe(first, request)) {
        continue;
      }
      ++tally.single;
      const bool hasNext =
          Execute({{place, first}}) > place && first != Fault::kGone && first != Fault::kStaysBusy;
      for (const Fault second : kAllFaults) {
        // All requests of an operation are of the same device, but for the standard controls.
        if (hasNext && CanBe(second, request)) {
          ++tally.pairs;
          Execute({{place, first}, {place + 1, second}});
        }
      }
    }
  }
}

std::string SweptName(const ::testing::TestParamInfo<Operation>& info) {
  std::string name = info.param.name;
  std::erase_if(name, [](char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) == 0 && letter != '_';
  });
  return name;
}

INSTANTIATE_TEST_SUITE_P(Exports, SweepTest, ::testing::ValuesIn(Operations()), SweptName);

}  // namespace
}  // namespace zem::testing::sweep
