// zemctl over the kernel says what it says over the simulated camera in its own process, letter by
// letter but for the names of places.
#include <sstream>
#include <string>

#include "tests/kernel/plugged_camera.h"

namespace {

using zem::testing::PluggedCamera;
using zem::testing::ReadText;
using zem::testing::RunProgram;

class Transcripts : public ::testing::Test {
 protected:
  // Runs a section of the tour, and compares it with the one that was run before this machine
  // began.
  static void Compare(const std::string& section) {
    const auto run = RunProgram("sh /zem/transcript.sh kernel " + section + " /tmp/transcripts");
    EXPECT_EQ(run.errors, "");
    const std::string expected = ReadText("/zem/transcripts/linux-" + section + ".txt");
    EXPECT_NE(expected, "");
    std::istringstream lines(run.output);
    std::istringstream expectedLines(expected);
    std::string line;
    std::string expectedLine;
    std::string command;
    while (std::getline(expectedLines, expectedLine)) {
      command = expectedLine.starts_with("$ ") ? expectedLine : command;
      ASSERT_TRUE(std::getline(lines, line)) << command;
      ASSERT_EQ(line, expectedLine) << command;
    }
    EXPECT_FALSE(std::getline(lines, line)) << line;
  }

  static std::string Options(const std::string& section) {
    return RunProgram("sh /zem/transcript.sh options " + section).output;
  }
};

TEST_F(Transcripts, AreTheSame) {
  std::istringstream sections(RunProgram("sh /zem/transcript.sh sections").output);
  std::string section;
  int count = 0;
  while (sections >> section) {
    ++count;
    if (section == "absent") {
      Compare(section);
      continue;
    }
    const PluggedCamera plugged(Options(section));
    Compare(section);
  }
  EXPECT_EQ(count, 9);
}

}  // namespace
