// The numbers of standard controls on both sides, at their edges.
#include "platform/linux/control_units.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using zem::platform::ControlUnit;
using zem::platform::FromV4l2;
using zem::platform::StepFromV4l2;
using zem::platform::ToV4l2;

TEST(ControlUnitsTest, ExposureIsThePowerOfTwoSecondsBeside100Microseconds) {
  const std::pair<std::int32_t, std::int32_t> kPairs[] = {
      {-13, 1},   {-12, 2},   {-11, 5},   {-10, 10},   {-9, 20},         {-8, 39},
      {-7, 78},   {-6, 156},  {-5, 313},  {-4, 625},   {-3, 1250},       {-2, 2500},
      {-1, 5000}, {0, 10000}, {1, 20000}, {5, 320000}, {17, 1310720000},
  };
  for (const auto& [exponent, units] : kPairs) {
    EXPECT_EQ(ToV4l2(ControlUnit::kExposure, exponent), units) << exponent;
    EXPECT_EQ(FromV4l2(ControlUnit::kExposure, units), exponent) << units;
  }
}

// Half way between two powers, by their logarithm, is 1.41421 times the lower one.
TEST(ControlUnitsTest, ExposureBetweenTwoPowersIsTheNearer) {
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, 14142), 0);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, 14143), 1);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, 7071), -1);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, 7072), 0);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, 3), -12);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, 4), -11);
}

TEST(ControlUnitsTest, ExposureOutsideWhatNumbersHold) {
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, 0), -13);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, -5), -13);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, INT_MIN), -13);
  EXPECT_EQ(FromV4l2(ControlUnit::kExposure, INT_MAX), 18);
  EXPECT_EQ(ToV4l2(ControlUnit::kExposure, 18), INT_MAX);
  EXPECT_EQ(ToV4l2(ControlUnit::kExposure, INT_MAX), INT_MAX);
  EXPECT_EQ(ToV4l2(ControlUnit::kExposure, -14), 1);
  EXPECT_EQ(ToV4l2(ControlUnit::kExposure, INT_MIN), 1);
}

TEST(ControlUnitsTest, AnglesAreDegreesBesideArcSeconds) {
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, 36000), 10);
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, -648000), -180);
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, 1799), 0);
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, 1800), 1);
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, -1799), 0);
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, -1800), -1);
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, INT_MAX), 596523);
  EXPECT_EQ(FromV4l2(ControlUnit::kDegrees, INT_MIN), -596523);
  EXPECT_EQ(ToV4l2(ControlUnit::kDegrees, -180), -648000);
  EXPECT_EQ(ToV4l2(ControlUnit::kDegrees, 596523), 2147482800);
  EXPECT_EQ(ToV4l2(ControlUnit::kDegrees, 596524), INT_MAX);
  EXPECT_EQ(ToV4l2(ControlUnit::kDegrees, -596524), INT_MIN);
  EXPECT_EQ(StepFromV4l2(ControlUnit::kDegrees, 3600), 1);
  EXPECT_EQ(StepFromV4l2(ControlUnit::kDegrees, 7200), 2);
  EXPECT_EQ(StepFromV4l2(ControlUnit::kDegrees, 1), 1) << "no step is 0";
}

TEST(ControlUnitsTest, IrisIsTenthsBesideHundredthsOfTheFStop) {
  EXPECT_EQ(FromV4l2(ControlUnit::kFStop, 280), 28);
  EXPECT_EQ(FromV4l2(ControlUnit::kFStop, 284), 28);
  EXPECT_EQ(FromV4l2(ControlUnit::kFStop, 285), 29);
  EXPECT_EQ(ToV4l2(ControlUnit::kFStop, 28), 280);
  EXPECT_EQ(StepFromV4l2(ControlUnit::kFStop, 20), 2);
}

TEST(ControlUnitsTest, EverythingElseCountsTheSame) {
  for (const std::int32_t value : {INT_MIN, -1, 0, 1, 4000, INT_MAX}) {
    EXPECT_EQ(FromV4l2(ControlUnit::kAsItIs, value), value);
    EXPECT_EQ(ToV4l2(ControlUnit::kAsItIs, value), value);
  }
  EXPECT_EQ(StepFromV4l2(ControlUnit::kAsItIs, 10), 10);
  EXPECT_EQ(StepFromV4l2(ControlUnit::kAsItIs, 0), 1);
  EXPECT_EQ(StepFromV4l2(ControlUnit::kExposure, 20), 1);
}

}  // namespace
