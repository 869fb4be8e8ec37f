#include "platform/camera/camera_choice.h"

#include <algorithm>
#include <optional>

namespace handset {
namespace {

std::string passing_over(const std::string& why, const FoundCamera& used) {
  return why + ". Using " + used.label + ".";
}

}  // namespace

int find_evicted(const std::vector<FoundCamera>& cameras, const std::string& remembered) {
  const auto found = std::find_if(cameras.begin(), cameras.end(),
                                  [&](const FoundCamera& c) { return !c.usable() && is_called(c, remembered); });
  return found == cameras.end() ? -1 : static_cast<int>(found - cameras.begin());
}

CameraChoice choose_camera(const std::vector<FoundCamera>& cameras, int wanted, int evicted,
                           const std::function<Objection(const FoundCamera&)>& objection) {
  const auto at = [&](int index) -> const FoundCamera& { return cameras[static_cast<std::size_t>(index)]; };
  CameraChoice choice;
  if (cameras.empty()) return choice;
  if (wanted < 0) {
    choice.trouble = cameras.front().trouble;
    choice.why = cameras.front().why;
    return choice;
  }
  std::vector<int> order = {wanted};
  for (int i = 0; i < static_cast<int>(cameras.size()); ++i) {
    const bool alike = (at(i).kind == CameraKind::infrared) == (at(wanted).kind == CameraKind::infrared);
    if (i != wanted && at(i).usable() && alike) order.push_back(i);
  }
  std::optional<Objection> first;
  int second_best = -1;
  for (const int index : order) {
    const Objection against = objection(at(index));
    if (!first) first = against;
    if (against.trouble == CameraTrouble::none) {
      choice.index = index;
      break;
    }
    if (!against.now && second_best < 0) second_best = index;
  }
  if (choice.index < 0) choice.index = second_best;
  const std::string why = explain(first->trouble, at(wanted).label, first->detail);
  if (choice.index < 0) {
    choice.trouble = first->trouble;
    choice.why = why;
  } else if (choice.index != wanted) {
    choice.passed_over = passing_over(why, at(choice.index));
  } else if (evicted >= 0) {
    choice.passed_over = passing_over(at(evicted).why, at(choice.index));
  }
  return choice;
}

}  // namespace handset
