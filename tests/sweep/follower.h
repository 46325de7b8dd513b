// Follows an operation along its plan, request by request: says what becomes of each request and
// what must be true in the end.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "tests/sweep/plan.h"

namespace zem::testing::sweep {

using Bytes = std::vector<std::uint8_t>;

// A healthy run on the simulated devices, by the steps of the plan's first path.
struct Recording {
  struct Transfer {
    Bytes sent;
    Bytes answer;
  };
  std::vector<Transfer> transfers;
  // What each output holds in the end.
  std::vector<Bytes> outputs;
  // Whether it holds something else then.
  std::vector<bool> changed;
};

// The faults of one run, by the number of the request, counted from 1.
using Schedule = std::map<std::uint32_t, Fault>;

// What becomes of a request: the fault, and what a read would deliver without it.
struct Answer {
  Fault fault = Fault::kNone;
  Bytes bytes;
};

class Follower {
 public:
  // Without a recording, which is being made then, neither the bytes sent nor outputs are looked
  // at.
  Follower(const Plan& plan, const Recording* recording, const Schedule& schedule)
      : plan_(plan), recording_(recording), schedule_(schedule) {
    Enter(0, 0, false);
  }

  // The operation makes a request, `milliseconds` after its begin and having sent `said` texts to
  // the debugger, and sends these bytes with it.
  Answer Next(const Request& request, std::span<const std::uint8_t> sent,
              std::uint32_t milliseconds, std::size_t said);

  // The operation has returned, having sent these texts to the debugger.
  void Finish(ZemResult result, std::uint32_t milliseconds, const std::vector<std::wstring>& said);

  // What output `index` holds must be right: `before` at first, `after` in the end.
  void CheckOutput(std::size_t index, std::span<const std::uint8_t> before,
                   std::span<const std::uint8_t> after);

  bool isGone() const { return isGone_; }
  std::uint32_t requests() const { return requests_; }
  // Reads of controls of extension units so far, each of which initialises COM.
  int reads() const { return reads_; }
  // How many more volumes are open.
  int volumes() const { return volumes_; }
  // What was not as it must be.
  const std::vector<std::string>& complaints() const { return complaints_; }

 private:
  struct Piece {
    std::size_t offset;
    std::size_t length;
    Content content;
  };

  const Step& step() const { return plan_.paths[path_].steps[place_]; }
  void Complain(std::string what) { complaints_.push_back(std::move(what)); }
  void Enter(std::size_t path, std::size_t place, bool hurries);
  void Apply(const Reaction& first, Fault fault);
  void End(const Reaction& reaction, ZemResult result);
  void CheckSent(const Request& request, std::span<const std::uint8_t> sent);
  Bytes AnswerTo(const Request& request) const;
  void Say(const Says& texts, Fault fault = Fault::kNone);
  void SayOfRequest(const Reaction& reaction, Fault fault);
  void CheckSaid(const std::vector<std::wstring>& said);
  void Deliver(Content content);
  void CheckBytes(const std::string& name, Content content, std::size_t index, std::size_t offset,
                  std::span<const std::uint8_t> before, std::span<const std::uint8_t> after);
  void CheckNumber(std::span<const std::uint8_t> before, std::span<const std::uint8_t> after);

  const Plan& plan_;
  const Recording* recording_;
  const Schedule& schedule_;

  std::size_t path_ = 0;
  std::size_t place_ = 0;
  std::uint32_t requests_ = 0;
  std::uint32_t tries_ = 0;    // of this step that were made again
  std::uint32_t elapsed_ = 0;  // virtual ms since the begin
  std::optional<std::uint32_t> pollStart_;
  std::uint32_t probes_ = 0;
  int reads_ = 0;
  int volumes_ = 0;
  bool isGone_ = false;
  bool staysBusy_ = false;
  bool isFaulty_ = false;

  bool isOver_ = false;
  bool isDone_ = false;  // behind the last step
  ZemResult result_ = 0;
  Content first_ = Content::kUnsaid;
  Content second_ = Content::kUnsaid;
  std::optional<std::uint32_t> number_;
  Says says_;
  std::vector<Piece> pieces_;
  std::size_t delivered_ = 0;

  std::vector<std::string> complaints_;
};

// The result of a faulty request to a camera, and the system's error of one to a volume, or 0.
ZemResult ResultOf(Fault fault);
std::uint32_t ErrorOf(Fault fault);

}  // namespace zem::testing::sweep
