#include "camera/resolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "platform/camera/camera_mode.h"

namespace {

using Sizes = std::vector<camera_res_t>;

const Sizes phone = {{640, 480}, {1280, 720}, {1920, 1080}, {3264, 2448}};

TEST(PreferredResolution, IsTheNearestOnBothSides) {
  EXPECT_EQ(preferred_resolution(phone), 1);
  EXPECT_EQ(preferred_resolution(Sizes{{1920, 1080}, {640, 480}, {480, 320}, {1280, 720}}), 3);
  // Nearer on one side, equal on the other: entry 3 stays.
  EXPECT_EQ(preferred_resolution(Sizes{{1280, 800}, {1200, 900}, {1360, 900}, {1280, 900}}), 3);
}

TEST(PreferredResolution, ComparesUprightEntriesUpright) {
  EXPECT_EQ(preferred_resolution(Sizes{{480, 640}, {720, 1280}, {1080, 1920}, {2448, 3264}}), 1);
  // Of the two 720p, each is perfect on its own axes and the other is not: the later one replaces the earlier.
  EXPECT_EQ(preferred_resolution(Sizes{{1280, 720}, {720, 1280}, {640, 480}, {3264, 2448}}), 1);
  EXPECT_EQ(preferred_resolution(Sizes{{720, 1280}, {1280, 720}, {640, 480}, {3264, 2448}}), 1);
  // A square entry counts as upright: 280 and 280 off, against 580 and 580 for entry 3 measured upright.
  EXPECT_EQ(preferred_resolution(Sizes{{320, 240}, {480, 320}, {640, 480}, {1300, 700}, {1000, 1000}}), 4);
}

TEST(PreferredResolution, StartsInsideTheList) {
  EXPECT_EQ(preferred_resolution({}), 0);
  EXPECT_EQ(preferred_resolution(Sizes{{3264, 2448}}), 0);
  EXPECT_EQ(preferred_resolution(Sizes{{1280, 720}, {1920, 720}, {1280, 1080}}), 0);
  EXPECT_EQ(preferred_resolution(Sizes{{640, 480}, {1920, 1080}, {1280, 720}}), 2);
  Sizes many;
  for (unsigned i = 0; i < 40; ++i) many.push_back({4000 - 64 * i, 3000 - 48 * i});
  EXPECT_EQ(preferred_resolution(many), 39);
  many[20] = {1279, 721};
  EXPECT_EQ(preferred_resolution(many), 20);
}

TEST(PreferredResolution, SurvivesImpossibleSizes) {
  const Sizes sizes = {{0, 0}, {0xFFFFFFFF, 1}, {1, 0xFFFFFFFF}, {0x80000000 + 1280, 0x80000000 + 720}, {1281, 721}};
  EXPECT_EQ(preferred_resolution(sizes), 4);
}

TEST(ChooseResolution, TakesWhatTheUnitStored) {
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_REAR, -1, phone), 1);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_REAR, 2, phone), 2);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_FRONT, 0, phone), 0);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_FRONT, -1, phone), 0);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_REAR, -7, phone), 0);
  EXPECT_EQ(choose_resolution(CAMERA_UNIT_DESKTOP, 2, phone), 1);
}

TEST(ChooseResolution, StaysInsideTheList) {
  for (const camera_unit_t unit : {CAMERA_UNIT_FRONT, CAMERA_UNIT_REAR}) {
    EXPECT_EQ(choose_resolution(unit, 3, phone), 3);
    EXPECT_EQ(choose_resolution(unit, 4, phone), 1);
    EXPECT_EQ(choose_resolution(unit, 0x7FFFFFFF, Sizes{{640, 480}}), 0);
    EXPECT_EQ(choose_resolution(unit, 0, {}), std::nullopt);
  }
}

TEST(ResolutionLabel, ShowsTheStoredEntry) {
  EXPECT_EQ(resolution_label(3, phone), "3264 x 2448");
  // The desktop lists fewer sizes than the rear camera whose index labels it.
  EXPECT_EQ(resolution_label(4, phone), "1280 x 720");
  EXPECT_EQ(resolution_label(-1, phone), "1280 x 720");
  EXPECT_EQ(resolution_label(0, {}), "");
}

// --- the order in which a camera lists its sizes, as an application reads it ---

struct Offer {
  unsigned width, height;
  double raw, jpeg;  ///< frames per second, 0: not offered
};

std::vector<handset::CameraMode> camera(const std::vector<Offer>& offers) {
  using Coding = handset::CameraWay::Coding;
  const auto at = [](double rate) {
    const handset::FrameRate exact{static_cast<int>(rate * 2), 2};
    return std::vector<handset::RateRange>{{exact, exact}};
  };
  std::vector<handset::CameraMode> modes;
  for (const Offer& offer : offers) {
    const camera_res_t size{offer.width, offer.height};
    if (offer.raw > 0) handset::add_way(&modes, size, {Coding::raw, "YUY2", at(offer.raw)});
    if (offer.jpeg > 0) handset::add_way(&modes, size, {Coding::jpeg, "", at(offer.jpeg)});
  }
  return modes;
}

struct Webcam {
  const char* name;
  std::vector<Offer> offers;
  camera_res_t best;
  double rate;
  std::size_t listed;
};

