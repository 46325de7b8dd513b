// A run of zemctl in virtual time, from its beginning to its end: it waits as ever, and that takes
// no time. How many milliseconds it has waited is then in the file $ZEM_WAITED.
#include <cstdio>
#include <cstdlib>

#include "tests/zemctl/virtual_time/virtual_time.h"

namespace {

class WholeRun {
 public:
  WholeRun() = default;
  ~WholeRun() {
    const char* const path = std::getenv("ZEM_WAITED");
    std::FILE* const file = path != nullptr ? std::fopen(path, "wb") : nullptr;
    if (file != nullptr) {
      std::fprintf(file, "%llu\n",
                   static_cast<unsigned long long>(VirtualTime::Milliseconds() - began_));
      std::fclose(file);
    }
  }
  WholeRun(const WholeRun&) = delete;
  WholeRun& operator=(const WholeRun&) = delete;

 private:
  VirtualTime time_;
  std::uint64_t began_ = VirtualTime::Milliseconds();
};

const WholeRun kWholeRun;

}  // namespace
