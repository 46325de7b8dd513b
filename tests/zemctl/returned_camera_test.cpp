// Which camera counts as the one that came back from ROM boot.
#include "tools/zemctl/rom_boot/returned_camera.h"

#include <gtest/gtest.h>

namespace {

using zemctl::FindReturned;
using zemctl::SystemDevice;

SystemDevice Listed(const std::string& displayName, const std::string& place) {
  SystemDevice device;
  device.displayName = displayName;
  device.place = place;
  return device;
}

std::string Returned(const std::vector<SystemDevice>& before, const std::vector<SystemDevice>& now,
                     const std::string& place) {
  const auto found = FindReturned(before, now, place);
  return found ? found->displayName : "none";
}

const SystemDevice kFirst = Listed("first", "Port 1");
const SystemDevice kSecond = Listed("second", "Port 2");
const SystemDevice kThird = Listed("third", "Port 3");

TEST(ReturnedCameraTest, OneThatWasThereIsNeverIt) {
  EXPECT_EQ(Returned({kFirst}, {kFirst}, ""), "none");
  EXPECT_EQ(Returned({kFirst}, {kFirst}, "Port 1"), "none");
  EXPECT_EQ(Returned({kFirst, kSecond}, {kSecond}, ""), "none");
}

TEST(ReturnedCameraTest, TheOneThatWasAdded) {
  EXPECT_EQ(Returned({kFirst}, {kFirst, kSecond}, ""), "second");
  EXPECT_EQ(Returned({}, {kSecond}, ""), "second");
  EXPECT_EQ(Returned({}, {}, ""), "none");
}

TEST(ReturnedCameraTest, OfTwoThatWereAddedNoneIsClear) {
  EXPECT_EQ(Returned({kFirst}, {kFirst, kSecond, kThird}, ""), "none");
}

TEST(ReturnedCameraTest, OnlyTheOneAtItsPlaceWhereThatIsKnown) {
  EXPECT_EQ(Returned({kFirst}, {kFirst, kSecond, kThird}, "Port 3"), "third");
  EXPECT_EQ(Returned({kFirst}, {kFirst, kSecond}, "Port 3"), "none");
}

}  // namespace