const Webcam webcams[] = {
    {"raw HD is slow, MJPEG is not, sizes share a side with 720p",
     {{640, 480, 30, 30},
      {160, 120, 30, 30},
      {176, 144, 30, 30},
      {320, 240, 30, 30},
      {352, 288, 30, 30},
      {640, 360, 30, 30},
      {800, 448, 25, 30},
      {800, 600, 15, 30},
      {864, 480, 20, 30},
      {960, 720, 10, 30},
      {1280, 720, 7.5, 30},
      {1280, 960, 7.5, 15}},
     {1280, 720},
     30,
     12},
    {"full HD",
     {{640, 480, 30, 30}, {1920, 1080, 5, 30}, {1280, 720, 10, 30}, {960, 720, 15, 30}, {2304, 1536, 2, 0}},
     {1280, 720},
     30,
     5},
    {"720p of a notebook", {{1280, 720, 10, 30}, {640, 480, 30, 30}, {640, 360, 30, 30}}, {1280, 720}, 30, 3},
    {"4K", {{3840, 2160, 0, 30}, {2560, 1440, 0, 30}, {1920, 1080, 5, 30}, {1280, 720, 10, 30}}, {1280, 720}, 30, 4},
    {"the rest shares a side",
     {{1280, 1024, 0, 30}, {960, 720, 0, 30}, {1280, 960, 0, 30}, {1280, 720, 0, 30}},
     {1280, 720},
     30,
     3},
    {"the rest shares a side and is slow",
     {{1280, 1024, 7.5, 0}, {960, 720, 10, 0}, {1280, 960, 7.5, 0}, {1280, 720, 30, 0}},
     {1280, 720},
     30,
     3},
    {"raw only: the slow 720p would be taken in any place",
     {{1280, 720, 10, 0}, {640, 480, 30, 0}, {320, 240, 30, 0}, {352, 288, 30, 0}, {1600, 1200, 5, 0}},
     {640, 480},
     30,
     4},
    {"no 720p",
     {{1600, 1200, 0, 30}, {640, 480, 0, 30}, {1280, 800, 0, 30}, {1024, 768, 0, 30}, {1280, 1024, 0, 30}},
     {1280, 800},
     30,
     5},
    {"VGA only", {{640, 480, 30, 0}}, {640, 480}, 30, 1},
    {"5 frames a second at best",
     {{640, 480, 5, 0}, {1280, 960, 2, 0}, {800, 600, 5, 0}, {320, 240, 5, 0}},
     {800, 600},
     5,
     4},
    {"film rate", {{1280, 720, 24, 0}, {640, 480, 60, 0}, {1920, 1080, 24, 0}, {1024, 576, 24, 0}}, {1280, 720}, 24, 4},
};

TEST(ListedSizes, LeadToTheNearestAtFullRate) {
  for (const Webcam& webcam : webcams) {
    const auto modes = camera(webcam.offers);
    const Sizes sizes = handset::list_sizes(modes);
    ASSERT_EQ(sizes.size(), webcam.listed) << webcam.name;
    // The default of a front camera, and the choice for a rear one.
    for (const int index : {0, preferred_resolution(sizes)}) {
      const camera_res_t& size = sizes[static_cast<std::size_t>(index)];
      const double rate = handset::choose_way(*handset::choose_mode(modes, size)).expected();
      EXPECT_EQ(rate, webcam.rate) << webcam.name << ", entry " << index;
      EXPECT_EQ(resolution_text(size), resolution_text(webcam.best)) << webcam.name << ", entry " << index;
    }
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      const auto same = [&](const camera_res_t& s) { return s.width == sizes[i].width && s.height == sizes[i].height; };
      EXPECT_EQ(std::count_if(sizes.begin(), sizes.end(), same), 1) << webcam.name;
    }
  }
}

TEST(ListedSizes, AreFluentInAnyMixture) {
  // Real sizes at random rates: whatever is listed first and preferred runs at the best rate there is, up to 24.
  const Sizes known = {{160, 120},  {320, 240},   {640, 360},   {640, 480},   {800, 600},
                       {960, 540},  {960, 720},   {1024, 768},  {1280, 720},  {1280, 800},
                       {1280, 960}, {1280, 1024}, {1600, 1200}, {1920, 1080}, {2592, 1944}};
  std::srand(7);
  for (int round = 0; round < 2000; ++round) {
    std::vector<Offer> offers;
    double fastest = 0;
    for (const camera_res_t& size : known) {
      if (std::rand() % 2 == 0) continue;
      constexpr double rates[] = {5, 10, 15, 20, 25, 30, 60};
      offers.push_back({size.width, size.height, rates[std::rand() % 7], 0});
      fastest = std::max(fastest, offers.back().raw);
    }
    const auto modes = camera(offers);
    const Sizes sizes = handset::list_sizes(modes);
    ASSERT_EQ(sizes.empty(), offers.empty());
    if (sizes.empty()) continue;
    for (const int index : {0, preferred_resolution(sizes)}) {
      const camera_res_t& size = sizes[static_cast<std::size_t>(index)];
      const double rate = handset::choose_way(*handset::choose_mode(modes, size)).expected();
      ASSERT_GE(rate, std::min(fastest, 24.0)) << "round " << round << ", entry " << index;
    }
  }
}

}  // namespace
