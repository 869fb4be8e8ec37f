#include "capture/record_clock.h"

#include <gtest/gtest.h>

namespace {

TEST(RecordClock, ShowsHoursWhenThereAreAny) {
  EXPECT_EQ(record_clock_text(1), "00:01");
  EXPECT_EQ(record_clock_text(59), "00:59");
  EXPECT_EQ(record_clock_text(60), "01:00");
  EXPECT_EQ(record_clock_text(3599), "59:59");
  EXPECT_EQ(record_clock_text(3600), "01:00:00");
  EXPECT_EQ(record_clock_text(3661), "01:01:01");
  EXPECT_EQ(record_clock_text(360000), "100:00:00");
}

TEST(RecordClock, BlinksEverySecond) {
  EXPECT_STREQ(record_dot_image(1), "asset:///images/icon_reddot2.png");
  EXPECT_STREQ(record_dot_image(2), "asset:///images/icon_reddot.png");
}

}  // namespace
