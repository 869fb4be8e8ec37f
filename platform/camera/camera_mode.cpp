#include "platform/camera/camera_mode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>

namespace handset {
namespace {

/// A rate of at least this fraction of the wanted one is good enough.
constexpr double enough = 0.8;
/// Anything slower looks jerky. Just below 24, to admit 24000/1001.
constexpr double fluent_rate = 23.9;

struct Rated {
  ChosenWay choice;
  double rate;
};

/// Candidate rates of a way: the ends of its ranges, and the wanted rate if it lies within one.
std::vector<ChosenWay> candidates(const CameraWay& way, double wanted) {
  if (way.rates.empty()) return {{&way, {}, true}};
  std::vector<ChosenWay> choices;
  for (const RateRange& range : way.rates) {
    choices.push_back({&way, range.fastest, true});
    if (range.slowest.numerator > 0) choices.push_back({&way, range.slowest, true});
    if (range.slowest.value() < wanted && wanted < range.fastest.value()) {
      choices.push_back({&way, {static_cast<int>(std::lround(wanted)), 1}, false});
    }
  }
  return choices;
}

/// 0: as wanted, 1: faster, 2: slower.
int rate_class(double rate, double wanted) {
  if (rate > wanted * 1.001) return 1;
  return rate >= wanted * enough - 0.1 ? 0 : 2;
}

bool better(const Rated& a, const Rated& b, double wanted) {
  const int class_a = rate_class(a.rate, wanted);
  const int class_b = rate_class(b.rate, wanted);
  if (class_a != class_b) return class_a < class_b;
  const auto coding_a = a.choice.way->coding;
  const auto coding_b = b.choice.way->coding;
  if (class_a == 0 && coding_a != coding_b) return coding_a < coding_b;
  const double off_a = std::abs(a.rate - wanted);
  const double off_b = std::abs(b.rate - wanted);
  if (off_a != off_b) return off_a < off_b;
  return coding_a < coding_b;
}

double expected_rate(const CameraMode& mode) {
  return choose_way(mode).expected();
}

std::int64_t area(const camera_res_t& size) {
  return std::int64_t{size.width} * size.height;
}

bool same_size(const camera_res_t& a, const camera_res_t& b) {
  return a.width == b.width && a.height == b.height;
}

/// Distance from 1280 x 720 (portrait: 720 x 1280), in pixels per side.
struct Distance {
  std::int64_t width, height;
  std::int64_t square() const { return width * width + height * height; }
};

Distance distance(const camera_res_t& size, bool upright = false) {
  return {std::abs(std::int64_t{size.width} - (upright ? 720 : 1280)),
          std::abs(std::int64_t{size.height} - (upright ? 1280 : 720))};
}

/// Whether an application walking the list would replace `b` with `a`.
bool draws_away(const camera_res_t& a, const camera_res_t& b) {
  const bool upright = a.width <= a.height;
  const Distance of_a = distance(a, upright);
  const Distance of_b = distance(b, upright);
  return of_a.width < of_b.width && of_a.height < of_b.height;
}

struct Listed {
  camera_res_t size;
  bool full_rate;
};

std::vector<Listed> with_rates(const std::vector<CameraMode>& modes) {
  double fastest = 0;
  for (const CameraMode& mode : modes) fastest = std::max(fastest, expected_rate(mode));
  const double full = std::min(fluent_rate, fastest);
  std::vector<Listed> list;
  for (const CameraMode& mode : modes) {
    const bool known =
        std::any_of(list.begin(), list.end(), [&](const Listed& l) { return same_size(l.size, mode.size); });
    if (!known && !mode.ways.empty()) list.push_back({mode.size, expected_rate(mode) >= full});
  }
  // By size; sizes too slow for smooth motion come last.
  std::stable_sort(list.begin(), list.end(), [&](const Listed& a, const Listed& b) {
    if (a.full_rate != b.full_rate) return a.full_rate;
    return area(a.size) > area(b.size);
  });
  return list;
}

void drop_drawing_away(std::vector<Listed>* list, const camera_res_t& from) {
  std::erase_if(*list, [&](const Listed& l) { return !l.full_rate && draws_away(l.size, from); });
}

/// Over the entries after the first: the walk starts at the next one.
constexpr std::ptrdiff_t before_fourth = 2;

/// Picks a fourth entry that leads to the first, or to another full-rate one; otherwise cuts the list off before it.
void place_fourth(const camera_res_t& first, std::vector<Listed>* list) {
  const auto gives_way = [&](const Listed& l) { return draws_away(first, l.size); };
  auto fourth = std::find_if(list->begin() + before_fourth, list->end(), gives_way);
  if (fourth == list->end()) fourth = std::find_if(list->begin(), list->end(), gives_way);
  if (fourth == list->end() && distance(first).square() > 0) {
    const auto fluent = std::find_if(list->begin(), list->end(), [](const Listed& l) { return l.full_rate; });
    if (fluent != list->end()) {
      const camera_res_t size = fluent->size;
      drop_drawing_away(list, size);
      fourth = std::find_if(list->begin(), list->end(), [&](const Listed& l) { return same_size(l.size, size); });
    }
  }
  if (std::ssize(*list) <= before_fourth) return;
  if (fourth == list->end()) {
    list->resize(before_fourth);  // all others share a side with 720p, which would keep the walk there
    return;
  }
  const Listed moved = *fourth;
  list->erase(fourth);
  list->insert(list->begin() + before_fourth, moved);
}

}  // namespace

Decoders installed_decoders() {
  const auto has = [](const char* name) {
    GstElementFactory* factory = gst_element_factory_find(name);
    if (factory != nullptr) gst_object_unref(factory);
    return factory != nullptr;
  };
  return {.jpeg = has("jpegdec"), .h264 = has("h264parse") && has("avdec_h264"), .bayer = has("bayer2rgb")};
}

ChosenWay choose_way(const CameraMode& mode, double wanted_rate) {
  std::optional<Rated> best;
  for (const CameraWay& way : mode.ways) {
    for (const ChosenWay& choice : candidates(way, wanted_rate)) {
      const Rated rated{choice, choice.expected()};
      if (!best || better(rated, *best, wanted_rate)) best = rated;
    }
  }
  return best ? best->choice : ChosenWay{};
}

std::vector<camera_res_t> list_sizes(const std::vector<CameraMode>& modes) {
  std::vector<Listed> list = with_rates(modes);
  if (list.empty()) return {};
  const auto nearest = std::min_element(list.begin(), list.end(), [](const Listed& a, const Listed& b) {
    if (a.full_rate != b.full_rate) return a.full_rate;
    return distance(a.size).square() < distance(b.size).square();
  });
  const Listed first = *nearest;
  list.erase(nearest);
  drop_drawing_away(&list, first.size);
  if (std::ssize(list) > before_fourth) place_fourth(first.size, &list);
  std::vector<camera_res_t> sizes = {first.size};
  for (const Listed& entry : list) sizes.push_back(entry.size);
  return sizes;
}

const CameraMode* choose_mode(const std::vector<CameraMode>& modes, camera_res_t size, double wanted_rate) {
  const CameraMode* best = nullptr;
  const auto rank = [&](const CameraMode& mode) {
    const bool covers = mode.size.width >= size.width && mode.size.height >= size.height;
    const bool fluent = choose_way(mode, wanted_rate).expected() >= std::min(fluent_rate, wanted_rate * enough);
    // The smallest that covers it, else the largest of the rest.
    return std::array<std::int64_t, 4>{same_size(mode.size, size) ? 0 : 1, fluent ? 0 : 1, covers ? 0 : 1,
                                       covers ? area(mode.size) : -area(mode.size)};
  };
  for (const CameraMode& mode : modes) {
    if (!mode.ways.empty() && (best == nullptr || rank(mode) < rank(*best))) best = &mode;
  }
  return best;
}

}  // namespace handset
