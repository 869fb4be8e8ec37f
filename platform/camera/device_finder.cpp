#include "platform/camera/device_finder.h"

#include <algorithm>
#include <cctype>
#include <cerrno>

#include "platform/camera/device_views.h"
#include "platform/camera/node_scan.h"
#include "platform/camera/v4l2_node.h"

namespace handset {
namespace {

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

}  // namespace

std::vector<FoundCamera> find_cameras(std::chrono::milliseconds limit, bool* answered) {
  gst_init(nullptr, nullptr);
  const auto end = std::chrono::steady_clock::now() + limit;
  bool heard = false;
  device_views(std::chrono::milliseconds(0), &heard);  // starts the servers, which work while the nodes are queried
  const std::vector<V4l2Answers> nodes = ask_all_nodes(limit);
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
  const std::vector<DeviceView> views = device_views(std::max(left, std::chrono::milliseconds(0)), &heard);
  if (answered != nullptr) *answered = heard;
  return merge_cameras(nodes, views, installed_decoders());
}

bool is_called(const FoundCamera& camera, const std::string& remembered) {
  if (remembered.empty()) return false;
  if (std::find(camera.former.begin(), camera.former.end(), remembered) != camera.former.end()) return true;
  // The socket is part of the name only if there is a twin at another socket.
  const std::string& shorter = remembered.size() < camera.identity.size() ? remembered : camera.identity;
  const std::string& longer = remembered.size() < camera.identity.size() ? camera.identity : remembered;
  return longer == shorter || (shorter.find('@') != std::string::npos && longer.starts_with(shorter + "@"));
}

CameraRoles assign_roles(const std::vector<FoundCamera>& cameras, const std::string& remembered_rear,
                         const std::string& remembered_front) {
  const int count = static_cast<int>(cameras.size());
  const auto at = [&](int index) -> const FoundCamera& { return cameras[static_cast<std::size_t>(index)]; };
  const bool any_color = std::any_of(cameras.begin(), cameras.end(),
                                     [](const FoundCamera& c) { return c.usable() && c.kind != CameraKind::infrared; });
  const auto may_serve = [&](int index) {
    return at(index).usable() && (!any_color || at(index).kind != CameraKind::infrared);
  };
  CameraRoles roles;
  const auto recall = [&](int* role, int taken, const std::string& remembered) {
    for (const bool exact : {true, false}) {
      for (int i = 0; i < count && *role < 0; ++i) {
        if (may_serve(i) && i != taken && (exact ? at(i).identity == remembered : is_called(at(i), remembered)))
          *role = i;
      }
    }
  };
  recall(&roles.rear, -1, remembered_rear);
  recall(&roles.front, roles.rear, remembered_front);
  const auto fill = [&](int* role, const auto& fits) {
    for (int i = 0; i < count && *role < 0; ++i) {
      if (may_serve(i) && i != roles.rear && i != roles.front && fits(at(i))) *role = i;
    }
  };
  fill(&roles.rear, [](const FoundCamera& c) { return c.location == CameraLocation::rear; });
  fill(&roles.front, [](const FoundCamera& c) { return c.location == CameraLocation::front; });
  fill(&roles.rear, [](const FoundCamera&) { return true; });
  fill(&roles.front, [](const FoundCamera&) { return true; });
  if (roles.rear < 0) roles.rear = roles.front;
  if (roles.front < 0) roles.front = roles.rear;
  return roles;
}

int find_by_name(const std::vector<FoundCamera>& cameras, const std::string& name, std::string* complaint, int* error) {
  const std::string wanted = lower(name);
  std::vector<int> whole;
  std::vector<int> part;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    for (const std::string& text : {lower(cameras[i].identity), lower(cameras[i].label)}) {
      std::vector<int>* const matches = text == wanted                           ? &whole
                                        : text.find(wanted) != std::string::npos ? &part
                                                                                 : nullptr;
      const int index = static_cast<int>(i);
      if (matches != nullptr && (matches->empty() || matches->back() != index)) matches->push_back(index);
    }
  }
  const std::vector<int>& matches = whole.empty() ? part : whole;
  if (matches.size() == 1) return matches.front();
  const bool ambiguous = !matches.empty();
  *error = ambiguous ? EINVAL : ENODEV;
  *complaint = ambiguous ? "several cameras are called \"" + name + "\": " : "no camera is called \"" + name + "\"";
  std::string list;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    if (ambiguous && std::find(matches.begin(), matches.end(), static_cast<int>(i)) == matches.end()) continue;
    list += (list.empty() ? "" : ", ") + cameras[i].identity;
  }
  if (!ambiguous) *complaint += list.empty() ? ", and there is none at all" : "; there are: ";
  *complaint += list;
  return -1;
}

}  // namespace handset
